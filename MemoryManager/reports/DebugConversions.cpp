// Moving an image between an object and a flat buffer, which lies in one committed block.
// Whoever hands over the flat record hands over its block too; the charge of the block, if any, stays the
// host's.

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/FlatImage.h"
#include "MemoryManager/stores/StoreLifetime.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

// A flat record is the head of the full one.
static_assert(sizeof(T_Image_tag) == offsetof(T_ImageLrg_tag, nBandLines));

namespace {

constexpr int kSlot = 0;

enum class Way
{
    IntoFlat,
    OutOfFlat,
};

/// Bytes between a line's last pixel and the next line's first.
std::int64_t BytesBetweenLines(const T_Image_tag& flat)
{
    return (std::int64_t{flat.nAllocWidth} - flat.nWidth) * flat.nPixelBytes;
}

/// Whether whole lines can be copied between the two without leaving either buffer. Bands of a unit object
/// have buffers of their own.
bool HasSameLines(const CImageObj& object, const T_Image_tag& flat)
{
    const T_ImageLrg_tag& info = object.m_ImgInfo;
    return (object.m_nUnitMode != 0 || IsSoundBuffer(info)) && info.nLineBytes == flat.nLineBytes &&
           info.nHeight <= flat.nHeight &&
           std::int64_t{info.nMarginX} * info.nPixelBytes <= BytesBetweenLines(flat);
}

/// The lines of the band that the object holds, up to the last one's last pixel.
void CopyBand(const T_ImageLrg_tag& band, const T_Image_tag& flat, Way eWay)
{
    const std::int64_t nLines = std::int64_t{band.nBandBottom} - band.nBandTop + 1;
    const auto nBytes = static_cast<std::size_t>(nLines * flat.nLineBytes - BytesBetweenLines(flat));
    unsigned char* pFlat = flat.pImage + std::int64_t{flat.nLineBytes} * band.nBandTop;
    if (eWay == Way::IntoFlat)
        std::memcpy(pFlat, band.pImage, nBytes);
    else
        std::memcpy(band.pImage, pFlat, nBytes);
}

DWORD CopyBands(CImageObj& object, const T_Image_tag& flat, Way eWay)
{
    T_ImageLrg_tag& info = object.m_ImgInfo; // is each band's record too
    info.nBandLines = std::max(info.nBandLines, 1);
    for (int nLine = 0; nLine < info.nHeight; nLine = info.nBandBottom + 1) {
        DWORD nResult = object.MapBand(nLine, &info, MM_BAND_DOWNWARD, kSlot);
        if (nResult != MM_SUCCESS) {
            DropUnitBand(object); // half read, it must not reach a destination
            return nResult;
        }
        // A unit object's geometry is that of its external image once a band is mapped.
        const bool bCopied = HasSameLines(object, flat) && info.nBandBottom < flat.nHeight;
        if (bCopied)
            CopyBand(info, flat, eWay);
        nResult = object.UnmapBand(kSlot);
        if (nResult != MM_SUCCESS || !bCopied)
            return nResult != MM_SUCCESS ? nResult : DWORD{MM_BAD_ARGUMENT};
    }
    return MM_SUCCESS;
}

void FreeBlock(T_Image_tag& flat)
{
    FreeMemoryBlock(flat.pBase);
    flat.pBase = flat.pImage = nullptr;
}

/// An image, a charge or a band, which another image would displace without releasing it.
bool HoldsAnything(const CImageObj& object)
{
    const CImageCtrl* pStore = object.m_pImageCtrl;
    return object.m_nUnitMode != 0 || object.m_nAreaSize != 0 ||
           (pStore && (pStore->IsCreated() != 0 || pStore->GetMemPtr() || HasFile(*pStore)));
}

/// Whether the frame that the object was told of fits the buffer's margins; else no band could be mapped.
bool HasRoomForFrame(const CImageObj& object, const T_Image_tag& flat)
{
    return object.m_ImgInfo.nFsize <= std::min(flat.nMarginX, flat.nMarginY);
}

/// Charges the object with its whole buffer, if the free budget has room for it.
bool ChargeWhole(CImageObj& object)
{
    const LibraryLock lock;
    const LONG nFree = CImageObj::AskUseMemory();
    const bool bFits = object.m_ImgInfo.nBufSize <= nFree;
    object.m_nAreaSize = bFits ? object.m_ImgInfo.nBufSize : 0;
    CImageObj::UpdateUseMemory(nFree - object.m_nAreaSize);
    return bFits;
}

DWORD MoveIntoMemory(CImageObj& object, T_Image_tag& flat)
{
    DWORD nResult = object.Create(flat.nBufSize, object.m_nAreaSize, 1);
    if (nResult != MM_SUCCESS) {
        ReturnToBudget(std::exchange(object.m_nAreaSize, 0));
        return nResult;
    }
    nResult = CopyBands(object, flat, Way::OutOfFlat);
    FreeBlock(flat);
    return nResult;
}

/// Band mapping counts from the file's first byte, so that is where the buffer's first line goes.
DWORD MoveIntoFile(CImageObj& object, T_Image_tag& flat, int nFirstLine)
{
    T_Image_tag lines = flat;
    lines.pBase += nFirstLine;
    lines.nBufSize -= nFirstLine;
    object.m_pImageCtrl->SetHdrSize(0);
    const DWORD nResult = object.m_pImageCtrl->DebugConvertWrite(&lines, lines.nBufSize, 0);
    if (nResult == MM_SUCCESS)
        FreeBlock(flat);
    return nResult;
}

} // namespace

DWORD CImageObj::DebugConvertT_Image(CImageObj* pObject, T_Image_tag* pFlat)
{
    const CImageCtrl* pStore = pObject->m_pImageCtrl;
    if (!HasBlock(pFlat) ||
        (pStore && pStore->GetImgType() != IMG_WORK)) // whose bytes are the host's, as laid out
        return MM_BAD_ARGUMENT;
    const bool bHasLines = pObject->m_ImgInfo.nHeight >= 1;
    if (bHasLines && !HasSameLines(*pObject, *pFlat))
        return MM_BAD_ARGUMENT;

    pFlat->pImage = pFlat->pBase + PixelPosition(*pFlat, 0, 0);
    const DWORD nResult = CopyBands(*pObject, *pFlat, Way::IntoFlat);
    if (nResult != MM_SUCCESS) {
        FreeBlock(*pFlat);
        return nResult;
    }
    pObject->Destroy();
    return MM_SUCCESS;
}

DWORD CImageObj::DebugConvertCImageObj(T_Image_tag* pFlat, CImageObj* pObject)
{
    const auto nFirstLine = HasBlock(pFlat) ? FirstLineOffset(*pFlat) : std::nullopt;
    if (!nFirstLine || HoldsAnything(*pObject) || !HasRoomForFrame(*pObject, *pFlat))
        return MM_BAD_ARGUMENT;
    if (!pObject->m_pImageCtrl)
        pObject->m_pImageCtrl = NewStore<CImageCtrl>();
    if (!pObject->m_pImageCtrl)
        return MM_NO_MEMORY;

    T_ImageLrg_tag& info = pObject->m_ImgInfo;
    std::memcpy(&info, pFlat, sizeof(*pFlat));
    info.pBase = info.pImage = nullptr;             // the block does not become the object's
    info.nBandLines = std::max(info.nBandLines, 1); // mappable before it is planned
    return ChargeWhole(*pObject) ? MoveIntoMemory(*pObject, *pFlat)
                                 : MoveIntoFile(*pObject, *pFlat, static_cast<int>(*nFirstLine));
}
