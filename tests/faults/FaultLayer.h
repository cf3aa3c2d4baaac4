#pragma once
// A second platform layer for tests: forwards to the real one, records every call, and fails those that a
// test picks. Its clock moves only when somebody sleeps, and soon starts again from 0. One thread at a time.

#include "../../Platform/Platform.h"
#include <algorithm>
#include <climits>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace faults {

/// How a call fails.
enum Way
{
    kRefused, ///< nothing is done
    kPart,    ///< fails after a part of its work: a file that has grown, the first half of the bytes
    kShort,   ///< a file that ends in the midst of a read
    kEmpty,   ///< a file that ends ahead of a read
};

/// A call that can fail, the errors it is failed with, and the most harmful way in which it is failed.
struct Kind
{
    const char* pszCall;
    DWORD errors[7];
    Way eLast = kRefused;
};

// clang-format off
inline constexpr Kind kKinds[] = {
    {"VirtualAlloc", {8, 87}}, {"VirtualFree", {87}}, {"LocalAlloc", {8}}, {"LocalReAlloc", {8}},
    {"operator new", {8}}, {"CreateFileA", {2, 3, 5, 32, 80, 112}}, {"CloseHandle", {6}},
    {"DeleteFileA", {2, 5, 32}}, {"ReadFile", {5, 6, 8}, kEmpty}, {"SetFilePointer", {6, 87}},
    {"GetFileSize", {5, 6}}, {"CreateFileMappingA", {5, 6, 8, 87, 112, 223}, kPart},
    {"CopyToFile", {5, 6, 8, 87, 112, 223}, kPart},
    {"MapViewOfFile", {5, 6, 8, 87}}, {"UnmapViewOfFile", {6, 87}}, {"GetTempPathA", {3}},
    {"GetTempFileNameA", {3, 5, 80, 112}}, {"FindFirstFileA", {2, 3, 5}}, {"FindNextFileA", {5}},
    {"OpenBinaryFile", {3, 5, 112, 223}}, {"OpenTextFile", {3, 5, 112, 223}}};
// clang-format on

/// Calls that fail, one after another: the first of them is named by its kind, or by its number among all.
struct Fault
{
    std::string_view sCall;     ///< empty: the kind of the nFirst-th call
    int nFirst = 0, nTimes = 1; ///< the first, from 1; how many calls of its kind
    DWORD nError = 5;
    Way eWay = kRefused;
    int nSeen = 0, nStruck = 0; ///< calls counted, calls failed

    bool Strikes(std::string_view sMade)
    {
        if (nStruck == 0 && (sCall.empty() || sCall == sMade) && ++nSeen == nFirst)
            sCall = sMade;
        else if (nStruck == 0 || sCall != sMade || nStruck == nTimes)
            return false;
        return ++nStruck > 0;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Fault& fault)
{
    static constexpr const char* kWays[] = {"", ", half done", ", cut short", ", empty"};
    return out << "call " << fault.nFirst << ' ' << fault.sCall << " error " << fault.nError
               << kWays[fault.eWay]
               << (fault.nTimes == INT_MAX ? ", from then on"
                                           : ", " + std::to_string(fault.nTimes) + " times");
}

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

inline std::string g_sTemp; // the temporary folder; empty: the system's
inline std::vector<Fault> g_faults;
inline std::vector<const char*> g_calls; // since Begin
inline bool g_bOn = false;               // else every call is made
inline Alive g_alive;
inline int g_nNot = 0;     // counts what needs no release
inline DWORD g_nTicks = 0; // milliseconds slept since Begin
inline int g_nTwice = 0;   // releases of what was not there, since Begin

/// Starts recording and failing anew; what is alive stays counted.
inline void Begin(std::vector<Fault> faults = {})
{
    g_faults = std::move(faults);
    g_calls.clear();
    g_nTicks = 0;
    g_nTwice = 0;
    g_bOn = true;
}

/// Whether a call of this kind has failed.
inline bool HasFailed(std::string_view sCall)
{
    return std::any_of(g_faults.begin(), g_faults.end(),
                       [=](const Fault& fault) { return fault.sCall == sCall && fault.nStruck > 0; });
}

/// Records a call. The fault that strikes it, or null.
inline const Fault* Struck(const char* pszCall)
{
    if (!g_bOn)
        return nullptr;
    g_calls.push_back(pszCall);
    const auto striking =
        std::find_if(g_faults.begin(), g_faults.end(), [=](Fault& fault) { return fault.Strikes(pszCall); });
    return striking != g_faults.end() ? &*striking : nullptr;
}

/// What a call that has been made leaves: its error, or one that means nothing.
template <class Result> Result Leave(const Fault* pFault, Result result)
{
    SetLastError(pFault ? pFault->nError : 4711);
    return result;
}

/// Makes a call unless it is to fail.
template <class Result, class Call> Result Make(const char* pszCall, Result failure, int& nAlive, Call call)
{
    if (const Fault* pFault = Struck(pszCall))
        return Leave(pFault, failure);
    const Result result = call();
    nAlive += result != failure ? 1 : 0;
    return result == failure ? result : Leave(nullptr, result);
}

/// The same for a call that releases something, which it does in any case, so that leaks stay countable.
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
MAKES(MapViewOfFile, LPVOID{}, g_alive.nViews)
MAKES(SetFilePointer, INVALID_SET_FILE_POINTER, g_nNot)
MAKES(GetFileSize, INVALID_FILE_SIZE, g_nNot)
MAKES(GetTempFileNameA, UINT{}, g_nNot)
MAKES(DeleteFileA, BOOL{}, g_nNot)
MAKES(FindFirstFileA, INVALID_HANDLE_VALUE, g_alive.nHandles)
MAKES(FindNextFileA, BOOL{}, g_nNot)
RELEASES(VirtualFree, g_alive.nBlocks)
RELEASES(CloseHandle, g_alive.nHandles)
RELEASES(FindClose, g_alive.nHandles)
RELEASES(UnmapViewOfFile, g_alive.nViews)
#pragma GCC diagnostic pop

inline HLOCAL FaultyLocalFree(HLOCAL p)
{
    faults::g_alive.nBlocks -= p ? 1 : 0;
    return ::LocalFree(p);
}
inline BOOL FaultyReadFile(HANDLE hFile, LPVOID pBuffer, DWORD nBytes, DWORD* pnRead, void*)
{
    const faults::Fault* pFault = faults::Struck("ReadFile");
    const faults::Way eWay = pFault ? pFault->eWay : faults::kRefused;
    const bool bHalf = eWay == faults::kPart || (eWay == faults::kShort && pFault->nStruck == 1);
    const DWORD nLess = bHalf ? nBytes / 2 : 0;
    const BOOL bRead = ReadFile(hFile, pBuffer, pFault ? nLess : nBytes, pnRead, nullptr);
    return bRead ? faults::Leave(pFault, BOOL{!pFault || eWay >= faults::kShort}) : bRead;
}
inline HANDLE FaultyCreateFileMappingA(HANDLE hFile, void*, DWORD nProtect, DWORD, DWORD nBytes, LPCSTR)
{
    const faults::Fault* pFault = faults::Struck("CreateFileMappingA");
    if (pFault && pFault->eWay == faults::kRefused)
        return faults::Leave(pFault, HANDLE{});
    const HANDLE hMap = CreateFileMappingA(hFile, nullptr, nProtect, 0, nBytes, nullptr);
    if (pFault && hMap)
        CloseHandle(hMap);
    faults::g_alive.nHandles += !pFault && hMap ? 1 : 0;
    return hMap ? faults::Leave(pFault, pFault ? HANDLE{} : hMap) : hMap;
}
inline DWORD FaultyGetTempPathA(DWORD nChars, LPSTR pszPath)
{
    if (const faults::Fault* pFault = faults::Struck("GetTempPathA"))
        return faults::Leave(pFault, DWORD{0});
    std::strcpy(pszPath, faults::g_sTemp.c_str());
    return faults::g_sTemp.empty() ? GetTempPathA(nChars, pszPath)
                                   : static_cast<DWORD>(faults::g_sTemp.size());
}
inline DWORD FaultyGetTickCount()
{
    return faults::g_nTicks - 30000;
}
inline void FaultySleep(DWORD nMilliseconds)
{
    faults::g_nTicks += nMilliseconds;
}
inline void FaultyGlobalMemoryStatus(MEMORYSTATUS* pStatus)
{
    *pStatus = {}; // asking takes longer than all else
}

namespace platform {
MAKES(OpenBinaryFile, static_cast<std::FILE*>(nullptr), g_nNot)
MAKES(OpenTextFile, static_cast<std::FILE*>(nullptr), g_nNot)

inline bool FaultyCopyToFile(HANDLE hFile, HANDLE hMap, DWORD nOffset, const void* pSrc, DWORD nBytes,
                             bool bFlush)
{
    const faults::Fault* pFault = faults::Struck("CopyToFile");
    if (pFault && pFault->eWay == faults::kRefused)
        return faults::Leave(pFault, false);
    const bool bDone = CopyToFile(hFile, hMap, nOffset, pSrc, pFault ? nBytes / 2 : nBytes, bFlush);
    return bDone ? faults::Leave(pFault, !pFault) : bDone;
}
} // namespace platform
