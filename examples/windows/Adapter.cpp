// C functions in front of the library. Compiled and linked with the library's own compiler, they can be
// called from a host of any other. Add what your host needs; only records, addresses and numbers pass
// through.
#include "Adapter.h"

#include <MemoryManager/MemoryManager.h>

#include <memory>
#include <new>

void SetBudget(LONG nBytes)
{
    CImageObj::InitBaseMemory(nBytes, nBytes);
}

DWORD OpenImage(int nWidth, int nHeight, CImageObj** ppImage)
{
    *ppImage = nullptr;
    std::unique_ptr<CImageObj> image(new (std::nothrow) CImageObj); // no exception may reach the host
    if (!image)
        return MM_NO_MEMORY;
    T_ImageLrg_tag geometry{};
    geometry.nWidth = nWidth;
    geometry.nHeight = nHeight;
    geometry.nFormat = MM_FORMAT_BGRA32;
    geometry.nRatio = 100;
    DWORD nResult = image->SetImageInfo(&geometry);
    if (nResult == MM_SUCCESS) {
        tag_MemAlloc step;
        step.nInCnt = 0;
        step.nOutCnt = 1;
        CImageObj* pOut = image.get();
        nResult = CImageObj::MemoryAlloc(&step, nullptr, &pOut, nullptr);
    }
    if (nResult == MM_SUCCESS)
        *ppImage = image.release();
    return nResult;
}

DWORD MapBand(CImageObj* pImage, int nLine, T_ImageLrg_tag* pBand)
{
    return pImage->MapBand(nLine, pBand, MM_BAND_DOWNWARD, 0);
}

DWORD UnmapBand(CImageObj* pImage)
{
    return pImage->UnmapBand(0);
}

void CloseImage(CImageObj* pImage)
{
    std::unique_ptr<CImageObj>{pImage}.reset();
}
