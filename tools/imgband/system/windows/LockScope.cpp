// The library's lock on Windows.

#include "system/LockScope.h"

namespace os {

LockScope::LockScope(CRITICAL_SECTION* pLock) : m_pLock(pLock)
{
    EnterCriticalSection(m_pLock);
}

LockScope::~LockScope()
{
    LeaveCriticalSection(m_pLock);
}

} // namespace os
