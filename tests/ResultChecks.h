#pragma once
// Checks of the library's result codes: a failure tells what the number means.

#include "SameBytes.h"

#include "MemoryManager/ResultCodes.h"

template <class Wanted, class Got>
testing::AssertionResult HasCode(const char*, const char* pszCall, Wanted wanted, Got got)
{
    const auto nWanted = static_cast<DWORD>(wanted), nGot = static_cast<DWORD>(got);
    if (nWanted == nGot)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << pszCall << "\ngave " << nGot << ": " << MM_ResultText(nGot)
                                       << "\nnot " << nWanted << ": " << MM_ResultText(nWanted);
}

#define EXPECT_CODE(wanted, call) EXPECT_PRED_FORMAT2(HasCode, wanted, call)
#define ASSERT_CODE(wanted, call) ASSERT_PRED_FORMAT2(HasCode, wanted, call)
#define EXPECT_OK(call) EXPECT_CODE(MM_SUCCESS, call)
#define ASSERT_OK(call) ASSERT_CODE(MM_SUCCESS, call)
