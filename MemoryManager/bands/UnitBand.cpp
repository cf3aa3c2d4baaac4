// Unit bands: each is a fresh buffer, which is filled from an external image when it is mapped and written to
// another one when it is ended. An object holds a band exactly while m_ImgInfo.pBase is not null.

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/UnitBandLines.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/layout/UnitImages.h"

#include <algorithm>
#include <cstdint>

namespace {

bool Reads(const CImageObj& image)
{
    return image.m_nUnitType != MM_UNIT_ENLARGEMENT;
}

/// Whether the object's role is to write, to a destination of a format and access type that can be written.
bool HasDestination(const CImageObj& image)
{
    const T_ImgInf& out = image.m_OutImgInf;
    const bool bHasAccess =
        out.eAcsType == ACS_MMF || out.eAcsType == ACS_MEMORY || out.eAcsType == ACS_FILEIO;
    return WritesBands(image) && bHasAccess && DestinationLineBytes(out) != 0;
}

/// The external image whose height and sample width the object's bands have.
const T_ImgInf& LeadingImage(const CImageObj& image)
{
    return Reads(image) ? image.m_InImgInf : image.m_OutImgInf;
}

/// Whether every line of the object's source and destination has a position, and the destination has room for
/// the object's lines.
bool AreImagesReachable(const CImageObj& image)
{
    if (Reads(image) && !IsSourceReachable(image.m_InImgInf))
        return false;
    if (!HasDestination(image))
        return true;
    const T_ImgInf& out = image.m_OutImgInf;
    return IsDestinationReachable(out) && image.m_ImgInfo.nWidth <= out.nWidth &&
           LeadingImage(image).nHeight <= out.nHeight;
}

/// The position of a line. Readers and writers take it as an unsigned number, whatever its type says.
int PositionOf(const T_ImgInf& inf, int nLine)
{
    const std::int64_t nPosition = static_cast<DWORD>(inf.nOffset) + std::int64_t{nLine} * inf.nLineBytes;
    return static_cast<int>(static_cast<DWORD>(nPosition));
}

StoredPlace PlaceOf(bool bAtStart, bool bAtEnd)
{
    if (bAtStart)
        return bAtEnd ? StoredPlace::Whole : StoredPlace::Start;
    return bAtEnd ? StoredPlace::End : StoredPlace::Inside;
}

} // namespace

DWORD CImageObj::MapBandRangeForUnit(int nFirst, int nLast, T_ImageLrg_tag* pBand)
{
    if (nFirst > nLast)
        return MM_RANGE_REVERSED;
    const T_ImgInf& leading = LeadingImage(*this);
    if (nFirst < 0 || nLast >= leading.nHeight)
        return MM_LINE_OUTSIDE;
    const int nSampleBytes = SampleBytesOf(Reads(*this) ? leading.nSrcFormat : leading.nDstFormat);
    if (!AreImagesReachable(*this) || nSampleBytes > kLargestUnitSample)
        return MM_BAD_ARGUMENT;
    if (const DWORD nResult = EndUnitBand(); nResult != MM_SUCCESS)
        return nResult;

    const int nFormat = nSampleBytes == 1 ? MM_FORMAT_BGRA32 : MM_FORMAT_RAW64;
    const int nLines = nLast - nFirst + 1;
    if (nLines > 1)
        m_ImgInfo.nBandLines = nLines; // a band of one line gets a buffer of the height before
    const int nImageLines = m_ImgInfo.nAllocHeight;
    const DWORD nResult =
        AllcImgBufLrg(&m_ImgInfo, m_ImgInfo.nWidth, std::max(m_ImgInfo.nBandLines, 1), m_ImgInfo.nMarginX,
                      m_ImgInfo.nMarginY, nFormat, m_ImgInfo.nAlignType);
    if (nResult != MM_SUCCESS)
        return nResult;
    m_ImgInfo.nHeight = leading.nHeight;
    m_ImgInfo.nAllocHeight = nImageLines;
    m_ImgInfo.nBandTop = nFirst;
    m_ImgInfo.nBandBottom = nLast;
    m_ImgInfo.nBandLines = nLines;
    *pBand = m_ImgInfo;
    return Reads(*this) ? ReadUnitBand() : DWORD{MM_SUCCESS};
}

DWORD CImageObj::ReadUnitBand()
{
    const int nBottom = m_ImgInfo.nHeight - 1;
    const bool bTurned = m_nUnitBottomUp == 1;
    const int nStoredFirst = bTurned ? nBottom - m_ImgInfo.nBandBottom : m_ImgInfo.nBandTop;
    const int nStoredLast = bTurned ? nBottom - m_ImgInfo.nBandTop : m_ImgInfo.nBandBottom;
    const int nPlace = static_cast<int>(PlaceOf(nStoredFirst == 0, nStoredLast == nBottom));
    const int nPosition = PositionOf(m_InImgInf, nStoredFirst);
    switch (m_InImgInf.eAcsType) {
    case ACS_MMF:
    case ACS_MEMORY:
        ReadDataMem(m_InImgInf.nLineBytes, nPosition, nPlace, 0);
        return MM_SUCCESS;
    case ACS_FILEIO:
        return ReadDataFile(m_InImgInf.nLineBytes, nPosition, nPlace, 0);
    case ACS_NONE:
        break;
    }
    return MM_SUCCESS;
}

DWORD CImageObj::EndUnitBand()
{
    if (m_nUnitMode != 1 || !m_ImgInfo.pBase)
        return MM_SUCCESS;
    if (HasDestination(*this)) {
        const int nPosition = PositionOf(m_OutImgInf, m_ImgInfo.nBandTop);
        if (m_OutImgInf.eAcsType != ACS_FILEIO)
            WriteDataMem(nPosition);
        else if (const DWORD nResult = WriteDataFile(nPosition); nResult != MM_SUCCESS)
            return nResult;
    }
    DropUnitBand(*this);
    return MM_SUCCESS;
}
