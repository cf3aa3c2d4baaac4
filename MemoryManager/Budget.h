#pragma once
// Changes of the process-wide memory budget under the library's lock.

#include "MemoryManager/CImageObj.h"
#include "Platform/Platform.h"

/// Holds the library's lock for a scope. A thread that holds it may take it again.
class LibraryLock
{
public:
    LibraryLock() { EnterCriticalSection(CImageObj::GetCS()); }
    ~LibraryLock() { LeaveCriticalSection(CImageObj::GetCS()); }
    LibraryLock(const LibraryLock&) = delete;
    LibraryLock& operator=(const LibraryLock&) = delete;
};

/// Charges the budget with nBytes; it may go negative.
inline void ChargeBudget(LONG nBytes)
{
    const LibraryLock lock;
    CImageObj::UpdateUseMemory(-nBytes);
}

/// Gives nBytes back to the budget.
inline void ReturnToBudget(LONG nBytes)
{
    const LibraryLock lock;
    CImageObj::UpdateUseMemory(nBytes);
}
