#pragma once
// A second platform layer for tests: forwards to the real one, counts, and fails the calls that a test picks.
// Its clock moves only when somebody sleeps. One thread at a time.

#include "../../Platform/Platform.h"
#include <ostream>
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

/// What was made and not released yet.
struct Alive
{
    int nBlocks = 0, nViews = 0, nHandles = 0;
    bool operator==(const Alive&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Alive& alive)
{
    return out << alive.nBlocks << " blocks, " << alive.nViews << " views, " << alive.nHandles << " handles";
}

inline Plan g_plan;
inline Alive g_alive;
inline int g_nNot = 0;     // counts what needs no release
inline int g_nCalls = 0;   // that the plan could have failed, since Begin
inline DWORD g_nTicks = 0; // milliseconds slept since Begin
inline int g_nTwice = 0;   // releases of what was not there, since Begin

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

// A call's stand-in, the failure that it gives, and where its results are counted.
#define MAKES(Name, Failure, nAlive)                                                                         \
    inline constexpr auto Faulty##Name = [](auto... arguments) {                                             \
        return faults::Make(#Name, Failure, faults::nAlive, [=] { return Name(arguments...); });             \
    };
#define RELEASES(Name, nAlive)                                                                               \
    inline constexpr auto Faulty##Name = [](auto... arguments) {                                             \
        return faults::Release(#Name, faults::nAlive, [=] { return Name(arguments...); });                   \
    };

// A constant is a plain int once it has passed through a stand-in, and clang++ sees no value any more.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
MAKES(VirtualAlloc, LPVOID{}, g_alive.nBlocks)
MAKES(LocalAlloc, HLOCAL{}, g_alive.nBlocks)
MAKES(LocalReAlloc, HLOCAL{}, g_nNot)
MAKES(CreateFileA, INVALID_HANDLE_VALUE, g_alive.nHandles)
MAKES(CreateFileMappingA, HANDLE{}, g_alive.nHandles)
MAKES(MapViewOfFile, LPVOID{}, g_alive.nViews)
MAKES(ReadFile, BOOL{}, g_nNot)
MAKES(SetFilePointer, INVALID_SET_FILE_POINTER, g_nNot)
MAKES(GetFileSize, INVALID_FILE_SIZE, g_nNot)
MAKES(GetTempFileNameA, UINT{}, g_nNot)
RELEASES(VirtualFree, g_alive.nBlocks)
RELEASES(CloseHandle, g_alive.nHandles)
RELEASES(UnmapViewOfFile, g_alive.nViews)
#pragma GCC diagnostic pop

inline HLOCAL FaultyLocalFree(HLOCAL p)
{
    faults::g_alive.nBlocks -= p ? 1 : 0;
    return ::LocalFree(p);
}
inline DWORD FaultyGetTickCount()
{
    return faults::g_nTicks;
}
inline void FaultySleep(DWORD nMilliseconds)
{
    faults::g_nTicks += nMilliseconds;
}

namespace platform {
MAKES(CopyToFile, false, g_nNot)
MAKES(OpenBinaryFile, static_cast<std::FILE*>(nullptr), g_nNot)
} // namespace platform
