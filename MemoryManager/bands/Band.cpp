// Band mapping: a run of whole image lines, with its frame. In the object's own store nothing is copied, the
// caller works in the store's block or view; unit bands have a file of their own.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

/// Byte range of a band in the store's image data.
struct ByteRange
{
    std::int64_t nStart; // of the band with as much of its frame as the buffer has above it
    std::int64_t nBytes;
    std::int64_t nFrameBytes; // from there to the band's own first pixel
};

ByteRange BytesOfBand(const T_ImageLrg_tag& info, int nFirst, std::int64_t nLines)
{
    const std::int64_t nFrame = std::max(info.nFsize, 0);
    const std::int64_t nPixel = PixelPosition(info, nFirst, 0);
    const std::int64_t nFramed = nPixel - nFrame * (std::int64_t{info.nLineBytes} + info.nPixelBytes);
    const std::int64_t nStart = nPixel < 0 ? nPixel : std::max<std::int64_t>(nFramed, 0);
    return {nStart, nFramed + (nLines + 2 * nFrame) * info.nLineBytes - nStart, nPixel - nStart};
}

} // namespace

DWORD CImageObj::MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot)
{
    if (nLine < 0 || nLine >= m_ImgInfo.nHeight)
        return MM_LINE_OUTSIDE;
    const int nLines = std::max(m_ImgInfo.nBandLines, 0);
    switch (nDirection) {
    case MM_BAND_DOWNWARD:
        return MapBandRange(nLine, nLine + std::min(nLines, m_ImgInfo.nHeight - nLine) - 1, pBand, nSlot);
    case MM_BAND_UPWARD:
        return MapBandRange(nLine - std::min(nLines, nLine + 1) + 1, nLine, pBand, nSlot);
    default:
        return MM_NO_SUCH_DIRECTION;
    }
}

DWORD CImageObj::MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot)
{
    switch (m_nUnitMode) {
    case 0:
        return MapBandRangeForUnify(nFirst, nLast, pBand, nSlot);
    case 1:
        return MapBandRangeForUnit(nFirst, nLast, pBand, nSlot);
    default:
        return MM_UNKNOWN_MODE;
    }
}

DWORD CImageObj::MapBandRangeForUnify(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot)
{
    if (nFirst > nLast)
        return MM_RANGE_REVERSED;
    const std::int64_t nLines = std::int64_t{nLast} - nFirst + 1;
    const ByteRange range = BytesOfBand(m_ImgInfo, nFirst, nLines);
    constexpr std::int64_t nMost = std::numeric_limits<DWORD>::max();
    if (nLines > std::numeric_limits<int>::max() || range.nStart > nMost || range.nBytes > nMost)
        return MM_BAD_ARGUMENT;

    m_ImgInfo.pImage = nullptr;
    if (!m_pImageCtrl || range.nStart < 0)
        return MM_NO_BAND_ADDRESS;
    void* pStart = m_pImageCtrl->MapBandAdress(static_cast<DWORD>(range.nStart),
                                               static_cast<DWORD>(range.nBytes), nSlot);
    if (!pStart)
        return MM_NO_BAND_ADDRESS;
    m_ImgInfo.pImage = static_cast<unsigned char*>(pStart) + range.nFrameBytes;
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

DWORD CImageObj::SetFrameColor(int nMode, int nColor)
{
    if (nMode < MM_FRAME_NONE || nMode > MM_FRAME_COLOR || (nMode == MM_FRAME_COLOR && nColor == -1))
        return MM_BAD_FRAME_MODE;
    m_ImgInfo.nFrameMode = nMode;
    if (m_nUnitMode != 0 || m_ImgInfo.nFsize < 1 || nMode == MM_FRAME_NONE)
        return MM_SUCCESS;
    if (m_ImgInfo.nWidth < 1 || m_ImgInfo.nHeight < 1)
        return MM_SUCCESS; // no edge to paint beyond

    T_ImageLrg_tag band{};
    band.nRatio = 100;
    const int nLast = m_ImgInfo.nHeight - 1;
    if (const DWORD nResult = MapBandRange(nLast, nLast, &band, 0); nResult != MM_SUCCESS)
        return nResult;
    FillColor(band, nColor);
    return UnmapBand(0);
}
