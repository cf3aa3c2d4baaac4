// How unit bands reach their external images: bytes in place, file positions, reports of what failed.

#include "MemoryManager/bands/UnitBands.h"

#include "MemoryManager/ResultCodes.h"
#include "Platform/Platform.h"

namespace {

constexpr char kUnit[] = "MemoryManager/CImageObj";

} // namespace

bool SeekFile(HANDLE hFile, DWORD nPosition)
{
    LONG nHigh = 0;
    return SetFilePointer(hFile, static_cast<LONG>(nPosition), &nHigh, FILE_BEGIN) !=
           INVALID_SET_FILE_POINTER;
}

DWORD FailUnitFile(int nLine)
{
    ReportFileAccessError(kUnit, nLine, GetLastError());
    return MM_FILE_ACCESS;
}

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
    if (nPosition + nBytes > FileLength(inf.hData)) { // a view would be cut there
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
