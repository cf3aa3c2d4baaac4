#pragma once
// All that the library asks of the operating system: a small subset of the Win32 API, and a few operations
// for which that API needs several calls.
//
// Rules that hold for every call:
// - Names, arguments, results and last-error codes are those of the Win32 API. On Windows the system itself
//   answers; elsewhere Platform/posix does, and refuses what the description of a call does not offer with
//   error 87.
// - Any thread may make any call, and none waits for a lock of the library.
// - A call that fails sets the calling thread's last error. After a call that succeeded it means nothing, but
//   for GetFileSize.
// - Interrupted calls and short transfers are completed inside the layer.
// - Every handle, view and block is released once, by the side that obtained it.
// - Paths are bytes. A backslash separates folders on every system, unless it is the second byte of a
//   double-byte character: on Windows of the system's code page, elsewhere of code page 932 in a text that is
//   not valid UTF-8.

#include "Platform/PlatformTypes.h"

#include <cstdio>

#if !defined(_WIN32)
#include "Platform/posix/PosixApi.h"
#endif

namespace platform {

/// Opens a text file as fopen does; '\n' becomes the line end of the system's text files.
/// @param pszMode  "a" or "w"
/// @return a stream that the caller closes with fclose; null: it could not be opened
std::FILE* OpenTextFile(const char* pszPath, const char* pszMode);

/// Opens a file as fopen does with "wb".
/// @param nBytes  the most bytes that will be written
/// @return a stream that the caller closes with fclose; null: it could not be opened, or the process may not
///         write a file of that length
std::FILE* OpenBinaryFile(const char* pszPath, ULONGLONG nBytes);

/// Copies bytes into a file, one chunk of a longer transfer. Views of the same file show them.
/// @param hMap     a read/write mapping of the file that covers the bytes to be written
/// @param nOffset  position in the file
/// @param bFlush   start writing the bytes to the disk now
/// @return false, with the reason as last error: some of the bytes may have been copied
bool CopyToFile(HANDLE hFile, HANDLE hMap, DWORD nOffset, const void* pSrc, DWORD nBytes, bool bFlush);

} // namespace platform
