#pragma once
// Memory, views and files as the library uses them: retries, range arithmetic, appends, and the error log.
//
// Internal, though a static library shows these names to the linker. Any thread; no call takes a lock or
// keeps a handle.

#include "Platform/PlatformTypes.h"

#include <optional>

/// A call is tried again only after system error 8: every 10 ms, until 60000 ms have passed.
inline constexpr DWORD kRetryPauseMs = 10;
inline constexpr DWORD kRetryLimitMs = 60000;

/// File offset that stands for the current end of the file in WriteFileByView.
inline constexpr DWORD kAppend = 0xFFFFFFFF;
/// The nLoadLimit that all callers of WriteFileByView pass.
inline constexpr DWORD kFlushLoadPercent = 60;

/// The system error that is reported for a file that is shorter than its picture.
inline constexpr DWORD kErrorEndOfFile = 38;

/// Every view starts at a multiple of this many bytes. The system is asked on every call.
DWORD AllocationGranularity();

/// The longest file that has a 32-bit position for its end.
inline constexpr DWORD kLongestFile = 0xFFFFFFFF;

/// Length of a file in bytes. None, with the reason as last error: the length cannot be determined, or does
/// not fit 32 bits (error 223).
std::optional<DWORD> FileLength(HANDLE hFile);

/// Sets the file pointer to an unsigned position. False: the last error tells why.
bool SeekFile(HANDLE hFile, DWORD nPosition);

/// MapViewOfFile with retries while address space is short. Null: the last error is that of the last try.
void* MapViewOfFileRetry(HANDLE hMap, DWORD nAccess, DWORD nOffsetHigh, DWORD nOffsetLow, SIZE_T nBytes);

/// VirtualAlloc with retries while memory is short. Null: the last error is that of the last try.
void* VirtualAllocRetry(void* pAddress, SIZE_T nBytes, DWORD nType, DWORD nProtect);

/// Commits zero-filled read/write memory at the top of the address space; FreeMemoryBlock releases it. Null
/// when there is none; with bRetry nonzero only after waiting while memory is short.
void* AllocMemoryBlock(SIZE_T nBytes, int bRetry);

/// Releases a block; null is ignored.
void FreeMemoryBlock(void* pBlock);

/// Releases a view by its base address; 0 on failure.
int UnmapView(void* pView);

/// The view that covers a byte range of a file: whole granules, cut at the file's end.
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

/// Extends the file to nOffset + nBytes bytes if it is shorter, and copies the bytes into it from nOffset on,
/// in chunks of at most 16 MiB.
/// @param pnWritten   out: bytes copied, counted in whole chunks
/// @param nOffset     kAppend: the file's end
/// @param nLoadLimit  memory load in percent from which each chunk is flushed to the disk
/// @return 1; 0 with the reason as last error: the file keeps its new length
int WriteFileByView(HANDLE hFile, const void* pSrc, DWORD nBytes, DWORD* pnWritten, DWORD nOffset,
                    DWORD nLoadLimit);

/// Appends the bytes to the file, as WriteFileByView does it. False, with the reason as last error: not all
/// were written. Nothing is done for 0 bytes.
bool AppendByViews(HANDLE hFile, const void* pSrc, DWORD nBytes);

/// 1 when at least nLimit percent of the physical memory is in use.
int IsMemoryLoadHigh(DWORD nLimit);

/// Appends "unit(line):LastError=code" to FileAccessErrorLog.txt in the error log's folder
/// (ErrorLogFolder.h), whose last level is created. Silent when the log cannot be written. Keeps the last
/// error.
void ReportFileAccessError(const char* pszUnit, int nLine, DWORD nError);

/// The same with ",counter=n" at the line's end, followed by the space left on the drives c, d and e. The log
/// is emptied first.
void ReportFileAccessErrorCounted(const char* pszUnit, int nLine, DWORD nError, int nCounter);

/// Reports the last error as a file access failure of a statement.
/// @return MM_FILE_ACCESS
DWORD FailFileAccess(const char* pszUnit, int nLine);
