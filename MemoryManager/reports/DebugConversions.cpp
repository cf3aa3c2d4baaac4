// Moving an image between an object and a flat buffer, which lies in one committed block.
// The block goes with the flat record: an operation that is done with the record frees it. The budget's
// charge for the block, if there is one, stays the host's to give back.

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/base/FirstFailure.h"
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

/// The direction of a copy.
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

/// Whether the object's lines can be copied between the two buffers whole, without touching a byte outside
/// either. A unit object has no buffer to be checked: those of its bands are sound.
bool HasSameLines(const CImageObj& object, const T_Image_tag& flat)
{
    const T_ImageLrg_tag& info = object.m_ImgInfo;
    return (object.m_nUnitMode != 0 || IsSoundBuffer(info)) && info.nLineBytes == flat.nLineBytes &&
           info.nHeight <= flat.nHeight &&
           std::int64_t{info.nMarginX} * info.nPixelBytes <= BytesBetweenLines(flat);
}

/// Copies the lines of a mapped band, margins between them included, up to the last line's last pixel.
void CopyWholeLines(const T_ImageLrg_tag& band, const T_Image_tag& flat, Way eWay)
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
    T_ImageLrg_tag& info = object.m_ImgInfo; // serves as the band record, too
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
            CopyWholeLines(info, flat, eWay);
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

/// Whether the object holds an image, a charge or a band, which another image would displace unreleased.
bool HoldsAnything(const CImageObj& object)
{
    const CImageCtrl* pStore = object.m_pImageCtrl;
    return object.m_nUnitMode != 0 || object.m_nAreaSize != 0 ||
           (pStore && (pStore->IsCreated() != 0 || pStore->GetMemPtr() || HasFile(*pStore)));
}

/// Whether the frame that the object has been given fits the buffer's margins; else no band could be mapped.
bool HasRoomForFrame(const CImageObj& object, const T_Image_tag& flat)
{
    return object.m_ImgInfo.nFsize <= std::min(flat.nMarginX, flat.nMarginY);
}

/// Charges the budget for the object's whole buffer. False: the free budget has no room, nothing is charged.
bool ChargeWhole(CImageObj& object)
{
    const LibraryLock lock; // from the look at the budget to the charge
    if (object.m_ImgInfo.nBufSize > CImageObj::AskFreeMemory())
        return false;
    object.m_nAreaSize = object.m_ImgInfo.nBufSize;
    ChargeBudget(object.m_nAreaSize);
    return true;
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

/// Writes the flat buffer to a temporary file. Band mapping takes a file to start with the buffer's first
/// line: bytes ahead of that line are left out.
/// @param nFirstLine  offset of the first line in the buffer
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
    const bool bExternal = pStore && pStore->GetImgType() != IMG_WORK; // lines in the host's layout
    if (!HasBlock(pFlat) || bExternal)
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
    info.nBandLines = std::max(info.nBandLines, 1); // so that bands can be mapped before a step is planned
    return ChargeWhole(*pObject) ? MoveIntoMemory(*pObject, *pFlat)
                                 : MoveIntoFile(*pObject, *pFlat, static_cast<int>(*nFirstLine));
}
