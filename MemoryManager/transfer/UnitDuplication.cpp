// Sending the image of unit objects from source to destination, band by band from the top.

#include "MemoryManager/ImgObjUty.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/base/FirstFailure.h"
#include "MemoryManager/image/RecordOf.h"
#include "MemoryManager/image/UnitObject.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

/// Maps the band that starts at nLine. A band that could not be read is dropped, as it must not reach a
/// destination.
DWORD MapOrDrop(CImageObj& object, int nLine, T_ImageLrg_tag& band)
{
    const DWORD nResult = object.MapBand(nLine, &band, MM_BAND_DOWNWARD, kSlot);
    if (nResult != MM_SUCCESS)
        DropUnitBand(object);
    return nResult;
}

/// Copies the lines and pixels that both bands have.
void CopyBand(const T_ImageLrg_tag& to, const T_ImageLrg_tag& from)
{
    const auto bytesOf = [](const T_ImageLrg_tag& band) {
        return static_cast<std::size_t>(band.nWidth) * static_cast<std::size_t>(band.nPixelBytes);
    };
    const std::size_t nBytes = std::min(bytesOf(to), bytesOf(from));
    for (std::ptrdiff_t k = 0; k < std::min(to.nBandLines, from.nBandLines); ++k)
        std::memcpy(to.pImage + k * to.nLineBytes, from.pImage + k * from.nLineBytes, nBytes);
}

DWORD DuplicateBand(CImageObj& outObject, CImageObj& inObject, int nLine, T_ImageLrg_tag& inBand)
{
    DWORD nResult = MapOrDrop(inObject, nLine, inBand);
    if (nResult != MM_SUCCESS)
        return nResult;
    T_ImageLrg_tag outBand{};
    nResult = MapOrDrop(outObject, nLine, outBand);
    if (nResult != MM_SUCCESS) {
        inObject.UnmapBand(kSlot);
        return nResult;
    }
    if (inBand.nBufSize == outBand.nBufSize)
        CopyBand(outBand, inBand);
    else
        nResult = MM_BAD_ARGUMENT;
    nResult = FirstFailure(nResult, inObject.UnmapBand(kSlot));
    return FirstFailure(nResult, outObject.UnmapBand(kSlot));
}

/// Gives a unit object the band height of its set-up again, after bands of other heights. Asking an object
/// for its geometry has that effect.
void RestoreBandHeight(CImageObj& object)
{
    RecordOf(object);
}

/// The line that follows a band; at least one line further, so that every loop comes to its end.
int LineBehind(const T_ImageLrg_tag& band, int nLine)
{
    return std::max(band.nBandBottom, nLine) + 1;
}

} // namespace

DWORD DuplicateImageForUnit(CImageObj* pObj)
{
    if (const DWORD nResult = pObj->UnmapBand(kSlot); nResult != MM_SUCCESS)
        return nResult;
    RestoreBandHeight(*pObj);
    T_ImageLrg_tag band{};
    const int nHeight = RecordOf(*pObj).nHeight;
    for (int nLine = 0; nLine < nHeight; nLine = LineBehind(band, nLine)) {
        DWORD nResult = MapOrDrop(*pObj, nLine, band);
        if (nResult == MM_SUCCESS)
            nResult = pObj->UnmapBand(kSlot);
        if (nResult != MM_SUCCESS)
            return nResult;
    }
    return MM_SUCCESS;
}

DWORD DuplicateImageForUnit(CImageObj* pOutObj, CImageObj* pInObj)
{
    for (CImageObj* pObject : {pInObj, pOutObj})
        if (const DWORD nResult = pObject->UnmapBand(kSlot); nResult != MM_SUCCESS)
            return nResult;
    RestoreBandHeight(*pInObj);
    RestoreBandHeight(*pOutObj);
    T_ImageLrg_tag band{};
    const int nHeight = RecordOf(*pInObj).nHeight;
    for (int nLine = 0; nLine < nHeight; nLine = LineBehind(band, nLine))
        if (const DWORD nResult = DuplicateBand(*pOutObj, *pInObj, nLine, band); nResult != MM_SUCCESS)
            return nResult;
    return MM_SUCCESS;
}
