#pragma once
// The subset of the Win32 API that this layer provides over POSIX. See Platform/Platform.h for the rules.
//
// Beside each call stand the errors that its callers tell apart; the others are those of the system below. A
// process that was made by fork and runs on without exec must not use what its parent opened or mapped.

#include "Platform/posix/PosixTypes.h"

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr int MAX_PATH = 260;

// Error codes that this layer sets.
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_FILE_INVALID = 1006;
inline constexpr DWORD ERROR_MAPPED_ALIGNMENT = 1132;

DWORD GetLastError();
void SetLastError(DWORD nError);

// Memory ---------------------------------------------------------------------------------------------------

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD MEM_TOP_DOWN = 0x100000;
inline constexpr DWORD PAGE_READONLY = 0x02;
inline constexpr DWORD PAGE_READWRITE = 0x04;

struct SYSTEM_INFO
{
    DWORD dwPageSize;
    DWORD dwAllocationGranularity; ///< 65536: every view starts at a multiple of it, as callers see it
};

struct MEMORYSTATUS
{
    DWORD dwLength;
    DWORD dwMemoryLoad; ///< percent in use, of the machine or of the control group, whichever is fuller
    SIZE_T dwTotalPhys;
    SIZE_T dwAvailPhys;
};

/// Zero-filled read/write memory. nType is MEM_COMMIT | MEM_RESERVE, MEM_TOP_DOWN allowed; nProtect
/// PAGE_READWRITE; pAddress null. Null: 8 no memory or address space, 87.
LPVOID VirtualAlloc(LPVOID pAddress, SIZE_T nBytes, DWORD nType, DWORD nProtect);

/// Releases a whole block: nBytes 0, MEM_RELEASE. False: 487 not the start of a block, 87.
BOOL VirtualFree(LPVOID pAddress, SIZE_T nBytes, DWORD nType);

using HLOCAL = void*;
using UINT = unsigned int;

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_MOVEABLE = 2;

/// A block of the process's heap, not filled; nFlags LMEM_FIXED. Null: 8, 87.
HLOCAL LocalAlloc(UINT nFlags, SIZE_T nBytes);

/// Makes a block larger or smaller and keeps its bytes; nFlags LMEM_MOVEABLE: its address may become another.
/// Null: 8, 87, and the block is as it was.
HLOCAL LocalReAlloc(HLOCAL pBlock, SIZE_T nBytes, UINT nFlags);

/// Null, also for null: done.
HLOCAL LocalFree(HLOCAL pBlock);

void GetSystemInfo(SYSTEM_INFO* pInfo);
void GlobalMemoryStatus(MEMORYSTATUS* pStatus);

// Files ----------------------------------------------------------------------------------------------------

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;
inline constexpr DWORD FILE_BEGIN = 0;

/// Opens a file; pSecurity and hTemplate null. nShare 0 holds against every process (32 for the others),
/// FILE_SHARE_READ | FILE_SHARE_WRITE against those and against deletion; where the file system knows no
/// locks, against nobody. CREATE_NEW, CREATE_ALWAYS and OPEN_ALWAYS want GENERIC_WRITE, follow no link at the
/// path's end (5), and give a new file to its owner alone (0600). With FILE_FLAG_DELETE_ON_CLOSE (new files,
/// read and write, nShare 0) the data has no name: whatever ends the process, nothing but an empty file of
/// this name stays behind. INVALID_HANDLE_VALUE: 2 no such file, 5 a folder or no permission, 32, 80
/// CREATE_NEW and there already, 206 path too long, 87.
HANDLE CreateFileA(LPCSTR pszPath, DWORD nAccess, DWORD nShare, void* pSecurity, DWORD nCreation,
                   DWORD nFlags, HANDLE hTemplate);

/// Reads at the file pointer. *pnRead below nBytes: the end of the file was reached; what lies behind it in
/// the buffer is untouched. pOverlapped null. False: *pnRead bytes came before the error.
BOOL ReadFile(HANDLE hFile, LPVOID pBuffer, DWORD nBytes, DWORD* pnRead, void* pOverlapped);

/// nMethod FILE_BEGIN only; pnHigh null takes nDistance as signed, else as the low half of 64 bits. The low
/// half of the new position, or INVALID_SET_FILE_POINTER: 131 before the file's start.
DWORD SetFilePointer(HANDLE hFile, LONG nDistance, LONG* pnHigh, DWORD nMethod);

/// Low half of the size; pnHigh, when given, receives the high half. INVALID_FILE_SIZE: 6 not an open file.
DWORD GetFileSize(HANDLE hFile, DWORD* pnHigh);

/// Closes a file or a mapping, or a descriptor that a host opened itself. The name of a file that is deleted
/// on close goes with its handle; its data with the last mapping and view. False: 6 not open.
BOOL CloseHandle(HANDLE hObject);

/// Makes the last folder of the path; pSecurity null. False: 183 there already, 3 no folder to put it in.
BOOL CreateDirectoryA(LPCSTR pszPath, void* pSecurity);

/// Deletes a name that no process holds open through this layer. False: 32 the file is held by a living
/// process, 5 a folder or no permission, 2 no such file.
BOOL DeleteFileA(LPCSTR pszPath);

struct ULARGE_INTEGER
{
    ULONGLONG QuadPart;
};

/// Bytes of the disk that holds a folder: for the caller, in all, and free; each pointer may be null.
BOOL GetDiskFreeSpaceExA(LPCSTR pszFolder, ULARGE_INTEGER* pnCaller, ULARGE_INTEGER* pnTotal,
                         ULARGE_INTEGER* pnFree);

// Mappings -------------------------------------------------------------------------------------------------

inline constexpr DWORD FILE_MAP_WRITE = 0x2;
inline constexpr DWORD FILE_MAP_READ = 0x4;
inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;

/// A mapping of nSizeLow bytes (0: the file's size); nSizeHigh and pszName 0. PAGE_READWRITE makes a shorter
/// file that long and gives all that it maps real blocks, holes included, or leaves the length as it was (112
/// disk full, 223 above the process's file-size limit): a sparse file is sparse no more, even if it is only
/// read. The bytes that are there stay. PAGE_READONLY leaves holes alone and refuses a shorter file (8). Null
/// also: 1006 nothing to map, 5 the file is not open for it, or open for appending only. The mapping keeps
/// the file and its lock by itself.
HANDLE CreateFileMappingA(HANDLE hFile, void* pSecurity, DWORD nProtect, DWORD nSizeHigh, DWORD nSizeLow,
                          LPCSTR pszName);

/// A view of nBytes (0: to the mapping's end) from a multiple of the allocation granularity. Null: 8 no
/// address space, 5 access that the mapping does not grant or a range beyond it, 1132 offset not a multiple.
LPVOID MapViewOfFile(HANDLE hMap, DWORD nAccess, DWORD nOffsetHigh, DWORD nOffsetLow, SIZE_T nBytes);

/// pView is the address that MapViewOfFile gave. False: 487 no view starts there.
BOOL UnmapViewOfFile(LPCVOID pView);

/// Writes nBytes (0: to the view's end) from an address inside a view to the disk.
BOOL FlushViewOfFile(LPCVOID pAddress, SIZE_T nBytes);

// Temporary files and folder search ------------------------------------------------------------------------

/// $TMPDIR, else /tmp, with slashes between its folders and one at its end. The length. A buffer too small
/// stays as it is; the result is then the size it needs, terminator included. 0: 206 longer than the system's
/// limit.
DWORD GetTempPathA(DWORD nChars, LPSTR pszPath);

/// Creates an empty file pszFolder + pszPrefix (three characters) + number + ".tmp", mode 0600; nUnique 0.
/// pszName holds MAX_PATH characters and has slashes between its folders. The number, or 0: 206 the name
/// would be longer, 3 no folder given.
DWORD GetTempFileNameA(LPCSTR pszFolder, LPCSTR pszPrefix, DWORD nUnique, LPSTR pszName);

struct WIN32_FIND_DATAA
{
    char cFileName[MAX_PATH];
};

/// Search in one folder; the last part of the pattern may hold * and ? (a byte of UTF-8, else a character),
/// matched without regard to the case of a to z. ".*" at its end also matches names without a dot. A name is
/// left out when a path of this layer cannot express it: behind the folder as the pattern gives it, a
/// backslash in it would be taken for a separator. Close the handle with FindClose.
/// INVALID_HANDLE_VALUE: 2 nothing matches, 3 no such folder. FindNextFileA ends with 18.
HANDLE FindFirstFileA(LPCSTR pszPattern, WIN32_FIND_DATAA* pData);
BOOL FindNextFileA(HANDLE hFind, WIN32_FIND_DATAA* pData);
BOOL FindClose(HANDLE hFind);

// Texts ----------------------------------------------------------------------------------------------------

/// Compares texts byte by byte without regard to the case of A to Z; in a text that is not valid UTF-8 the
/// second byte of a double-byte character is no letter. 0: equal; else the sign tells which is greater.
int lstrcmpiA(LPCSTR pszLeft, LPCSTR pszRight);

// Locks and time -------------------------------------------------------------------------------------------

void InitializeCriticalSection(CRITICAL_SECTION* pSection);
void EnterCriticalSection(CRITICAL_SECTION* pSection);
void LeaveCriticalSection(CRITICAL_SECTION* pSection);
void DeleteCriticalSection(CRITICAL_SECTION* pSection);
LONG InterlockedCompareExchange(volatile LONG* pnTarget, LONG nExchange, LONG nComparand);

DWORD GetCurrentThreadId();      ///< the system's number of the calling thread
DWORD GetTickCount();            ///< milliseconds of a monotonic clock
void Sleep(DWORD nMilliseconds); ///< never shorter, whatever signals arrive

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

BOOL QueryPerformanceCounter(LARGE_INTEGER* pnCount); ///< nanoseconds of a monotonic clock
