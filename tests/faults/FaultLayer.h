#pragma once
// A second platform layer for tests: forwards to the real one, counts, and fails the calls that a test picks.
// Its clock moves only when somebody sleeps. One thread at a time.

#include "../../Platform/Platform.h"
#include <string>

namespace faults {

/// Which calls fail, and how. A release that fails has released all the same, so that leaks stay countable.
struct Plan
{
    std::string sCall; ///< the call's name; empty: any call
    int nFirst = 0;    ///< the first that fails, counted from 1; 0: none
    int nTimes = 1;    ///< how many in a row
    DWORD nError = 5;
};

inline Plan g_plan;
inline int g_nCalls = 0;   // that the plan could have failed, since Begin
inline DWORD g_nTicks = 0; // milliseconds slept since Begin
inline int g_nBlocks = 0, g_nViews = 0, g_nHandles = 0,
           g_nNot = 0;   // alive; the last for what needs no release
inline int g_nTwice = 0; // releases of what was not there, since Begin

/// Starts counting and failing anew; what is alive stays counted.
inline void Begin(const Plan& plan = {})
{
    g_plan = plan;
    g_nCalls = 0;
    g_nTicks = 0;
    g_nTwice = 0;
}

/// Counts a call and makes it unless it is to fail. Its result, or the failure with its error set.
template <class Result, class Call> Result Make(const char* pszCall, Result failure, int& nAlive, Call call)
{
    if (g_plan.sCall.empty() || g_plan.sCall == pszCall) {
        const int nSince = ++g_nCalls - g_plan.nFirst;
        if (g_plan.nFirst > 0 && nSince >= 0 && nSince < g_plan.nTimes) {
            SetLastError(g_plan.nError);
            return failure;
        }
    }
    const Result result = call();
    nAlive += result != failure ? 1 : 0;
    return result;
}

/// The same for a call that releases something, which it does in any case.
template <class Call> BOOL Release(const char* pszCall, int& nAlive, Call call)
{
    const BOOL bDone = call();
    nAlive -= bDone ? 1 : 0;
    g_nTwice += bDone ? 0 : 1;
    return Make(pszCall, BOOL{0}, g_nNot, [=] { return bDone; });
}

} // namespace faults

// clang-format off
#define MAKES(Result, Failure, Alive, Name, Params, ...) inline Result Faulty##Name Params \
    { return faults::Make<Result>(#Name, Failure, faults::Alive, [&] { return ::Name(__VA_ARGS__); }); }
#define RELEASES(Alive, Name, Params, ...) inline BOOL Faulty##Name Params \
    { return faults::Release(#Name, faults::Alive, [&] { return ::Name(__VA_ARGS__); }); }
using None = decltype(nullptr);

MAKES(LPVOID, nullptr, g_nBlocks, VirtualAlloc, (LPVOID p, SIZE_T n, DWORD t, DWORD a), p, n, t, a)
RELEASES(g_nBlocks, VirtualFree, (LPVOID p, SIZE_T n, DWORD t), p, n, t)
MAKES(HLOCAL, nullptr, g_nBlocks, LocalAlloc, (UINT f, SIZE_T n), f, n)
MAKES(HLOCAL, nullptr, g_nNot, LocalReAlloc, (HLOCAL p, SIZE_T n, UINT f), p, n, f)
inline HLOCAL FaultyLocalFree(HLOCAL p) { faults::g_nBlocks -= p ? 1 : 0; return ::LocalFree(p); }
MAKES(HANDLE, INVALID_HANDLE_VALUE, g_nHandles, CreateFileA, (LPCSTR p, DWORD a, DWORD s, None, DWORD c, DWORD f, None), p, a, s, nullptr, c, f, nullptr)
MAKES(BOOL, 0, g_nNot, ReadFile, (HANDLE h, LPVOID p, DWORD n, DWORD* r, None), h, p, n, r, nullptr)
MAKES(DWORD, INVALID_SET_FILE_POINTER, g_nNot, SetFilePointer, (HANDLE h, LONG d, LONG* u, DWORD m), h, d, u, m)
MAKES(DWORD, INVALID_FILE_SIZE, g_nNot, GetFileSize, (HANDLE h, DWORD* u), h, u)
RELEASES(g_nHandles, CloseHandle, (HANDLE h), h)
MAKES(HANDLE, nullptr, g_nHandles, CreateFileMappingA, (HANDLE h, None, DWORD p, DWORD u, DWORD n, None), h, nullptr, p, u, n, nullptr)
MAKES(LPVOID, nullptr, g_nViews, MapViewOfFile, (HANDLE h, DWORD a, DWORD u, DWORD o, SIZE_T n), h, a, u, o, n)
RELEASES(g_nViews, UnmapViewOfFile, (LPCVOID p), p)
MAKES(DWORD, 0, g_nNot, GetTempFileNameA, (LPCSTR f, LPCSTR p, DWORD u, LPSTR n), f, p, u, n)
inline DWORD FaultyGetTickCount() { return faults::g_nTicks; }
inline void FaultySleep(DWORD nMilliseconds) { faults::g_nTicks += nMilliseconds; }
inline bool FaultyCopyToFile(HANDLE f, HANDLE m, DWORD o, const void* p, DWORD n, bool b)
    { return faults::Make("CopyToFile", false, faults::g_nNot, [&] { return platform::CopyToFile(f, m, o, p, n, b); }); }
inline std::FILE* FaultyOpenBinaryFile(const char* p, ULONGLONG n)
    { return faults::Make<std::FILE*>("OpenBinaryFile", nullptr, faults::g_nNot, [&] { return platform::OpenBinaryFile(p, n); }); }
namespace platform { using ::FaultyCopyToFile; using ::FaultyOpenBinaryFile; }
// clang-format on
