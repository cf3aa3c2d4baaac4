// Setting unit objects up over the external images that they read and write.
// Nothing is written before all lines of both images are known to have 32-bit positions.

#include "MemoryManager/ImgObjUty.h"

#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/FirstFailure.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BitmapHeader.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/layout/UnitImages.h"
#include "MemoryManager/transfer/UnitBandHeights.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

constexpr char kUnit[] = "MemoryManager/ImgObjUty";

// Statements that report to the error log.
constexpr int kLineNoHeader = 537;
constexpr int kLineNoEnlargedHeader = 852;

/// Undoes an earlier set-up. Until the next one gives the object a geometry, no band can be mapped.
void StartAnew(CImageObj& object, int nRole)
{
    DropUnitBand(object);
    object.m_ImgInfo.pBase = object.m_ImgInfo.pImage =
        nullptr; // addresses of a store's image are no unit band
    CloseUnitMappings(object);
    object.m_nUnitBandHeight = object.m_ImgInfo.nBandLines = 0;
    object.m_nUnitType = nRole;
}

/// Whether one object can read the one image and write the other: it changes neither size nor sample width.
bool SuitOneObject(const T_ImgInf& in, const T_ImgInf& out)
{
    return in.nWidth == out.nWidth && in.nHeight == out.nHeight &&
           SampleBytesOf(in.nSrcFormat) == SampleBytesOf(out.nDstFormat);
}

/// The host's nAlpha; 1, all ones, for a fourth sample that the source lacks.
int AlphaFor(const T_ImgInf& in, const T_ImgInf& out, int nAlpha)
{
    return SamplesOf(in.nSrcFormat) == 3 && SamplesOf(out.nDstFormat) == 4 ? 1 : nAlpha;
}

/// Makes an object a unit object with the image's size and four samples a pixel.
/// @return 0; 1 no memory
DWORD TakeGeometry(CImageObj& object, T_ImgInf* pInf, int nMarginX, int nMarginY, int nAlign)
{
    CImageObjIO io; // only its record is used; role and order of lines do not change it
    io.InitForUnit(pInf, IMG_WORK, nMarginX, nMarginY, 0, nAlign, 0, 0);
    T_ImageLrg_tag info = io.m_ImgInfo;
    object.m_nUnitMode = 1;
    const DWORD nResult = object.SetImageInfo(&info);
    if (nResult == MM_SUCCESS)
        return nResult;
    // Band mapping refuses this geometry. The earlier one, which it might accept, must not stay.
    info.nBandLines = object.m_ImgInfo.nBandLines;
    object.m_ImgInfo = info;
    return nResult == MM_NO_MEMORY ? nResult : DWORD{MM_SUCCESS};
}

/// Finds where the source's pixels begin. False: lines of the source have no 32-bit position. A source that
/// would have none even if its pixels began at position 0 is not searched.
bool FindPixels(CImageObj& reader)
{
    T_ImgInf atStart = reader.m_InImgInf;
    atStart.nOffset = 0;
    if (!IsSourceReachable(atStart))
        return false;
    reader.CalcOffsetLength(); // where nothing is found, the host's offset stays
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

/// Whether the file of a mapped destination, which may be longer than its image, can be mapped whole.
bool HasReachableEnd(const T_ImgInf& out)
{
    return out.eAcsType != ACS_MMF || FileLength(out.hData) || GetLastError() != ERROR_FILE_TOO_LARGE;
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
    // A file that has content already may be longer than its image, and views reach to the end of a granule.
    const DWORD nMapped = std::max(static_cast<DWORD>(nBytes), FileLength(out.hData).value_or(0));
    writer.m_hOutMap = CreateFileMappingA(out.hData, nullptr, PAGE_READWRITE, 0, nMapped, nullptr);
    return writer.m_hOutMap ? MM_SUCCESS : MM_NO_MEMORY;
}

/// The last step of a set-up: finds the source's pixels, makes the file mappings and writes a bitmap's
/// header. One object may be both reader and writer.
/// @param nHeaderLine  the line of the error log for a header that could not be written
DWORD Connect(CImageObj& reader, CImageObj& writer, int nHeaderLine)
{
    T_ImgInf& out = writer.m_OutImgInf;
    const bool bBitmap = out.nFileType == MM_FILE_BITMAP;
    if (bBitmap)
        out.nOffset = MM_BITMAP_HEADER_BYTES;
    if (!FindPixels(reader) || !IsDestinationReachable(out) || !HasReachableEnd(out))
        return MM_BAD_ARGUMENT;
    DWORD nResult = MapSource(reader);
    if (nResult == MM_SUCCESS)
        nResult = MapDestination(writer);
    if (nResult != MM_SUCCESS || !bBitmap)
        return nResult;
    nResult = WriteBmpHeader(out.hData, out.nWidth, out.nHeight, SamplesOf(out.nDstFormat), out.eAcsType,
                             writer.m_hOutMap);
    return nResult == MM_SUCCESS ? nResult : FailFileAccess(kUnit, nHeaderLine);
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
    const int nMarginX = pObj->m_ImgInfo.nMarginX, nMarginY = pObj->m_ImgInfo.nMarginY;
    if (const DWORD nResult = TakeGeometry(*pObj, pIn, nMarginX, nMarginY, nAlign); nResult != MM_SUCCESS)
        return nResult;
    return Connect(*pObj, *pObj, kLineNoHeader);
}

DWORD ImportImgForUnitJudge(CImageObj* pObj, T_ImgInf* pIn, int nBottomUp, T_LOG_STACK_tag**, int)
{
    StartAnew(*pObj, MM_UNIT_JUDGED);
    pObj->m_nUnitBottomUp = nBottomUp;
    CalcUnitBandHeight(*pObj, *pIn, nullptr, MM_ALIGN_PACKED);
    pObj->m_InImgInf = *pIn;
    TakeGeometry(*pObj, pIn, 0, 0, MM_ALIGN_PACKED);
    return MM_SUCCESS;
}

DWORD ImportImgForUnitEnLarge(CImageObj* pOutObj, T_ImgInf* pOut, CImageObj* pInObj, T_ImgInf* pIn,
                              int nBottomUp, T_LOG_STACK_tag**, int nAlpha)
{
    StartAnew(*pInObj, MM_UNIT_ENLARGED);
    StartAnew(*pOutObj, MM_UNIT_ENLARGEMENT);
    pInObj->m_nUnitBottomUp = nBottomUp;
    DWORD nResult = CalcEnlargeBandHeights(*pInObj, *pIn, *pOutObj, *pOut, MM_ALIGN_PACKED);
    if (nResult != MM_SUCCESS)
        return nResult;
    pOutObj->m_nAlpha = AlphaFor(*pIn, *pOut, nAlpha);
    pInObj->m_InImgInf = *pIn;
    pInObj->m_OutImgInf.hData = nullptr;
    pOutObj->m_OutImgInf = *pOut;
    pOutObj->m_InImgInf.hData = nullptr;
    T_ImgInf written = *pOut;
    written.nSrcFormat = pOut->nDstFormat; // the format that a geometry is made of
    nResult = TakeGeometry(*pInObj, pIn, 0, 0, MM_ALIGN_PACKED);
    nResult = FirstFailure(nResult, TakeGeometry(*pOutObj, &written, 0, 0, MM_ALIGN_PACKED));
    if (nResult != MM_SUCCESS)
        return nResult;
    return Connect(*pInObj, *pOutObj, kLineNoEnlargedHeader);
}
