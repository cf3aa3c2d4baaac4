// Memory, views and files as the library uses them, on top of the platform layer. This adds retries while
// memory or address space is short, views of whole granules around byte ranges, and appends in chunks.

#include "MemoryManager/base/PlatformHelpers.h"

#include "Platform/Platform.h"

#include <algorithm>

namespace {

constexpr DWORD kChunkBytes = 16 * 1024 * 1024; // rounded up to whole granules

// Repeats a call until it returns an address, fails for another reason than a shortage, or the time is up.
template <class Call> void* RetryWhileShort(Call call)
{
    const DWORD nStart = GetTickCount();
    for (;;) {
        if (void* pResult = call())
            return pResult;
        if (GetLastError() != ERROR_NOT_ENOUGH_MEMORY)
            return nullptr;
        Sleep(kRetryPauseMs);
        if (GetTickCount() - nStart >= kRetryLimitMs)
            return nullptr;
    }
}

DWORD WriteChunkBytes()
{
    const DWORD nGranule = AllocationGranularity();
    return (nGranule + kChunkBytes - 1) / nGranule * nGranule;
}

// Copies the bytes chunk by chunk into the file. Returns 0, or the system error of the chunk that failed.
DWORD CopyInChunks(HANDLE hFile, HANDLE hMap, DWORD nOffset, const BYTE* pSrc, DWORD nBytes, DWORD* pnWritten,
                   DWORD nLoadLimit)
{
    const DWORD nMost = WriteChunkBytes();
    while (*pnWritten < nBytes) {
        const DWORD nLength = std::min(nBytes - *pnWritten, nMost);
        const bool bFlush = IsMemoryLoadHigh(nLoadLimit) != 0;
        if (!platform::CopyToFile(hFile, hMap, nOffset + *pnWritten, pSrc + *pnWritten, nLength, bFlush))
            return GetLastError();
        *pnWritten += nLength;
    }
    return 0;
}

} // namespace

DWORD AllocationGranularity()
{
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwAllocationGranularity;
}

std::optional<DWORD> FileLength(HANDLE hFile)
{
    DWORD nHigh = 0;
    SetLastError(0); // the low half of a length may be all ones, as a failure is
    const DWORD nLow = GetFileSize(hFile, &nHigh);
    if (nLow == INVALID_FILE_SIZE && GetLastError() != 0)
        return std::nullopt;
    if (nHigh == 0)
        return nLow;
    SetLastError(ERROR_FILE_TOO_LARGE);
    return std::nullopt;
}

bool SeekFile(HANDLE hFile, DWORD nPosition)
{
    LONG nHigh = 0; // with it the platform takes the position as unsigned
    return SetFilePointer(hFile, static_cast<LONG>(nPosition), &nHigh, FILE_BEGIN) !=
           INVALID_SET_FILE_POINTER;
}

void* MapViewOfFileRetry(HANDLE hMap, DWORD nAccess, DWORD nOffsetHigh, DWORD nOffsetLow, SIZE_T nBytes)
{
    return RetryWhileShort([&] { return MapViewOfFile(hMap, nAccess, nOffsetHigh, nOffsetLow, nBytes); });
}

void* VirtualAllocRetry(void* pAddress, SIZE_T nBytes, DWORD nType, DWORD nProtect)
{
    return RetryWhileShort([&] { return VirtualAlloc(pAddress, nBytes, nType, nProtect); });
}

void* AllocMemoryBlock(SIZE_T nBytes, int bRetry)
{
    constexpr DWORD nType = MEM_COMMIT | MEM_RESERVE | MEM_TOP_DOWN;
    return bRetry != 0 ? VirtualAllocRetry(nullptr, nBytes, nType, PAGE_READWRITE)
                       : VirtualAlloc(nullptr, nBytes, nType, PAGE_READWRITE);
}

void FreeMemoryBlock(void* pBlock)
{
    if (pBlock != nullptr)
        VirtualFree(pBlock, 0, MEM_RELEASE);
}

int UnmapView(void* pView)
{
    return UnmapViewOfFile(pView);
}

ViewRange CoverRange(DWORD nOffset, DWORD nBytes, DWORD nFileSize)
{
    const ULONGLONG nGranule = AllocationGranularity();
    const ULONGLONG nStart = nOffset / nGranule * nGranule;
    const ULONGLONG nEnd = (nGranule + nOffset + nBytes - 1) / nGranule * nGranule;
    ViewRange range{static_cast<DWORD>(nStart), static_cast<DWORD>(nOffset - nStart), 0};
    if (nBytes > 0 && nOffset < nFileSize)
        range.nBytes = static_cast<DWORD>(std::min<ULONGLONG>(nEnd, nFileSize) - nStart);
    return range;
}

void* MapFileRange(HANDLE hFile, HANDLE hMap, DWORD nOffset, DWORD nBytes, int bWrite)
{
    const ViewRange range = CoverRange(nOffset, nBytes, FileLength(hFile).value_or(kLongestFile));
    if (range.nBytes == 0) { // to the platform, a length of 0 means the rest of the mapping
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const DWORD nAccess = bWrite != 0 ? FILE_MAP_WRITE : FILE_MAP_READ;
    void* pView = MapViewOfFileRetry(hMap, nAccess, 0, range.nStart, range.nBytes);
    return pView != nullptr ? static_cast<BYTE*>(pView) + range.nDelta : nullptr;
}

int WriteFileByView(HANDLE hFile, const void* pSrc, DWORD nBytes, DWORD* pnWritten, DWORD nOffset,
                    DWORD nLoadLimit)
{
    *pnWritten = 0;
    if (nOffset == kAppend) {
        const auto nLength = FileLength(hFile);
        if (!nLength)
            return 0;
        nOffset = *nLength;
    }
    const ULONGLONG nEnd = ULONGLONG{nOffset} + nBytes;
    if (nEnd > kLongestFile) {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return 0;
    }

    const HANDLE hMap =
        CreateFileMappingA(hFile, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(nEnd), nullptr);
    if (hMap == nullptr)
        return 0;
    const DWORD nError =
        CopyInChunks(hFile, hMap, nOffset, static_cast<const BYTE*>(pSrc), nBytes, pnWritten, nLoadLimit);
    CloseHandle(hMap);
    if (*pnWritten == nBytes)
        return 1;
    SetLastError(nError); // closing the mapping may have changed it
    return 0;
}

bool AppendByViews(HANDLE hFile, const void* pSrc, DWORD nBytes)
{
    if (nBytes == 0) // the mapping of an empty file would fail
        return true;
    DWORD nWritten = 0;
    return WriteFileByView(hFile, pSrc, nBytes, &nWritten, kAppend, kFlushLoadPercent) != 0;
}

int IsMemoryLoadHigh(DWORD nLimit)
{
    MEMORYSTATUS status{};
    GlobalMemoryStatus(&status);
    return status.dwMemoryLoad >= nLimit ? 1 : 0;
}
