#pragma once
// Changes of the process-wide memory budget, each under the library's lock, and its arithmetic.
//
// Internal. Any thread.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/base/LibraryLock.h"

#include <algorithm>
#include <cstdint>
#include <limits>

/// Takes nBytes from the free budget, which may become negative.
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

/// A sum of charges, computed in 64 bits, limited to what a LONG can hold.
inline LONG HeldWithinLong(std::int64_t nSum)
{
    return static_cast<LONG>(
        std::clamp<std::int64_t>(nSum, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}
