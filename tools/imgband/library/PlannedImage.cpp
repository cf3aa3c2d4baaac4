// Real and dry image objects, and where they are.

#include "library/PlannedImage.h"

#include <algorithm>
#include <utility>

PlannedImage::PlannedImage(bool bDry, std::string szName) : m_bDry(bDry), m_szName(std::move(szName))
{
    ++ms_nHolding;
}

PlannedImage::~PlannedImage()
{
    Destroy();
    if (!m_pImageCtrl)
        --ms_nHolding;
}

DWORD PlannedImage::Create(LONG nSize, LONG nAllotted, int nSlots)
{
    if (!m_bDry)
        return CImageObj::Create(nSize, nAllotted, nSlots);
    const bool bFits = nSize <= nAllotted;
    if (m_eDryPlace == Place::Nowhere)
        m_eDryPlace = bFits ? Place::Memory : Place::File;
    else if (m_eDryPlace != Place::Memory)
        m_eDryPlace = bFits ? Place::FileMappedWhole : Place::File;
    return MM_SUCCESS;
}

DWORD PlannedImage::SetGeometry(int nWidth, int nHeight, int nFormat, int nMargin)
{
    T_ImageLrg_tag info = {};
    info.nWidth = nWidth;
    info.nHeight = nHeight;
    info.nMarginX = info.nMarginY = nMargin;
    info.nFormat = nFormat;
    info.nAlignType = MM_ALIGN_LINES;
    info.nRatio = 100;
    return SetImageInfo(&info);
}

bool PlannedImage::LiesInFile() const
{
    const Place ePlace = PlaceNow();
    return ePlace == Place::File || ePlace == Place::FileMappedWhole;
}

// The planner first gives back what an image in a file is charged with.
bool PlannedImage::WillBeBanded() const
{
    return LiesInFile() && m_ImgInfo.nBufSize > std::min(AskFreeMemory() + m_nAreaSize, ms_MaxOneMappingSize);
}

void PlannedImage::ReturnDryCharge()
{
    if (!m_bDry || !LiesInFile())
        return;
    m_nKeepStore = 1;
    Destroy();
    m_nKeepStore = 0;
}

ImagePlan PlannedImage::Plan(ImageRole eRole) const
{
    static constexpr const char* kPlaces[] = {"nowhere", "memory", "temporary file",
                                              "temporary file, mapped whole"};
    const bool bFile = LiesInFile();
    return {.szImage = m_szName,
            .eRole = eRole,
            .info = m_ImgInfo,
            .szPlace = kPlaces[static_cast<int>(PlaceNow())],
            .bFile = bFile,
            .nBytes = m_ImgInfo.nBufSize,
            .nBandLines = m_ImgInfo.nBandLines,
            .nBands = m_ImgInfo.nBandLines > 0 ? BandCount(m_ImgInfo.nHeight, m_ImgInfo.nBandLines) : 0,
            .nCharged = m_nAreaSize,
            .nTemporary = bFile ? m_ImgInfo.nBufSize : 0};
}

PlannedImage::Place PlannedImage::PlaceNow() const
{
    if (m_bDry)
        return m_eDryPlace;
    if (!m_pImageCtrl || m_pImageCtrl->GetAcsType() == ACS_NONE)
        return Place::Nowhere;
    if (m_pImageCtrl->GetAcsType() == ACS_MEMORY)
        return Place::Memory;
    return m_pImageCtrl->GetAllMapFlg() ? Place::FileMappedWhole : Place::File;
}
