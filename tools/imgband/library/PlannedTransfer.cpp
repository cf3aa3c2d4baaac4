// Import and export of a planned image, and what the planner gave to them.
//
// The library plans a transfer, moves its bands and drops the external image in one call. Only where it asks
// the object for its geometry or its band height can the host see how far it is. It asks while it plans, and
// for the last time just before the first band, when both images are charged: the last note is the plan.

#include "library/PlannedImage.h"

#include "pictures/Formats.h"

namespace {

/// An external image that has a description, but no file and no block.
class DryExternal final : public CImageObjIO
{
public:
    DWORD Create(LONG, LONG, int) override { return MM_SUCCESS; }

    /// Sets it up over a block that is only a bitmap's header. Then it takes the access type of the real
    /// image, which is all that the planner looks at before it asks for the store.
    DWORD SetUp(T_ImgInf inf, tag_E_IMGTYPE eRole, bool bReversed)
    {
        const tag_E_ACSTYPE eAccess = inf.eAcsType;
        inf.eAcsType = ACS_MEMORY;
        inf.hData = m_header;
        const DWORD nCode = InitForUnify(&inf, eRole, 0, 0, 0, MM_ALIGN_LINES, bReversed ? 1 : 0, 0);
        if (nCode == MM_SUCCESS && eAccess != ACS_MEMORY) {
            m_pImageCtrl->SetImageData(nullptr);
            m_pImageCtrl->SetAcsType(eAccess);
        }
        return nCode;
    }

private:
    unsigned char m_header[kBitmapHeaderBytes] = {'B', 'M'};
};

/// Plans both as the library's transfers do.
DWORD PlanStep(CImageObj& in, CImageObj& out)
{
    tag_MemAlloc request;
    request.nOutCnt = 1;
    CImageObj* pIn = &in;
    CImageObj* pOut = &out;
    return CImageObjIO::MemoryAlloc(&request, &pIn, &pOut);
}

} // namespace

DWORD PlannedImage::Import(T_ImgInf& inf, bool bReversed)
{
    BeginTransfer(ImageRole::Output);
    return EndTransfer(m_bDry ? PlanImport(inf, bReversed)
                              : ImportImg(this, &inf, bReversed ? 1 : 0, nullptr));
}

DWORD PlannedImage::Export(T_ImgInf& inf, bool bReversed, bool bOwnAlpha)
{
    BeginTransfer(ImageRole::Input);
    return EndTransfer(m_bDry ? PlanExport(inf, bReversed)
                              : ExportImg(this, &inf, bReversed ? 1 : 0, nullptr, bOwnAlpha ? 0 : 1));
}

DWORD PlannedImage::PlanImport(const T_ImgInf& inf, bool bReversed)
{
    DryExternal external;
    DWORD nCode = external.SetUp(inf, IMG_INPUT, bReversed);
    T_ImageLrg_tag info = external.m_ImgInfo;
    if (nCode == MM_SUCCESS)
        nCode = SetImageInfo(&info);
    if (nCode == MM_SUCCESS)
        nCode = PlanStep(external, *this);
    NoteTransfer();
    return nCode;
}

DWORD PlannedImage::PlanExport(const T_ImgInf& inf, bool bReversed)
{
    DryExternal external;
    DWORD nCode = external.SetUp(inf, IMG_OUTPUT, bReversed);
    external.m_ImgInfo = m_ImgInfo;
    ReturnDryCharge();
    if (nCode == MM_SUCCESS)
        nCode = PlanStep(*this, external);
    NoteTransfer();
    Destroy();
    return nCode;
}

void PlannedImage::BeginTransfer(ImageRole eRole)
{
    m_eRole = eRole;
    m_nFreeBefore = FreeWithoutExternal();
    m_bTransferring = true;
}

DWORD PlannedImage::EndTransfer(DWORD nCode)
{
    m_bTransferring = false;
    return nCode;
}

// After a second planning attempt the object withholds the reserve, which is no part of what is in use.
void PlannedImage::NoteTransfer()
{
    const LONG nWithheld = m_nReserveTaken ? ms_ReserveMemory : 0;
    m_transfer = {.object = Plan(m_eRole),
                  .nExternalCharge = m_nFreeBefore - FreeWithoutExternal(),
                  .nBudget = ms_ReserveMemory - AskFreeMemory() - nWithheld,
                  .moment = BudgetMoment::Now()};
}

LONG PlannedImage::FreeWithoutExternal() const
{
    return AskFreeMemory() + m_nAreaSize + (m_nReserveTaken ? ms_ReserveMemory : 0);
}

void PlannedImage::GetImageInfo(T_ImageLrg_tag* pInfo)
{
    CImageObj::GetImageInfo(pInfo);
    if (m_bTransferring)
        NoteTransfer();
}

int PlannedImage::GetBandHeight()
{
    if (m_bTransferring)
        NoteTransfer();
    return CImageObj::GetBandHeight();
}
