// Noting the plan of a transfer.

#include "library/PlannedImage.h"

#include "pictures/Formats.h"

PlannedImage::~PlannedImage()
{
    Destroy();
    if (!m_pImageCtrl)
        --ms_nHolding;
}

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

void PlannedImage::ReturnDryCharge()
{
    if (m_eDryPlace != Place::File && m_eDryPlace != Place::FileMappedWhole)
        return;
    m_nKeepStore = 1;
    Destroy();
    m_nKeepStore = 0;
}

ImagePlan PlannedImage::Plan(const std::string& szImage, ImageRole eRole) const
{
    static constexpr const char* kPlaces[] = {"nowhere", "memory", "temporary file",
                                              "temporary file, mapped whole"};
    const Place ePlace = PlaceNow();
    const bool bFile = ePlace == Place::File || ePlace == Place::FileMappedWhole;
    return {.szImage = szImage,
            .eRole = eRole,
            .info = m_ImgInfo,
            .szPlace = kPlaces[static_cast<int>(ePlace)],
            .bFile = bFile,
            .nBytes = m_ImgInfo.nBufSize,
            .nBandLines = m_ImgInfo.nBandLines,
            .nBands = m_ImgInfo.nBandLines > 0 ? BandCount(m_ImgInfo.nHeight, m_ImgInfo.nBandLines) : 0,
            .nCharged = m_nAreaSize,
            .nTemporary = bFile ? m_ImgInfo.nBufSize : 0};
}

ImagePlan PlannedImage::NotedPlan(ImageRole eRole) const
{
    ImagePlan plan = m_noted;
    plan.eRole = eRole;
    return plan;
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

void PlannedImage::Note()
{
    m_noted = Plan(m_pszName, ImageRole::Input);
    m_moment = BudgetMoment::Now();
    m_nExternalCharge = m_nFreeBefore - FreeWithoutExternal();
    m_nBudget = ms_ReserveMemory - AskFreeMemory() - (m_nReserveTaken ? ms_ReserveMemory : 0);
}

// The budget that would be free without this object's charge, and without the reserve that a second planning
// attempt withholds while it lives.
LONG PlannedImage::FreeWithoutExternal() const
{
    return AskFreeMemory() + m_nAreaSize + (m_nReserveTaken ? ms_ReserveMemory : 0);
}
