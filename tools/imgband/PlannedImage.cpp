// Noting the plan of a transfer.

#include "PlannedImage.h"

#include "Formats.h"

namespace {

const char* PlaceOf(const CImageCtrl* pStore)
{
    if (!pStore || pStore->GetAcsType() == ACS_NONE)
        return "nowhere";
    if (pStore->GetAcsType() == ACS_MEMORY)
        return "memory";
    return pStore->GetAllMapFlg() ? "temporary file, mapped whole" : "temporary file";
}

} // namespace

void PlannedImage::GetImageInfo(T_ImageLrg_tag* pInfo)
{
    CImageObj::GetImageInfo(pInfo);
    Note();
}

int PlannedImage::GetBandHeight()
{
    Note();
    return CImageObj::GetBandHeight();
}

DWORD PlannedImage::SetGeometry(int nWidth, int nHeight, int nFormat)
{
    T_ImageLrg_tag info = {};
    info.nWidth = nWidth;
    info.nHeight = nHeight;
    info.nFormat = nFormat;
    info.nAlignType = MM_ALIGN_LINES;
    info.nRatio = 100;
    return SetImageInfo(&info);
}

ImagePlan PlannedImage::Plan(const std::string& szImage) const
{
    return {szImage,           PlaceOf(m_pImageCtrl), m_ImgInfo.nBufSize,
            m_ImgInfo.nHeight, m_ImgInfo.nBandLines,  m_nAreaSize};
}

void PlannedImage::Note()
{
    m_noted = Plan("object");
    m_nExternalCharge = m_nFreeBefore - FreeWithoutExternal();
}

// The budget that would be free without this object's charge, and without the reserve that a second planning
// attempt withholds while it lives.
LONG PlannedImage::FreeWithoutExternal() const
{
    return AskFreeMemory() + m_nAreaSize + (m_nReserveTaken ? ms_ReserveMemory : 0);
}
