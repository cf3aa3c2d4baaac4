#pragma once
// A part of the budget that no image object has.

#include "MemoryManager/MemoryManager.h"
#include "system/LockScope.h"

#include <cstdint>

/// Bytes that are taken from the free budget for a scope.
class BudgetCharge
{
public:
    /// @param nBytes  at most the budget
    explicit BudgetCharge(std::int64_t nBytes) : m_nBytes(static_cast<LONG>(nBytes)) { AddToFree(-m_nBytes); }
    ~BudgetCharge() { AddToFree(m_nBytes); }
    BudgetCharge(const BudgetCharge&) = delete;
    BudgetCharge& operator=(const BudgetCharge&) = delete;

private:
    static void AddToFree(LONG nBytes)
    {
        const os::LockScope lock(CImageObj::GetCS());
        CImageObj::UpdateUseMemory(nBytes);
    }

    LONG m_nBytes;
};
