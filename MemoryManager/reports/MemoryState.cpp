// Where the images of a planned step are: in memory, mapped whole, or banded through files.

#include "MemoryManager/image/RecordOf.h"

namespace {

void CountImage(bool bInMemory, int& nMemory, int& nFile)
{
    if (bInMemory)
        ++nMemory;
    else
        ++nFile;
}

/// Counts inputs or outputs. When the first of them is a file that is mapped whole, all count as in memory.
/// @param nBand  out: the band height of the first image; untouched when that is in memory or mapped whole
void CountList(CImageObj** ppImages, int nCount, int& nMemory, int& nFile, int& nBand)
{
    if (!ppImages || nCount <= 0)
        return;
    bool bWholeMapped = false;
    if (!ppImages[0]->IsOnMemory()) {
        const T_ImageLrg_tag info = RecordOf(*ppImages[0]);
        bWholeMapped = info.nBandLines == info.nHeight;
        if (!bWholeMapped)
            nBand = info.nBandLines;
    }
    for (int i = 0; i < nCount; ++i)
        CountImage(ppImages[i]->IsOnMemory() || bWholeMapped, nMemory, nFile);
}

/// Counts temporaries. From the first one on that is a file mapped whole, all count as in memory.
void CountTemporaries(CImageObj** ppImages, int nCount, int& nMemory, int& nFile)
{
    if (!ppImages)
        return;
    bool bWholeMapped = false;
    for (int i = 0; i < nCount; ++i) {
        const bool bOnMemory = ppImages[i]->IsOnMemory() != 0;
        const T_ImageLrg_tag info = RecordOf(*ppImages[i]);
        bWholeMapped = bWholeMapped || (!bOnMemory && info.nBandLines == info.nHeight);
        CountImage(bOnMemory || bWholeMapped, nMemory, nFile);
    }
}

} // namespace

void GetImageObjMemState(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp,
                         int& nInMemory, int& nOutMemory, int& nTmpMemory, int& nInFile, int& nOutFile,
                         int& nTmpFile, int& nInBand, int& nOutBand)
{
    if (!pRequest)
        return;
    CountList(ppIn, pRequest->nInCnt, nInMemory, nInFile, nInBand);
    CountList(ppOut, pRequest->nOutCnt, nOutMemory, nOutFile, nOutBand);
    CountTemporaries(ppTmp, pRequest->nTmpCnt, nTmpMemory, nTmpFile);
}
