#pragma once
// Changes of the process-wide memory budget under the library's lock, and its arithmetic.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/base/LibraryLock.h"

#include <algorithm>
#include <cstdint>
#include <limits>

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
