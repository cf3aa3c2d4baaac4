// Work buffers: a processing step lists them in a table, and one block holds them all. They lie in it without
// gaps, in the order they were listed. The images' budget is not charged for them.

#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"

#include <cstdint>
#include <limits>

namespace {

/// The field that holds a named section's hash holds a work buffer's size.
DWORD BytesOf(const _SECTION& buffer)
{
    return static_cast<DWORD>(buffer.nHash);
}

std::uint64_t SumOfBytes(const _SECTION* pBuffers, int nCount)
{
    std::uint64_t nBytes = 0;
    for (int i = 0; i < nCount; ++i)
        nBytes += BytesOf(pBuffers[i]);
    return nBytes;
}

} // namespace

int CWorkTableList::SetWorkTable(unsigned char** ppBuf, unsigned int nSize)
{
    if (!ppBuf)
        return 0;
    int nBuffer = FindSection(ppBuf);
    if (nBuffer < 0) {
        if (!AddSection(ppBuf))
            return 0;
        nBuffer = m_nSectionCnt - 1;
    }
    m_pSection[nBuffer].nHash = static_cast<int>(nSize);
    return 1;
}

int CWorkTableList::GetTotalSize()
{
    const std::uint64_t nBytes = SumOfBytes(m_pSection, m_nSectionCnt);
    if (nBytes == 0)
        return 0;
    if (m_nTotalSize == 0) {
        const std::uint64_t nGranule = AllocationGranularity();
        const std::uint64_t nRounded = (nBytes + nGranule - 1) / nGranule * nGranule;
        if (nRounded <= std::uint64_t{std::numeric_limits<int>::max()})
            m_nTotalSize = static_cast<int>(nRounded);
    }
    return m_nTotalSize;
}

int CWorkTableList::AllocWorkTable()
{
    const std::uint64_t nBytes = SumOfBytes(m_pSection, m_nSectionCnt);
    if (nBytes == 0)
        return 1;
    const SIZE_T nTotal = static_cast<SIZE_T>(GetTotalSize());
    if (nBytes > nTotal)
        return 0;
    if (m_pWorkMem && !VirtualFree(m_pWorkMem, 0, MEM_RELEASE))
        return 0;
    m_pWorkMem = AllocMemoryBlock(nTotal, 1);
    if (!m_pWorkMem)
        return 0;

    unsigned char* pNext = static_cast<unsigned char*>(m_pWorkMem);
    for (int i = 0; i < m_nSectionCnt; ++i) {
        const DWORD nSize = BytesOf(m_pSection[i]);
        if (nSize > 0 && m_pSection[i].ppBuf)
            *m_pSection[i].ppBuf = pNext;
        pNext += nSize;
    }
    return 1;
}
