#pragma once
// Changes of the process-wide memory budget under the library's lock, and its arithmetic.

#include "MemoryManager/CImageObj.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <limits>

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

/// Sums of charges are made wide; this is what a 32-bit counter holds of one.
inline LONG HeldWithinLong(std::int64_t nSum)
{
    return static_cast<LONG>(
        std::clamp<std::int64_t>(nSum, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}
