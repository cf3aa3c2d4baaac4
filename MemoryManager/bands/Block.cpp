// Blocks: rectangles of an image that are copied out with a margin, and copied back, band by band.
// Each band supplies its own lines and the frame lines below them; the first band also supplies the frame
// lines above it, which are the block's margin there.

#include "MemoryManager/CImageObj.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/image/UnitObject.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

/// Lines and pixels of an image, all inclusive.
struct BlockRect
{
    int nTop, nBottom, nLeft, nRight;

    bool IsEmpty() const { return nBottom < nTop || nRight < nLeft; }
};

/// @param nFirstCode  the code for a top outside the image; those for bottom, left and right follow it
DWORD CheckInside(const BlockRect& rect, const T_ImageLrg_tag& image, DWORD nFirstCode)
{
    const struct
    {
        int nEdge, nEnd;
    } edges[] = {{rect.nTop, image.nHeight},
                 {rect.nBottom, image.nHeight},
                 {rect.nLeft, image.nWidth},
                 {rect.nRight, image.nWidth}};
    for (const auto& edge : edges) {
        if (edge.nEdge < 0 || edge.nEdge >= edge.nEnd)
            return nFirstCode;
        ++nFirstCode;
    }
    return MM_SUCCESS;
}

bool IsUnit(const CImageObj& image)
{
    return image.m_nUnitMode == 1;
}

/// Ends the unit band that the host still holds, as any mapping does. A band that is held from then on was
/// mapped by the block operation itself, which may drop it.
DWORD EndHeldBand(CImageObj& image)
{
    return IsUnit(image) ? image.UnmapBand(kSlot) : DWORD{MM_SUCCESS};
}

/// Whether the object's bands are appended to a file: they are written once, in order, so that no block can
/// be mapped on the way.
bool Appends(const CImageObj& image)
{
    return IsUnit(image) && WritesBands(image) && image.m_OutImgInf.eAcsType == ACS_FILEIO;
}

/// Whether the image and its margins contain the block and its margin. The lines above a unit band lie in the
/// band buffer's margin, so that a block's margin must not be taller than that.
bool HasMargin(const CImageObj& image, const BlockRect& rect, const T_ImageLrg_tag& block)
{
    const T_ImageLrg_tag& info = image.m_ImgInfo;
    const std::int64_t nX = block.nMarginX, nY = block.nMarginY;
    const std::int64_t nMarginX = info.nMarginX, nMarginY = info.nMarginY;
    return rect.nLeft - nX >= -nMarginX && rect.nRight + nX < info.nWidth + nMarginX &&
           rect.nTop - nY >= -nMarginY && rect.nBottom + nY < info.nHeight + nMarginY &&
           (!IsUnit(image) || nY <= nMarginY);
}

/// The frame that bands are mapped with. That of a unit band is limited by the margin above and below it; its
/// sides can be used as far as the margin beside it goes, whatever the frame.
int FrameFor(const CImageObj& image, const T_ImageLrg_tag& block)
{
    const int nFrame = std::max(block.nMarginX, block.nMarginY);
    return IsUnit(image) ? std::min(nFrame, image.m_ImgInfo.nMarginY) : nFrame;
}

/// The last line of a band of at most nLines lines that ends at nLimit at the latest.
int LastLine(int nFirst, int nLines, std::int64_t nLimit)
{
    return static_cast<int>(std::min({nFirst + std::int64_t{nLines} - 1, nLimit, std::int64_t{INT32_MAX}}));
}

unsigned char* PixelAt(const T_ImageLrg_tag& buffer, int nLine, int nPixel)
{
    return buffer.pImage + std::ptrdiff_t{nLine} * buffer.nLineBytes +
           std::ptrdiff_t{nPixel} * buffer.nPixelBytes;
}

void CopyLines(unsigned char* pTo, int nToLineBytes, const unsigned char* pFrom, int nFromLineBytes,
               int nLines, std::size_t nBytes)
{
    for (; nLines > 0; --nLines, pTo += nToLineBytes, pFrom += nFromLineBytes)
        std::memcpy(pTo, pFrom, nBytes);
}

/// Maps a band of which only pixels are read. Of a unit object the range is cut to the image, as its source
/// has no other lines. In a store extra lines cost nothing, and a frame wider than the margin needs them: its
/// width moves the start of the mapped bytes back, and as much is missing at their end.
DWORD MapForReading(CImageObj& image, int nFirst, int nLast, T_ImageLrg_tag& band)
{
    const T_ImageLrg_tag& info = image.m_ImgInfo;
    if (IsUnit(image))
        return image.MapBandRange(std::min(nFirst, info.nHeight - 1), std::min(nLast, info.nHeight - 1),
                                  &band, kSlot);
    const int nExtra = info.nFsize > info.nMarginX ? info.nFsize : 0;
    return image.MapBandRange(nFirst, LastLine(nLast, nExtra + 1, INT32_MAX), &band, kSlot);
}

/// Ends a band that was only read. A unit band is dropped and not written: what the destination has of its
/// lines may be newer.
DWORD EndReading(CImageObj& image)
{
    if (IsUnit(image)) {
        DropUnitBand(image);
        return MM_SUCCESS;
    }
    return image.UnmapBand(kSlot);
}

DWORD FillBlock(CImageObj& image, const BlockRect& rect, const T_ImageLrg_tag& block)
{
    const int nBandLines = image.m_ImgInfo.nBandLines;
    const int nFrame = image.m_ImgInfo.nFsize;
    const int nEnd = rect.nBottom + block.nMarginY;
    const std::size_t nBytes =
        (std::size_t(block.nWidth) + 2 * std::size_t(block.nMarginX)) * std::size_t(block.nPixelBytes);
    int nFirst = rect.nTop, nLast = LastLine(nFirst, nBandLines, rect.nBottom);
    for (int nNext = rect.nTop - block.nMarginY; nNext <= nEnd;) {
        T_ImageLrg_tag band{};
        if (const DWORD nResult = MapForReading(image, nFirst, nLast, band); nResult != MM_SUCCESS)
            return nResult;
        if (band.nPixelBytes != block.nPixelBytes) {
            EndReading(image);
            return MM_BAD_ARGUMENT;
        }
        const int nLines = nLast + std::min(nFrame, nEnd - nLast) - nNext + 1;
        CopyLines(PixelAt(block, nNext - rect.nTop, -block.nMarginX), block.nLineBytes,
                  PixelAt(band, nNext - band.nBandTop, rect.nLeft - block.nMarginX), band.nLineBytes, nLines,
                  nBytes);
        if (const DWORD nResult = EndReading(image); nResult != MM_SUCCESS)
            return nResult;
        nNext += nLines;
        nFirst = nNext;
        nLast = LastLine(nFirst, nBandLines, std::int64_t{nEnd} + block.nMarginY);
    }
    return MM_SUCCESS;
}

} // namespace

DWORD CImageObj::MapBlock(int nTop, int nBottom, int nLeft, int nRight, T_ImageLrg_tag* pBlock)
{
    const BlockRect rect{nTop, nBottom, nLeft, nRight};
    if (const DWORD nResult = CheckInside(rect, m_ImgInfo, MM_BLOCK_TOP); nResult != MM_SUCCESS)
        return nResult;
    if (pBlock->nPixelBytes != m_ImgInfo.nPixelBytes || rect.IsEmpty())
        return MM_BAD_ARGUMENT;
    T_ImageLrg_tag block = *pBlock;
    block.nWidth = nRight - nLeft + 1;
    block.nHeight = nBottom - nTop + 1;
    if (CalcAlign(&block) != MM_SUCCESS || !HasMargin(*this, rect, block))
        return MM_BAD_ARGUMENT;
    if (Appends(*this))
        return MM_UNKNOWN_MODE;
    if (m_ImgInfo.nBandLines < 1)
        return MM_RANGE_REVERSED;
    if (const DWORD nResult = EndHeldBand(*this); nResult != MM_SUCCESS)
        return nResult;
    block.nBufSize = pBlock->nBufSize;
    *pBlock = block;

    const T_ImageLrg_tag saved = m_ImgInfo; // names no buffer of a unit object: none is held here
    m_ImgInfo.nFsize = FrameFor(*this, block);
    const DWORD nResult = FillBlock(*this, rect, block);
    DropUnitBand(*this); // a band whose mapping failed may still be held
    m_ImgInfo = saved;
    return nResult;
}

DWORD CImageObj::UnMapBlock(int nTop, int nBottom, int nLeft, int nRight, T_ImageLrg_tag* pBlock)
{
    const BlockRect rect{nTop, nBottom, nLeft, nRight};
    if (const DWORD nResult = CheckInside(rect, m_ImgInfo, MM_UNBLOCK_TOP); nResult != MM_SUCCESS)
        return nResult;
    if (pBlock->nPixelBytes != m_ImgInfo.nPixelBytes)
        return MM_BAD_ARGUMENT;
    if (rect.IsEmpty())
        return MM_SUCCESS;
    if (Appends(*this))
        return MM_UNKNOWN_MODE;
    if (m_ImgInfo.nBandLines < 1)
        return MM_RANGE_REVERSED;
    if (const DWORD nResult = EndHeldBand(*this); nResult != MM_SUCCESS)
        return nResult;

    const int nBandLines = m_ImgInfo.nBandLines; // taken now: mapping a unit band changes it
    const std::size_t nBytes = std::size_t(nRight - nLeft + 1) * std::size_t(pBlock->nPixelBytes);
    for (int nFirst = nTop; nFirst <= nBottom;) {
        const int nLast = LastLine(nFirst, nBandLines, nBottom);
        T_ImageLrg_tag band{};
        if (const DWORD nResult = MapBandRange(nFirst, nLast, &band, kSlot); nResult != MM_SUCCESS) {
            DropUnitBand(*this); // lines that were not read must not be written
            return nResult;
        }
        if (band.nPixelBytes != pBlock->nPixelBytes) {
            EndReading(*this); // nothing was copied, so nothing is written
            return MM_BAD_ARGUMENT;
        }
        CopyLines(PixelAt(band, 0, nLeft), band.nLineBytes, PixelAt(*pBlock, nFirst - nTop, 0),
                  pBlock->nLineBytes, nLast - nFirst + 1, nBytes);
        if (const DWORD nResult = UnmapBand(kSlot); nResult != MM_SUCCESS)
            return nResult;
        nFirst = nLast + 1;
    }
    return MM_SUCCESS;
}
