#pragma once
// Types and export attributes outside Windows.
//
// A file HANDLE is a file descriptor cast to a pointer: a host opens its file with open(2) and passes
// (HANDLE)(intptr_t)fd. This layer never hands out descriptor 0, since a null handle means that there is
// none.

#include <cstddef>
#include <cstdint>
#include <pthread.h>

using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = int;
using SIZE_T = std::size_t;
using LPVOID = void*;
using LPCVOID = const void*;
using LPCSTR = const char*;
using LPSTR = char*;
using HANDLE = void*;

/// A recursive lock. A host that takes the library's lock, CImageObj::GetCS(), calls pthread_mutex_lock for
/// its mutex, and pthread_mutex_unlock on the same thread.
struct CRITICAL_SECTION
{
    pthread_mutex_t mutex;
};

#define MM_EXPORT __attribute__((visibility("default")))
#define MM_IMPORT __attribute__((visibility("default")))
