#pragma once
// The library's own way to memory, views and files: retries, range arithmetic, appends, the error log.
//
// Internal; in a static library these names can be linked. No call takes a lock or keeps a handle.

#include "Platform/PlatformTypes.h"

/// Retries follow failures with system error 8 only, every 10 ms, until 60000 ms have passed.
inline constexpr DWORD kRetryPauseMs = 10;
inline constexpr DWORD kRetryLimitMs = 60000;

/// File offset that stands for the current end of the file in WriteFileByView.
inline constexpr DWORD kAppend = 0xFFFFFFFF;
/// Memory load in percent from which WriteFileByView flushes what it wrote, as all callers pass it.
inline constexpr DWORD kFlushLoadPercent = 60;

/// The system error of a file that is shorter than its picture.
inline constexpr DWORD kErrorEndOfFile = 38;

/// Every view starts at a multiple of this many bytes; asked of the system on every call.
DWORD AllocationGranularity();

/// Length of a file in bytes; 0xFFFFFFFF when it cannot be told, or with error 223 when 32 bits do not hold
/// it.
DWORD FileLength(HANDLE hFile);

/// Sets the file pointer to an unsigned position. False: the last error tells why.
bool SeekFile(HANDLE hFile, DWORD nPosition);

/// MapViewOfFile with retries while address space is short. Null: the last try's error stands.
void* MapViewOfFileRetry(HANDLE hMap, DWORD nAccess, DWORD nOffsetHigh, DWORD nOffsetLow, SIZE_T nBytes);

/// VirtualAlloc with retries while memory is short.
void* VirtualAllocRetry(void* pAddress, SIZE_T nBytes, DWORD nType, DWORD nProtect);

/// Zero-filled read/write memory at the top of the address space; bRetry nonzero waits while memory is
/// short. Released with FreeMemoryBlock.
void* AllocMemoryBlock(SIZE_T nBytes, int bRetry);

/// Releases a block; null is ignored.
void FreeMemoryBlock(void* pBlock);

/// Releases a view by its base address; 0 on failure.
int UnmapView(void* pView);

/// The part of a file that a view over a byte range covers: whole granules, cut at the file's end.
struct ViewRange
{
    DWORD nStart; ///< file offset of the view, a multiple of the allocation granularity
    DWORD nDelta; ///< distance of the wanted byte from it
    DWORD nBytes; ///< length of the view; 0 when no byte of the range lies in the file
};

/// The granules that cover nBytes from nOffset in a file of nFileSize bytes.
ViewRange CoverRange(DWORD nOffset, DWORD nBytes, DWORD nFileSize);

/// Maps the granules that cover nOffset .. nOffset + nBytes - 1, cut at the end of the file, and returns the
/// address of the byte at nOffset. The view starts nOffset mod granularity bytes before it; the caller
/// releases it there. Null: not mapped.
void* MapFileRange(HANDLE hFile, HANDLE hMap, DWORD nOffset, DWORD nBytes, int bWrite);

/// Copies nBytes into the file from nOffset on (kAppend: from its end), in chunks of at most 16 MiB, and
/// makes the file longer first. *pnWritten counts whole chunks. nLoadLimit: memory load in percent from which
/// each chunk is flushed. 1, or 0 with the reason as last error; the file then keeps its new length.
int WriteFileByView(HANDLE hFile, const void* pSrc, DWORD nBytes, DWORD* pnWritten, DWORD nOffset,
                    DWORD nLoadLimit);

/// 1 when at least nLimit percent of the physical memory are in use.
int IsMemoryLoadHigh(DWORD nLimit);

/// Appends "unit(line):LastError=code" to FileAccessErrorLog.txt in the error-log folder (SetErrLogPath);
/// creates the last level of the folder. Silent when the log cannot be written.
void ReportFileAccessError(const char* pszUnit, int nLine, DWORD nError);

/// The same with ",counter=n", in a log emptied before, followed by the space left on the drives c, d and e.
void ReportFileAccessErrorCounted(const char* pszUnit, int nLine, DWORD nError, int nCounter);

/// Reports the last error as a file access failure of a statement, and keeps it as last error.
/// @return MM_FILE_ACCESS
DWORD FailFileAccess(const char* pszUnit, int nLine);
