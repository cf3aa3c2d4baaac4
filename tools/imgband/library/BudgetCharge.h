#pragma once
// A part of the budget that no image object has.

#include "MemoryManager/MemoryManager.h"
#include "system/LockScope.h"

/// Bytes that are taken from the free budget for a scope.
class BudgetCharge
{
public:
    explicit BudgetCharge(LONG nBytes) : m_nBytes(nBytes) { AddToFree(-m_nBytes); }
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
