// Putting an external image in front of the planner that has a description, but no file and no block.

#include "library/DryTransfer.h"

#include "pictures/Formats.h"

namespace {

class DryExternal final : public CImageObjIO
{
public:
    DWORD Create(LONG, LONG, int) override { return MM_SUCCESS; }

    /// Sets it up over a block that is nothing but a bitmap's header, and then lets it stand for the real
    /// thing: until its store is made, the planner looks at its access type only.
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

DWORD PlanStep(CImageObj& in, CImageObj& out, PlannedImage& noting)
{
    tag_MemAlloc request;
    request.nOutCnt = 1;
    CImageObj* pIn = &in;
    CImageObj* pOut = &out;
    const DWORD nCode = CImageObjIO::MemoryAlloc(&request, &pIn, &pOut);
    noting.GetBandHeight(); // it notes
    return nCode;
}

} // namespace

DWORD PlanImport(PlannedImage& object, const T_ImgInf& inf, bool bReversed)
{
    DryExternal external;
    DWORD nCode = external.SetUp(inf, IMG_INPUT, bReversed);
    T_ImageLrg_tag info = external.m_ImgInfo;
    if (nCode == MM_SUCCESS)
        nCode = object.SetImageInfo(&info);
    return nCode == MM_SUCCESS ? PlanStep(external, object, object) : nCode;
}

DWORD PlanExport(PlannedImage& object, const T_ImgInf& inf)
{
    DryExternal external;
    DWORD nCode = external.SetUp(inf, IMG_OUTPUT, false);
    external.m_ImgInfo = object.m_ImgInfo;
    object.ReturnDryCharge();
    if (nCode == MM_SUCCESS)
        nCode = PlanStep(object, external, object);
    object.Destroy();
    return nCode;
}
