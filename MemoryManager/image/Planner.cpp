// The memory planner: divides the free budget among the images of one step and makes their stores. Sizing
// happens under the lock and changes fields of objects only; stores are made after the lock is released.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/image/RecordOf.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/stores/StoreLifetime.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace {

constexpr int kSmallestBand = 16; // lines; a request may ask for more

/// A number without its fraction, limited to what an int can hold.
int Truncate(double fNumber)
{
    constexpr double fMost = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(fNumber, -fMost, fMost));
}

bool IsUncharged(const CImageObj& image)
{
    return image.m_nAreaSize <= 0;
}

/// Whether slot 0 holds a block or a view of the image. The band buffer of a host's file is neither.
bool HoldsImage(const CImageCtrl& store)
{
    return store.GetMemPtr() && (store.GetAcsType() != ACS_FILEIO || store.GetAllMapFlg());
}

/// One sizing pass. It takes the whole free budget, charges it image by image, and gives the rest back at its
/// end.
class SizingPass
{
public:
    SizingPass(const tag_MemAlloc& request, CImageObj** ppList, CImageObj** ppOut)
        : m_ppList(ppList), m_nCount(request.nInCnt), m_nMapCnt(request.nMapCnt),
          m_pOut(request.nOutCnt > 0 ? ppOut[0] : nullptr), m_nFree(CImageObj::AskUseMemory()),
          m_nFirstBanded(request.nInCnt)
    {
        m_nInRatio = m_nCount > 0 ? RecordOf(*m_ppList[0]).nRatio : 100;
        m_fOutRatio = m_pOut ? std::max(1.0, double(RecordOf(*m_pOut).nRatio)) : 100.0;
    }

    ~SizingPass() { CImageObj::UpdateUseMemory(HeldWithinLong(m_nFree)); }
    SizingPass(const SizingPass&) = delete;
    SizingPass& operator=(const SizingPass&) = delete;

    DWORD Run()
    {
        for (int i = 0; i < m_nCount; ++i)
            ChargeSmallImage(*m_ppList[i], m_nMapCnt);
        if (m_pOut && IsUncharged(*m_pOut))
            ChargeSmallImage(*m_pOut, 1);
        for (int i = 0; i < m_nCount; ++i)
            PlaceWhole(i);
        return m_nFirstBanded == m_nCount ? SizeOutputAlone() : SizeBands();
    }

private:
    void ChargeWhole(CImageObj& image, int nCount) { m_nFree -= image.SetBandInfo(0, nCount); }

    void ChargeBand(CImageObj& image, int nLines, int nCount)
    {
        m_nFree -= image.SetBandInfo(std::max(nLines, 1), nCount); // 0 would mean the whole image
    }

    /// Charges an image that is held whole whatever the budget has left: a small one, or one that the host
    /// has marked with SetOnMemory.
    void ChargeSmallImage(CImageObj& image, int nCount)
    {
        if (image.GetAreaSize() <= CImageObj::ms_nOnMemory)
            image.m_nOnMemory = 1;
        if (image.m_nOnMemory == 1)
            ChargeWhole(image, nCount);
    }

    /// Charges a listed image whole if it fits, or notes that it must be banded. Images with m_nOnMemory are
    /// charged already; one whose store holds a block or view is charged whole, whatever is left.
    void PlaceWhole(int nIndex)
    {
        CImageObj& image = *m_ppList[nIndex];
        if (!HoldsImage(*image.m_pImageCtrl) && IsUncharged(image)) {
            const int nSize = image.GetAreaSize();
            if (m_nFree < nSize || CImageObj::ms_MaxOneMappingSize < nSize) {
                m_nFirstBanded = std::min(m_nFirstBanded, nIndex);
                return;
            }
            ChargeWhole(image, m_nMapCnt);
        } else if (image.m_nOnMemory == 0) {
            ChargeWhole(image, m_nMapCnt);
        }
        if (m_nWholeHeight == 0)
            m_nWholeHeight = RecordOf(image).nAllocHeight;
    }

    /// All listed images are whole: the output's band gets what is left of the budget, but no more than its
    /// cap.
    DWORD SizeOutputAlone()
    {
        if (!m_pOut || !IsUncharged(*m_pOut))
            return MM_SUCCESS;
        if (m_nFree >= m_pOut->GetAreaSize()) {
            ChargeWhole(*m_pOut, 1);
            return MM_SUCCESS;
        }
        const T_ImageLrg_tag info = RecordOf(*m_pOut);
        const std::int64_t nCap = std::min<std::int64_t>(CImageObj::ms_nUseMaxBandMemory, m_nFree);
        const std::int64_t nCapLines = info.nLineBytes == 0 ? 0 : nCap / info.nLineBytes;
        int nLines = ClampToBuffer(static_cast<double>(nCapLines), info);
        if (m_nWholeHeight != 0) {
            if (m_nInRatio == 0)
                return MM_RATIO_ZERO;
            const int nScaled = Truncate(m_fOutRatio / m_nInRatio * m_nWholeHeight);
            nLines = std::min(nLines, std::min(nScaled, info.nAllocHeight));
        }
        ChargeBand(*m_pOut, nLines, 1);
        return MM_SUCCESS;
    }

    /// Some listed images are banded: they and the output share what is left of the budget by their weights.
    DWORD SizeBands()
    {
        std::int64_t nWeights = 0;
        for (int i = 0; i < m_nCount; ++i) {
            if (!IsUncharged(*m_ppList[i]))
                continue;
            const T_ImageLrg_tag info = RecordOf(*m_ppList[i]);
            if (info.nRatio == 0)
                return MM_RATIO_ZERO;
            nWeights += std::int64_t{Truncate(info.nRatio / m_fOutRatio * info.nLineBytes)} * m_nMapCnt;
        }

        int nOutLines = 0;
        std::int64_t nOutBytes = 0;
        const bool bBandOutput = m_pOut && IsUncharged(*m_pOut);
        if (bBandOutput) {
            const T_ImageLrg_tag info = RecordOf(*m_pOut);
            const int nShared = ClampToBuffer(OutputShare(info.nLineBytes, nWeights), info);
            nOutLines = std::max(std::min(nShared, MappableLines(info)), 1);
            nOutBytes = std::int64_t{info.nLineBytes} * nOutLines;
        }
        for (int i = m_nFirstBanded; i < m_nCount; ++i) {
            if (IsUncharged(*m_ppList[i]))
                ChargeListedBand(*m_ppList[i], nWeights, nOutBytes);
        }
        if (bBandOutput)
            ChargeBand(*m_pOut, nOutLines, 1);
        return MM_SUCCESS;
    }

    void ChargeListedBand(CImageObj& image, std::int64_t nWeights, std::int64_t nOutBytes)
    {
        const T_ImageLrg_tag info = RecordOf(image);
        const double fWeight = double(nWeights) / (info.nRatio / m_fOutRatio);
        const double fShare = fWeight == 0 ? 0 : double(m_nFree - nOutBytes) / fWeight;
        std::int64_t nLines = ClampToBuffer(fShare, info);
        nLines = std::min<std::int64_t>(nLines + 2 * std::int64_t{info.nFsize}, info.nAllocHeight);
        ChargeBand(image, std::min(static_cast<int>(nLines), MappableLines(info)), m_nMapCnt);
    }

    /// Lines of the output's band by its part of all weights. The order of operations decides the rounding:
    /// it stays.
    double OutputShare(int nLineBytes, std::int64_t nWeights) const
    {
        if (nLineBytes == 0)
            return 0;
        const double fLine = nLineBytes;
        return fLine / (fLine + double(nWeights)) * double(m_nFree) / fLine;
    }

    /// At least the step's smallest band, at most the whole buffer.
    static int ClampToBuffer(double fLines, const T_ImageLrg_tag& info)
    {
        return std::min(std::max(Truncate(fLines), CImageObj::ms_MinBand), info.nAllocHeight);
    }

    /// Lines of a buffer that may be mapped as one piece.
    static int MappableLines(const T_ImageLrg_tag& info)
    {
        return info.nLineBytes == 0 ? info.nAllocHeight
                                    : int(CImageObj::ms_MaxOneMappingSize / info.nLineBytes);
    }

    CImageObj** m_ppList;
    int m_nCount;
    int m_nMapCnt;
    CImageObj* m_pOut;
    std::int64_t m_nFree;
    int m_nFirstBanded;     // index of the first listed image that does not fit whole; m_nCount when all do
    int m_nWholeHeight = 0; // buffer lines of the first whole image
    int m_nInRatio;
    double m_fOutRatio;
};

int SmallestBand(const tag_MemAlloc& request)
{
    return std::max(request.nMinBand, kSmallestBand);
}

/// Whether the object has a sound geometry and a store that is not too short for it, and the charge of its
/// smallest bands fits 32 bits. The charge of larger bands does, since each takes at most
/// ms_MaxOneMappingSize.
bool IsPlannable(CImageObj* pImage, int nSmallestBand, int nMapCnt)
{
    if (!pImage || !pImage->m_pImageCtrl || pImage->GetAreaSize() <= 0 || !IsSoundBuffer(pImage->m_ImgInfo) ||
        pImage->m_ImgInfo.nRatio < 0 || IsTooShort(*pImage->m_pImageCtrl, pImage->m_ImgInfo))
        return false;
    const T_ImageLrg_tag info = RecordOf(*pImage);
    const int nLines = std::min(nSmallestBand, info.nAllocHeight);
    return BandCharge(info.nLineBytes, nLines, nMapCnt) < std::numeric_limits<int>::max();
}

bool IsPlannable(const tag_MemAlloc& request, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp)
{
    if (request.nMapCnt < 1 || request.nMapCnt > MM_SLOT_COUNT)
        return false;
    const auto isPlannable = [&](CImageObj** ppImages, int nCount, int nMapCnt) {
        if (nCount < 0 || (nCount > 0 && !ppImages))
            return false;
        return std::all_of(ppImages, ppImages + nCount, [&](CImageObj* pImage) {
            return IsPlannable(pImage, SmallestBand(request), nMapCnt);
        });
    };
    return isPlannable(ppIn, request.nInCnt, request.nMapCnt) && isPlannable(ppOut, request.nOutCnt, 1) &&
           isPlannable(ppTmp, request.nTmpCnt, request.nMapCnt);
}

/// Whether a step has made the image's store. The address of a host's block alone does not tell: it is set
/// earlier.
bool IsStoreMade(const CImageCtrl& store)
{
    return (store.GetMemPtr() && store.GetAllMapFlg()) || HasFile(store);
}

/// Gives back what a failed attempt charged for inputs whose store it did not make: they are planned again.
void ReturnUnmadeInputs(CImageObj** ppIn, int nCount)
{
    for (int i = 0; i < nCount; ++i) {
        if (!IsStoreMade(*ppIn[i]->m_pImageCtrl)) {
            ReturnToBudget(ppIn[i]->m_nAreaSize);
            ppIn[i]->m_nAreaSize = 0;
        }
    }
}

/// Withholds the reserve from the budget until the first input is destroyed.
void WithholdReserve(CImageObj& firstInput)
{
    if (firstInput.m_nReserveTaken == 1)
        return;
    firstInput.m_nReserveTaken = 1;
    const LibraryLock lock; // another thread may size the reserve anew
    ChargeBudget(CImageObj::ms_ReserveMemory);
}

/// Gives back the charge of an output in the host's own block, which costs the budget nothing and is
/// addressable whole.
void ReleaseChargeOfHostBlock(CImageObj& output)
{
    const LibraryLock lock; // SetBandInfo reads the smallest band
    const CImageCtrl* pStore = output.m_pImageCtrl;
    if (!pStore || pStore->GetImgType() == IMG_WORK || pStore->GetAcsType() != ACS_MEMORY)
        return;
    ReturnToBudget(output.m_nAreaSize);
    output.SetBandInfo(0, 1); // an I/O object keeps the band height in another record too
    output.m_nAreaSize = 0;
    output.m_ImgInfo.nBandLines = output.m_ImgInfo.nHeight;
}

/// Gives an image that still holds its charge, but got a geometry without a band height since, a height: its
/// own when the charge covers it. A smaller charge goes back, and the image is planned afresh.
void RenewBandHeight(CImageObj& image)
{
    if (IsUncharged(image) || image.GetBandHeight() != 0)
        return;
    const LibraryLock lock; // SetBandInfo reads the smallest band
    const LONG nCharge = image.m_nAreaSize;
    if (nCharge >= image.GetAreaSize()) {
        image.SetBandInfo(0, 1);
        image.m_nAreaSize = nCharge;
    } else {
        ReturnToBudget(nCharge);
        image.m_nAreaSize = 0;
    }
}

DWORD CreateStore(CImageObj& image, int nSlots)
{
    return image.Create(image.GetAreaSize(), image.m_nAreaSize, nSlots);
}

/// Makes the store of the output, then those of the listed images: first the request's inputs, which are
/// planned, then those that only hold a charge. The charge of a store that could not be made is dropped and
/// does not go back to the budget, so that the second attempt has less to divide. So are the charges of all
/// planned images when the output's store could not be made.
DWORD CreateStores(const tag_MemAlloc& request, CImageObj** ppList, int nCount, CImageObj** ppOut)
{
    if (request.nOutCnt != 0) {
        if (const DWORD nResult = CreateStore(*ppOut[0], 1); nResult != MM_SUCCESS) {
            ppOut[0]->m_nAreaSize = 0;
            std::for_each(ppList, ppList + request.nInCnt,
                          [](CImageObj* pImage) { pImage->m_nAreaSize = 0; });
            return nResult;
        }
    }
    for (int i = 0; i < nCount; ++i) {
        if (const DWORD nResult = CreateStore(*ppList[i], request.nMapCnt); nResult != MM_SUCCESS) {
            ppList[i]->m_nAreaSize = 0;
            return nResult;
        }
    }
    return MM_SUCCESS;
}

} // namespace

DWORD CImageObj::MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp)
{
    if (!pRequest || !IsPlannable(*pRequest, ppIn, ppOut, ppTmp))
        return MM_BAD_ARGUMENT;
    const DWORD nResult = _MemoryAlloc(pRequest, ppIn, ppOut, ppTmp);
    if (nResult == MM_SUCCESS || pRequest->nInCnt == 0)
        return nResult;
    MemoryClear(pRequest, ppOut, ppTmp);
    ReturnUnmadeInputs(ppIn, pRequest->nInCnt);
    WithholdReserve(*ppIn[0]);
    return _MemoryAlloc(pRequest, ppIn, ppOut, ppTmp);
}

DWORD CImageObj::_MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp)
{
    MemoryReturn(ppIn, pRequest->nInCnt);
    const auto renew = [](CImageObj* pImage) { RenewBandHeight(*pImage); };
    std::for_each(ppIn, ppIn + pRequest->nInCnt, renew);
    std::for_each(ppOut, ppOut + pRequest->nOutCnt, renew);
    std::for_each(ppTmp, ppTmp + pRequest->nTmpCnt, renew);

    const std::unique_ptr<CImageObj*[]> list(
        new (std::nothrow) CImageObj*[std::size_t(pRequest->nInCnt) + std::size_t(pRequest->nTmpCnt)]);
    if (!list)
        return MM_NO_MEMORY;
    const auto append = [&](CImageObj** ppEnd, bool (*isWanted)(const CImageObj*)) {
        ppEnd = std::copy_if(ppIn, ppIn + pRequest->nInCnt, ppEnd, isWanted);
        return std::copy_if(ppTmp, ppTmp + pRequest->nTmpCnt, ppEnd, isWanted);
    };
    CImageObj** ppToPlan = list.get();
    CImageObj** ppChargedOnly =
        append(ppToPlan, [](const CImageObj* pImage) { return pImage->m_nAreaSize == 0; });
    CImageObj** ppEnd = append(ppChargedOnly, [](const CImageObj* pImage) { // by a step that failed
        return pImage->m_nAreaSize != 0 && !IsStoreMade(*pImage->m_pImageCtrl);
    });
    tag_MemAlloc listed = *pRequest;
    listed.nInCnt = static_cast<int>(ppChargedOnly - ppToPlan);
    if (listed.nOutCnt > 1)
        return MM_TOO_MANY_OUTPUTS;

    DWORD nResult;
    {
        const LibraryLock lock;
        ms_MinBand = SmallestBand(listed);
        nResult = MemoryCalculation(&listed, ppToPlan, ppOut);
    }
    if (nResult == MM_SUCCESS)
        nResult = CreateStores(listed, ppToPlan, static_cast<int>(ppEnd - ppToPlan), ppOut);
    if (nResult == MM_SUCCESS && ppOut && ppOut[0])
        ReleaseChargeOfHostBlock(*ppOut[0]);
    return nResult;
}

DWORD CImageObj::MemoryCalculation(tag_MemAlloc* pRequest, CImageObj** ppList, CImageObj** ppOut)
{
    return SizingPass(*pRequest, ppList, ppOut).Run();
}

DWORD CImageObj::MemoryReturn(CImageObj** ppObjects, int nCount)
{
    std::int64_t nSum = 0;
    for (int i = 0; i < nCount; ++i) {
        CImageObj& image = *ppObjects[i];
        if (!image.m_pImageCtrl || !HasFile(*image.m_pImageCtrl))
            continue;
        nSum += image.m_nAreaSize;
        image.m_nAreaSize = 0;
    }
    if (nSum >= 1)
        ReturnToBudget(HeldWithinLong(nSum));
    return MM_SUCCESS;
}

DWORD CImageObj::MemoryClear(tag_MemAlloc* pRequest, CImageObj** ppOut, CImageObj** ppTmp)
{
    const auto clear = [](CImageObj* pImage) {
        pImage->m_nKeepStore = 1;
        pImage->Destroy();
        pImage->m_ImgInfo.nBandLines = 0;
        pImage->m_nKeepStore = 0;
    };
    std::for_each(ppOut, ppOut + pRequest->nOutCnt, clear);
    std::for_each(ppTmp, ppTmp + pRequest->nTmpCnt, clear);
    return MM_SUCCESS;
}

DWORD CImageObj::MemoryRelease(tag_MemAlloc* pRequest, CImageObj** ppTmp)
{
    if (!ppTmp)
        return MM_SUCCESS;
    for (int i = 0; i < pRequest->nTmpCnt; ++i) {
        ppTmp[i]->m_ImgInfo.nRatio = 100;
        ppTmp[i]->m_ImgInfo.nBandLines = 0;
        ppTmp[i]->Destroy();
    }
    return MM_SUCCESS;
}
