#pragma once
// The subset of the Win32 API that this layer provides over POSIX. See Platform/Platform.h for the rules.
//
// The description of each call lists the errors that its callers distinguish; others come from the system's
// own error numbers. A process that fork made and that goes on without exec must not use what its parent
// opened or mapped.

#include "Platform/posix/PosixTypes.h"

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr int MAX_PATH = 260;

// The error codes that this layer sets.
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
    DWORD dwAllocationGranularity; ///< 65536: the file positions of views are multiples of it
};

struct MEMORYSTATUS
{
    DWORD dwLength;
    DWORD dwMemoryLoad; ///< percent in use, of the machine or of the control group, whichever is fuller
    SIZE_T dwTotalPhys; ///< bytes of the machine or of the control group
    SIZE_T dwAvailPhys; ///< bytes of them that are available
};

/// Allocates zero-filled read/write memory; VirtualFree releases it. pAddress is null, nType is MEM_COMMIT |
/// MEM_RESERVE and may have MEM_TOP_DOWN, nProtect is PAGE_READWRITE. Null: 8 no memory or address space, 87.
LPVOID VirtualAlloc(LPVOID pAddress, SIZE_T nBytes, DWORD nType, DWORD nProtect);

/// Releases a whole block by its address; nBytes is 0 and nType MEM_RELEASE. False: 487 not the address of a
/// block, 87.
BOOL VirtualFree(LPVOID pAddress, SIZE_T nBytes, DWORD nType);

using HLOCAL = void*;
using UINT = unsigned int;

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_MOVEABLE = 2;

/// Allocates a block of the process's heap, which is not cleared; LocalFree releases it. nFlags is
/// LMEM_FIXED. Null: 8 no memory, 87.
HLOCAL LocalAlloc(UINT nFlags, SIZE_T nBytes);

/// Makes a block larger or smaller and keeps its bytes, perhaps at another address, which it returns. nFlags
/// is LMEM_MOVEABLE. Null: 8 no memory, 87; the block is as it was.
HLOCAL LocalReAlloc(HLOCAL pBlock, SIZE_T nBytes, UINT nFlags);

/// Releases a block; null is ignored. Returns null.
HLOCAL LocalFree(HLOCAL pBlock);

void GetSystemInfo(SYSTEM_INFO* pInfo);         ///< fills the record
void GlobalMemoryStatus(MEMORYSTATUS* pStatus); ///< fills the record with what is in use now

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

/// Opens a file; CloseHandle closes it.
///
/// @param nAccess    GENERIC_READ, GENERIC_WRITE or both
/// @param nShare     0: nobody else can open or delete the file, in this process or another.
///                   FILE_SHARE_READ | FILE_SHARE_WRITE: others can open it with the same sharing, and nobody
///                   can delete it. On a file system without locks neither holds.
/// @param pSecurity  null
/// @param nCreation  OPEN_EXISTING, or CREATE_NEW, CREATE_ALWAYS or OPEN_ALWAYS with GENERIC_WRITE. Those
///                   that create do not follow a link at the path's end, and only the owner can use a new
///                   file (0600).
/// @param nFlags     FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_TEMPORARY, and FILE_FLAG_DELETE_ON_CLOSE for a new
///                   file that is read and written and not shared. Its data has no name: however the process
///                   ends, at most an empty file of this name stays behind.
/// @param hTemplate  null
/// @return INVALID_HANDLE_VALUE: 2 no such file; 5 a folder, a link, or no permission; 32 somebody else has
///         the file open; 80 CREATE_NEW and the file exists; 206 path too long; 87
HANDLE CreateFileA(LPCSTR pszPath, DWORD nAccess, DWORD nShare, void* pSecurity, DWORD nCreation,
                   DWORD nFlags, HANDLE hTemplate);

/// Reads from the file pointer on, and moves it. *pnRead below nBytes means that the file ended; the rest of
/// the buffer is untouched. pOverlapped is null. False: *pnRead bytes were read before the error.
BOOL ReadFile(HANDLE hFile, LPVOID pBuffer, DWORD nBytes, DWORD* pnRead, void* pOverlapped);

/// Sets the file pointer, counted from the file's start: nMethod is FILE_BEGIN. With a null pnHigh, nDistance
/// is the signed position, else the low half of a 64-bit position whose high half is *pnHigh. Returns the low
/// half of the position, or INVALID_SET_FILE_POINTER: 131 ahead of the file's start, 87.
DWORD SetFilePointer(HANDLE hFile, LONG nDistance, LONG* pnHigh, DWORD nMethod);

/// Returns the low half of the file's size; pnHigh may be null, or receives the high half. INVALID_FILE_SIZE:
/// 6 not an open file; with last error 0 it is the low half.
DWORD GetFileSize(HANDLE hFile, DWORD* pnHigh);

/// Closes a file or a mapping, or a descriptor that a host has opened. Of a file that is deleted on close the
/// name disappears now, and the data with the last mapping and view. False: 6 not open.
BOOL CloseHandle(HANDLE hObject);

/// Makes the last folder of a path; pSecurity is null. False: 183 it exists, 3 a folder that leads to it does
/// not.
BOOL CreateDirectoryA(LPCSTR pszPath, void* pSecurity);

/// Deletes a regular file of this user that no process has open through this layer. False: 32 a process has
/// it open, 5 anything else than a regular file, a file of somebody else or no permission, 2 no such file.
BOOL DeleteFileA(LPCSTR pszPath);

struct ULARGE_INTEGER
{
    ULONGLONG QuadPart;
};

/// Tells the space of the disk that a folder lies on, in bytes: what the caller can use, all, and what is
/// free. Each pointer may be null. False: no such folder.
BOOL GetDiskFreeSpaceExA(LPCSTR pszFolder, ULARGE_INTEGER* pnCaller, ULARGE_INTEGER* pnTotal,
                         ULARGE_INTEGER* pnFree);

// Mappings -------------------------------------------------------------------------------------------------

inline constexpr DWORD FILE_MAP_WRITE = 0x2;
inline constexpr DWORD FILE_MAP_READ = 0x4;
inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;

/// Makes a mapping of a file, of which MapViewOfFile makes views; CloseHandle closes it. The mapping keeps
/// the file and its lock even after the file's handle is closed.
///
/// PAGE_READWRITE makes a shorter file as long as the mapping. It reserves disk blocks for all mapped bytes,
/// so that a sparse file takes its full size even if it is only read. Bytes of the file do not change.
/// PAGE_READONLY reserves nothing and refuses a shorter file.
///
/// @param pSecurity, pszName  null
/// @param nProtect            PAGE_READONLY or PAGE_READWRITE
/// @param nSizeHigh           0
/// @param nSizeLow            bytes; 0: the file's size
/// @return null: 8 a file that is too short for PAGE_READONLY; 112 disk full or 223 above the process's
///         file-size limit, and the file's length is as it was; 1006 an empty file and no size; 5 the file is
///         not open for this protection, or is open for appending; 87
HANDLE CreateFileMappingA(HANDLE hFile, void* pSecurity, DWORD nProtect, DWORD nSizeHigh, DWORD nSizeLow,
                          LPCSTR pszName);

/// Makes a view of nBytes bytes (0: up to the mapping's end) from an offset on that is a multiple of the
/// allocation granularity; UnmapViewOfFile releases it. nAccess is FILE_MAP_READ, FILE_MAP_WRITE or
/// FILE_MAP_ALL_ACCESS; the last two both read and write. Null: 8 no address space, 5 the mapping does not
/// allow the access or ends before the view does, 1132 another offset, 87.
LPVOID MapViewOfFile(HANDLE hMap, DWORD nAccess, DWORD nOffsetHigh, DWORD nOffsetLow, SIZE_T nBytes);

/// Releases a view by the address that MapViewOfFile returned. False: 487 no view has this address.
BOOL UnmapViewOfFile(LPCVOID pView);

/// Writes nBytes (0: up to the view's end) from an address inside a view to the disk, and waits until they
/// are there. False: 487 not inside one view.
BOOL FlushViewOfFile(LPCVOID pAddress, SIZE_T nBytes);

// Temporary files and folder search ------------------------------------------------------------------------

/// Copies the path of the temporary folder from the root on: $TMPDIR, which may be relative to the current
/// folder, else /tmp, with a slash at its end. Returns its length without the terminator. When the buffer of
/// nChars bytes is too small, it stays as it is, and the result is the size needed, terminator included. 0:
/// 206 the path is longer than the system allows.
DWORD GetTempPathA(DWORD nChars, LPSTR pszPath);

/// Creates an empty file with a name that was unused: pszFolder, the first three characters of pszPrefix, a
/// number and ".tmp". Only its owner can use it (0600). nUnique is 0. pszName receives the path, with
/// slashes, and has room for MAX_PATH bytes. Returns the number; 0: 206 the path would be longer, 3 an empty
/// pszFolder.
DWORD GetTempFileNameA(LPCSTR pszFolder, LPCSTR pszPrefix, DWORD nUnique, LPSTR pszName);

struct WIN32_FIND_DATAA
{
    char cFileName[MAX_PATH];
};

/// Starts a search in one folder and finds the first name; FindClose ends it. The last part of the pattern
/// may contain * for any number of characters and ? for one. The case of a to z does not matter, and ".*" at
/// the pattern's end also matches names without a dot. A name with a backslash is left out where a path that
/// ends with it would lead elsewhere. INVALID_HANDLE_VALUE: 2 nothing matches, 3 no such folder.
HANDLE FindFirstFileA(LPCSTR pszPattern, WIN32_FIND_DATAA* pData);

/// Finds the next name of a search. False: 18 there is none.
BOOL FindNextFileA(HANDLE hFind, WIN32_FIND_DATAA* pData);

/// Ends a search. Always true.
BOOL FindClose(HANDLE hFind);

// Texts ----------------------------------------------------------------------------------------------------

/// Compares texts byte by byte without regard to the case of A to Z. In a text that is not valid UTF-8 the
/// second byte of a double-byte character is no letter. Returns 0 for equal texts; below 0: the left one is
/// the smaller.
int lstrcmpiA(LPCSTR pszLeft, LPCSTR pszRight);

// Locks and time -------------------------------------------------------------------------------------------

void InitializeCriticalSection(CRITICAL_SECTION* pSection); ///< makes the lock, which nobody holds
void EnterCriticalSection(CRITICAL_SECTION* pSection);  ///< takes the lock, once more if this thread has it
void LeaveCriticalSection(CRITICAL_SECTION* pSection);  ///< undoes one EnterCriticalSection of this thread
void DeleteCriticalSection(CRITICAL_SECTION* pSection); ///< ends a lock that nobody holds

/// Sets *pnTarget to nExchange if it is nComparand, in one step that other threads see whole. Returns the
/// value that it had before.
LONG InterlockedCompareExchange(volatile LONG* pnTarget, LONG nExchange, LONG nComparand);

DWORD GetCurrentThreadId();      ///< the system's number of the calling thread
DWORD GetTickCount();            ///< milliseconds of a monotonic clock; starts again from 0 after 32 bits
void Sleep(DWORD nMilliseconds); ///< pauses no shorter than that, whatever signals arrive

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

BOOL QueryPerformanceCounter(LARGE_INTEGER* pnCount); ///< nanoseconds of a monotonic clock; always true
