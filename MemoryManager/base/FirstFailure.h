#pragma once
// The result of an operation whose clean-up can fail too.
//
// Internal.

#include "MemoryManager/ResultCodes.h"

/// The first of two results that is not success. A clean-up whose result is the second argument runs in
/// either case.
inline DWORD FirstFailure(DWORD nFirst, DWORD nSecond)
{
    return nFirst != MM_SUCCESS ? nFirst : nSecond;
}
