// The library's lock on POSIX systems.

#include "system/LockScope.h"

#include <pthread.h>

namespace os {

LockScope::LockScope(CRITICAL_SECTION* pLock) : m_pLock(pLock)
{
    pthread_mutex_lock(&m_pLock->mutex);
}

LockScope::~LockScope()
{
    pthread_mutex_unlock(&m_pLock->mutex);
}

} // namespace os
