// Addressing bytes of the host's block or file for one operation on them.

#include "MemoryManager/stores/ExternalBytes.h"

#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"

ExternalBytes::ExternalBytes(const T_ImgInf& inf, HANDLE hMap, DWORD nPosition, std::int64_t nBytes,
                             bool bWrite)
{
    if (inf.eAcsType == ACS_MEMORY) {
        if (inf.hData)
            m_pData = static_cast<unsigned char*>(inf.hData) + nPosition;
        else
            SetLastError(ERROR_INVALID_ADDRESS);
        return;
    }
    if (nPosition + nBytes >
        FileLength(inf.hData).value_or(kLongestFile)) { // MapFileRange would cut the view there
        SetLastError(kErrorEndOfFile);
        return;
    }
    m_pData = static_cast<unsigned char*>(
        MapFileRange(inf.hData, hMap, nPosition, static_cast<DWORD>(nBytes), bWrite ? 1 : 0));
    if (m_pData)
        m_pView = m_pData - nPosition % AllocationGranularity();
}

ExternalBytes::~ExternalBytes()
{
    if (m_pView)
        UnmapView(m_pView);
}
