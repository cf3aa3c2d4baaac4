#pragma once
// The scope of the library's one lock, for rooms that know no image object.
//
// Internal.

#include "Platform/Platform.h"

/// The library's one, recursive lock. The budget owns it and initialises it when the library is loaded; hosts
/// get the same address from CImageObj::GetCS.
CRITICAL_SECTION* AddressOfLibraryLock();

/// Holds the library's lock for a scope. A thread that holds it may take it again.
class LibraryLock
{
public:
    LibraryLock() { EnterCriticalSection(AddressOfLibraryLock()); }
    ~LibraryLock() { LeaveCriticalSection(AddressOfLibraryLock()); }
    LibraryLock(const LibraryLock&) = delete;
    LibraryLock& operator=(const LibraryLock&) = delete;
};
