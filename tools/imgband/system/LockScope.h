#pragma once
// The library's lock, held for a scope.

#include "Platform/PlatformTypes.h"

namespace os {

/// A host takes the lock while it changes what threads share in the library. It is recursive, so that the
/// library may be called meanwhile.
class LockScope
{
public:
    /// @param pLock  CImageObj::GetCS()
    explicit LockScope(CRITICAL_SECTION* pLock);
    ~LockScope();
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;

private:
    CRITICAL_SECTION* m_pLock;
};

} // namespace os
