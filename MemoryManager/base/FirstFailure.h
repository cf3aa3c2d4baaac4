#pragma once
// Which result an operation returns whose clean-up can fail too.
//
// Internal.

#include "MemoryManager/ResultCodes.h"

/// The first of two results that is not success. Both have been obtained by then: a clean-up that is the
/// second argument runs whatever came before it.
inline DWORD FirstFailure(DWORD nFirst, DWORD nSecond)
{
    return nFirst != MM_SUCCESS ? nFirst : nSecond;
}
