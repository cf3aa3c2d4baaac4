// Heap blocks, and comparing texts without regard to case.

#include "Platform/posix/PosixLayer.h"

#include <cstdlib>

using namespace platform::posix;

namespace {

/// Gives the bytes of a text one after the other, capital letters as small ones. A byte that looks like a
/// letter but is not the first of its character stays.
class FoldedBytes
{
public:
    explicit FoldedBytes(const char* pszText) : m_set(pszText), m_pNext(pszText), m_nFollowing(0) {}

    int Next()
    {
        const bool bFirst = m_nFollowing == 0;
        if (bFirst)
            m_nFollowing = m_set.Length(m_pNext);
        --m_nFollowing;
        const char c = *m_pNext++;
        return static_cast<unsigned char>(bFirst ? SmallLetter(c) : c);
    }

private:
    CharacterSet m_set;
    const char* m_pNext;
    int m_nFollowing; ///< bytes that are left of the character at m_pNext
};

} // namespace

HLOCAL LocalAlloc(UINT nFlags, SIZE_T nBytes)
{
    if (nFlags != LMEM_FIXED)
        return FailNull(ERROR_INVALID_PARAMETER);
    void* pBlock = std::malloc(nBytes);
    return pBlock ? pBlock : FailNull(ERROR_NOT_ENOUGH_MEMORY);
}

HLOCAL LocalReAlloc(HLOCAL pBlock, SIZE_T nBytes, UINT nFlags)
{
    if (!pBlock || nBytes == 0 || nFlags != LMEM_MOVEABLE)
        return FailNull(ERROR_INVALID_PARAMETER);
    void* pMoved = std::realloc(pBlock, nBytes);
    return pMoved ? pMoved : FailNull(ERROR_NOT_ENOUGH_MEMORY);
}

HLOCAL LocalFree(HLOCAL pBlock)
{
    std::free(pBlock);
    return nullptr;
}

int lstrcmpiA(LPCSTR pszLeft, LPCSTR pszRight)
{
    FoldedBytes left(pszLeft), right(pszRight);
    for (;;) {
        const int nLeft = left.Next(), nRight = right.Next();
        if (nLeft != nRight || nLeft == 0)
            return nLeft - nRight;
    }
}
