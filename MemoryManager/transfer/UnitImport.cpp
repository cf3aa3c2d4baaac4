// Setting unit objects up over external images, and sending images through them band by band.
// Nothing is written before both sides are known to lie within 32-bit positions.

#include "MemoryManager/ImgObjUty.h"

#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BitmapHeader.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/layout/UnitImages.h"
#include "MemoryManager/transfer/UnitBandHeights.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr char kUnit[] = "MemoryManager/ImgObjUty";

// Statements that report to the error log.
constexpr int kLineNoHeader = 537;
constexpr int kLineNoEnlargedHeader = 852;

constexpr int kSlot = 0;

/// Undoes an earlier set-up. Without the next one's geometry the object has no band.
void StartAnew(CImageObj& object, int nRole)
{
    DropUnitBand(object);
    object.m_ImgInfo.pBase = object.m_ImgInfo.pImage = nullptr; // those of an earlier geometry are no band
    CloseUnitMappings(object);
    object.m_nUnitBandHeight = object.m_ImgInfo.nBandLines = 0;
    object.m_nUnitType = nRole;
}

/// One object changes neither size nor sample width.
bool SuitOneObject(const T_ImgInf& in, const T_ImgInf& out)
{
    return in.nWidth == out.nWidth && in.nHeight == out.nHeight &&
           SampleBytesOf(in.nSrcFormat) == SampleBytesOf(out.nDstFormat);
}

/// A fourth sample that the source lacks is all ones.
int AlphaFor(const T_ImgInf& in, const T_ImgInf& out, int nAlpha)
{
    return SamplesOf(in.nSrcFormat) == 3 && SamplesOf(out.nDstFormat) == 4 ? 1 : nAlpha;
}

/// Gives the object the image's size and four samples a pixel.
void TakeGeometry(CImageObj& object, T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY,
                  int nAlign, int nBottomUp)
{
    CImageObjIO io;
    io.InitForUnit(pInf, eRole, nMarginX, nMarginY, 0, nAlign, nBottomUp, 0);
    T_ImageLrg_tag info = io.m_ImgInfo;
    object.m_nUnitMode = 1;
    if (object.SetImageInfo(&info) == MM_SUCCESS)
        return;
    info.nBandLines = object.m_ImgInfo.nBandLines; // band mapping refuses this geometry, not an earlier one
    object.m_ImgInfo = info;
}

/// Finds where the source's pixels begin. False: they cannot be reached; an image that cannot be reached from
/// position 0 is not searched.
bool FindPixels(CImageObj& reader)
{
    T_ImgInf atStart = reader.m_InImgInf;
    atStart.nOffset = 0;
    if (!IsSourceReachable(atStart))
        return false;
    reader.CalcOffsetLength();
    return IsSourceReachable(reader.m_InImgInf);
}

DWORD MapSource(CImageObj& reader)
{
    const T_ImgInf& in = reader.m_InImgInf;
    if (in.eAcsType != ACS_MMF)
        return MM_SUCCESS;
    reader.m_hInMap = CreateFileMappingA(in.hData, nullptr, PAGE_READONLY, 0, 0, nullptr);
    return reader.m_hInMap ? MM_SUCCESS : MM_NO_MEMORY;
}

DWORD MapDestination(CImageObj& writer)
{
    const T_ImgInf& out = writer.m_OutImgInf;
    if (out.eAcsType != ACS_MMF)
        return MM_SUCCESS;
    const std::int64_t nBytes =
        static_cast<DWORD>(out.nOffset) + std::int64_t{out.nLineBytes} * std::int64_t{out.nHeight};
    if (nBytes < 0 || nBytes > std::numeric_limits<DWORD>::max())
        return MM_BAD_ARGUMENT;
    // A file that is there already may be longer; views reach to the end of their granule in it.
    const DWORD nLength = FileLength(out.hData);
    const DWORD nMapped = std::max(static_cast<DWORD>(nBytes), nLength == INVALID_FILE_SIZE ? 0 : nLength);
    writer.m_hOutMap = CreateFileMappingA(out.hData, nullptr, PAGE_READWRITE, 0, nMapped, nullptr);
    return writer.m_hOutMap ? MM_SUCCESS : MM_NO_MEMORY;
}

/// The last step: connects both objects (or the one that is both) with their images and writes a bitmap's
/// header.
DWORD Connect(CImageObj& reader, CImageObj& writer, int nHeaderLine)
{
    T_ImgInf& out = writer.m_OutImgInf;
    const bool bBitmap = out.nFileType == MM_FILE_BITMAP;
    if (bBitmap)
        out.nOffset = MM_BITMAP_HEADER_BYTES;
    if (!FindPixels(reader) || !IsDestinationReachable(out))
        return MM_BAD_ARGUMENT;
    DWORD nResult = MapSource(reader);
    if (nResult == MM_SUCCESS)
        nResult = MapDestination(writer);
    if (nResult != MM_SUCCESS || !bBitmap)
        return nResult;
    nResult = WriteBmpHeader(out.hData, out.nWidth, out.nHeight, SamplesOf(out.nDstFormat), out.eAcsType,
                             writer.m_hOutMap);
    if (nResult != MM_SUCCESS)
        ReportFileAccessError(kUnit, nHeaderLine, GetLastError());
    return nResult;
}

/// Maps the band from nLine on. One that could not be read is dropped: it must not reach a destination.
DWORD MapWholeBand(CImageObj& object, int nLine, T_ImageLrg_tag& band)
{
    const DWORD nResult = object.MapBand(nLine, &band, MM_BAND_DOWNWARD, kSlot);
    if (nResult != MM_SUCCESS)
        DropUnitBand(object);
    return nResult;
}

/// Lines and pixels that both bands have.
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
    DWORD nResult = MapWholeBand(inObject, nLine, inBand);
    if (nResult != MM_SUCCESS)
        return nResult;
    T_ImageLrg_tag outBand{};
    nResult = MapWholeBand(outObject, nLine, outBand);
    if (nResult != MM_SUCCESS) {
        inObject.UnmapBand(kSlot);
        return nResult;
    }
    if (inBand.nBufSize == outBand.nBufSize)
        CopyBand(outBand, inBand);
    else
        nResult = MM_BAD_ARGUMENT;
    for (CImageObj* pObject : {&inObject, &outObject}) {
        const DWORD nUnmapped = pObject->UnmapBand(kSlot);
        nResult = nResult != MM_SUCCESS ? nResult : nUnmapped;
    }
    return nResult;
}

/// The record at the start of a duplication: the band height is the one set up, whatever was mapped since.
T_ImageLrg_tag StartRecord(CImageObj& object)
{
    T_ImageLrg_tag info{};
    info.nRatio = 100;
    object.GetImageInfo(&info);
    return info;
}

/// The line behind a band; a step of one line at least.
int LineBehind(const T_ImageLrg_tag& band, int nLine)
{
    return std::max(band.nBandBottom, nLine) + 1;
}

} // namespace

DWORD ImportImgForUnit(CImageObj* pObj, T_ImgInf* pIn, T_ImgInf* pOut, int nBottomUp, T_LOG_STACK_tag**,
                       int nAlign, int nAlpha)
{
    StartAnew(*pObj, MM_UNIT_BOTH);
    pObj->m_nUnitBottomUp = nBottomUp;
    if (!SuitOneObject(*pIn, *pOut))
        return MM_BAD_ARGUMENT;
    if (const DWORD nResult = CalcUnitBandHeight(*pObj, *pIn, pOut, nAlign); nResult != MM_SUCCESS)
        return nResult;
    pObj->m_nAlpha = AlphaFor(*pIn, *pOut, nAlpha);
    pObj->m_InImgInf = *pIn;
    pObj->m_OutImgInf = *pOut;
    TakeGeometry(*pObj, pIn, IMG_INPUT, pObj->m_ImgInfo.nMarginX, pObj->m_ImgInfo.nMarginY, nAlign,
                 nBottomUp);
    return Connect(*pObj, *pObj, kLineNoHeader);
}

DWORD ImportImgForUnitJudge(CImageObj* pObj, T_ImgInf* pIn, int nBottomUp, T_LOG_STACK_tag**, int)
{
    StartAnew(*pObj, MM_UNIT_JUDGED);
    pObj->m_nUnitBottomUp = nBottomUp;
    CalcUnitBandHeight(*pObj, *pIn, nullptr, MM_ALIGN_PACKED);
    pObj->m_InImgInf = *pIn;
    TakeGeometry(*pObj, pIn, IMG_INPUT, 0, 0, MM_ALIGN_PACKED, nBottomUp);
    return MM_SUCCESS;
}

DWORD ImportImgForUnitEnLarge(CImageObj* pOutObj, T_ImgInf* pOut, CImageObj* pInObj, T_ImgInf* pIn,
                              int nBottomUp, T_LOG_STACK_tag**, int nAlpha)
{
    StartAnew(*pInObj, MM_UNIT_ENLARGED);
    StartAnew(*pOutObj, MM_UNIT_ENLARGEMENT);
    pInObj->m_nUnitBottomUp = nBottomUp;
    if (const DWORD nResult = CalcEnlargeBandHeights(*pInObj, *pIn, *pOutObj, *pOut, MM_ALIGN_PACKED);
        nResult != MM_SUCCESS)
        return nResult;
    pOutObj->m_nAlpha = AlphaFor(*pIn, *pOut, nAlpha);
    pInObj->m_InImgInf = *pIn;
    pInObj->m_OutImgInf.hData = nullptr;
    pOutObj->m_OutImgInf = *pOut;
    pOutObj->m_InImgInf.hData = nullptr;
    TakeGeometry(*pInObj, pIn, IMG_INPUT, 0, 0, MM_ALIGN_PACKED, nBottomUp);
    TakeGeometry(*pOutObj, pOut, IMG_OUTPUT, 0, 0, MM_ALIGN_PACKED, 0);
    return Connect(*pInObj, *pOutObj, kLineNoEnlargedHeader);
}

DWORD DuplicateImageForUnit(CImageObj* pObj)
{
    if (const DWORD nResult = pObj->UnmapBand(kSlot); nResult != MM_SUCCESS)
        return nResult;
    T_ImageLrg_tag band = StartRecord(*pObj);
    const int nHeight = band.nHeight;
    for (int nLine = 0; nLine < nHeight; nLine = LineBehind(band, nLine)) {
        DWORD nResult = MapWholeBand(*pObj, nLine, band);
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
    T_ImageLrg_tag band = StartRecord(*pInObj);
    StartRecord(*pOutObj);
    const int nHeight = band.nHeight;
    for (int nLine = 0; nLine < nHeight; nLine = LineBehind(band, nLine))
        if (const DWORD nResult = DuplicateBand(*pOutObj, *pInObj, nLine, band); nResult != MM_SUCCESS)
            return nResult;
    return MM_SUCCESS;
}
