#pragma once
// All that the library asks of the operating system: a small subset of the Win32 API, and the few
// operations that the API does not have in one piece.
//
// Rules that hold for every call:
// - Names, arguments, results and last-error codes are those of the Win32 API. Flags that are not listed
//   beside a call fail with error 87 instead of pretending.
// - Any thread may call anything; the last error belongs to the calling thread and is set by failures only.
// - Interrupted calls and short transfers are finished inside the layer.
// - Paths are bytes. A backslash separates folders, on every system, unless it is the second byte of a
//   double-byte character: on Windows of its code page, elsewhere of code page 932 in a text that is not
//   valid UTF-8.
// - Every handle is closed once, by the side that opened it.

#include "Platform/PlatformTypes.h"

#include <cstdio>

#if !defined(_WIN32)
#include "Platform/posix/PosixApi.h"
#endif

namespace platform {

/// fopen for a text file ("a" or "w"): lines end as the system's text files do. Null when it cannot be
/// opened. The caller closes it with fclose.
std::FILE* OpenTextFile(const char* pszPath, const char* pszMode);

/// fopen with "wb" for a file that gets at most nBytes bytes. Null: it cannot be opened, or the process may
/// not have a file that long. The caller closes it with fclose.
std::FILE* OpenBinaryFile(const char* pszPath, ULONGLONG nBytes);

/// Copies nBytes from pSrc to the file position nOffset of a file that hMap, a read/write mapping of it, has
/// already made long enough; one chunk of an append. bFlush: start writing it to the disk at once.
/// Views of the same file see the bytes. False: the last error tells why, and the chunk may be there in part.
bool CopyToFile(HANDLE hFile, HANDLE hMap, DWORD nOffset, const void* pSrc, DWORD nBytes, bool bFlush);

} // namespace platform
