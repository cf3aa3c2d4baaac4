// Band mapping: a run of whole image lines, with its frame. Of an object with a store nothing is copied: the
// caller works in the store's block or view. UnitBand.cpp maps the bands of unit objects.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/layout/BandBytes.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

/// The bytes of a band in the store's image data. A frame that reaches ahead of the data is cut there.
BandBytes BytesInStore(const T_ImageLrg_tag& info, int nFirst, std::int64_t nLines)
{
    const BandBytes band = BytesWithFrame(info, PixelPosition(info, nFirst, 0), nLines);
    const std::int64_t nCut = std::clamp<std::int64_t>(-band.nStart, 0, band.nFrameBytes);
    return {band.nStart + nCut, band.nBytes - nCut, band.nFrameBytes - nCut};
}

} // namespace

DWORD CImageObj::MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot)
{
    if (nLine < 0 || nLine >= m_ImgInfo.nHeight)
        return MM_LINE_OUTSIDE;
    if (nDirection != MM_BAND_DOWNWARD && nDirection != MM_BAND_UPWARD)
        return MM_NO_SUCH_DIRECTION;
    const int nLines = std::max(m_ImgInfo.nBandLines, 0);
    const LineRange lines = nDirection == MM_BAND_DOWNWARD ? BandDownFrom(nLine, nLines, m_ImgInfo.nHeight)
                                                           : BandUpTo(nLine, nLines);
    return MapBandRange(lines.nFirst, lines.nLast, pBand, nSlot);
}

DWORD CImageObj::MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot)
{
    switch (m_nUnitMode) {
    case 0:
        return MapBandRangeForUnify(nFirst, nLast, pBand, nSlot);
    case 1:
        return MapBandRangeForUnit(nFirst, nLast, pBand);
    default:
        return MM_UNKNOWN_MODE;
    }
}

DWORD CImageObj::MapBandRangeForUnify(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot)
{
    if (nFirst > nLast)
        return MM_RANGE_REVERSED;
    const std::int64_t nLines = LineRange{nFirst, nLast}.Count();
    const BandBytes bytes = BytesInStore(m_ImgInfo, nFirst, nLines);
    constexpr std::int64_t nMost = std::numeric_limits<DWORD>::max();
    if (nLines > std::numeric_limits<int>::max() || bytes.nStart > nMost || bytes.nBytes > nMost)
        return MM_BAD_ARGUMENT;

    m_ImgInfo.pImage = nullptr;
    if (!m_pImageCtrl || bytes.nStart < 0)
        return MM_NO_BAND_ADDRESS;
    void* pStart = m_pImageCtrl->MapBandAdress(static_cast<DWORD>(bytes.nStart),
                                               static_cast<DWORD>(bytes.nBytes), nSlot);
    if (!pStart)
        return MM_NO_BAND_ADDRESS;
    m_ImgInfo.pImage = static_cast<unsigned char*>(pStart) + bytes.nFrameBytes;
    m_ImgInfo.nBandTop = nFirst;
    m_ImgInfo.nBandBottom = nLast;
    *pBand = m_ImgInfo;
    pBand->nBandLines = static_cast<int>(nLines);
    return MM_SUCCESS;
}

DWORD CImageObj::UnmapBand(int nSlot)
{
    if (m_nUnitMode != 0)
        return EndUnitBand();
    return m_pImageCtrl ? m_pImageCtrl->FreeBandAdress(nSlot) : DWORD{MM_SUCCESS};
}
