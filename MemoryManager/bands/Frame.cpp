// Painting the frame of a band where it lies beyond the image's edges.
// Band line k lies k lines below the band's first line. A frame line reaches nFsize pixels past both sides of
// the image.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/bands/UnitBandLines.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

/// Which pixel or line of the image the frame copies at a distance of 1 or more beyond an edge. Both are
/// counted from that edge, inwards from 0 and outwards from 1. The image has nCount of them, and a mirror
/// that would reach past the last takes the last.
using SourceIndex = int (*)(int nDistance, int nCount);

int Replicated(int, int)
{
    return 0;
}

int Mirrored(int nDistance, int nCount)
{
    return std::min(nDistance, nCount - 1);
}

int MirroredWithEdge(int nDistance, int nCount)
{
    return std::min(nDistance - 1, nCount - 1);
}

/// A mapped band: the addresses of its pixels, and how far its frame reaches in the image buffer.
class FramedBand
{
public:
    explicit FramedBand(const T_ImageLrg_tag& band) : m_band(band) {}

    /// Pixels of the frame on each side: fewer than nFsize when the margin became narrower afterwards.
    int Frame() const { return std::min(m_band.nFsize, m_band.nMarginX); }
    int Width() const { return m_band.nWidth; }
    int Height() const { return m_band.nHeight; }
    std::size_t PixelBytes() const { return std::size_t(m_band.nPixelBytes); }
    std::size_t FrameLineBytes() const { return std::size_t(Width() + 2 * Frame()) * PixelBytes(); }

    unsigned char* Pixel(int x, int k) const
    {
        return m_band.pImage + std::ptrdiff_t{k} * m_band.nLineBytes + std::ptrdiff_t{x} * m_band.nPixelBytes;
    }
    unsigned char* FrameLine(int k) const { return Pixel(-Frame(), k); }

    bool StartsAtTop() const { return m_band.nBandTop == 0; }
    bool EndsAtBottom() const { return m_band.nBandBottom == Height() - 1; }
    int LastLine() const { return m_band.nBandLines - 1; }
    /// The highest line that has frame pixels at its sides: no higher than the buffer's first line.
    int FirstSideLine() const { return std::max(-Frame(), -(m_band.nBandTop + m_band.nMarginY)); }

    /// Frame lines above the image's first and below its last line, as far as the buffer's margin goes.
    int LinesBeyond() const { return std::min(Frame(), m_band.nMarginY); }

private:
    const T_ImageLrg_tag& m_band;
};

void CopyLine(const FramedBand& band, int nTo, int nFrom)
{
    std::memmove(band.FrameLine(nTo), band.FrameLine(nFrom), band.FrameLineBytes());
}

/// Paints the sides first, so that the lines copied above and below include their corners.
void PaintFromImage(const FramedBand& band, SourceIndex pSource)
{
    const int nRight = band.Width() - 1;
    for (int k = band.FirstSideLine(); k <= band.LastLine(); ++k) {
        for (int j = 1; j <= band.Frame(); ++j) {
            const int nInside = pSource(j, band.Width());
            std::memcpy(band.Pixel(-j, k), band.Pixel(nInside, k), band.PixelBytes());
            std::memcpy(band.Pixel(nRight + j, k), band.Pixel(nRight - nInside, k), band.PixelBytes());
        }
    }
    for (int j = 1; j <= band.LinesBeyond(); ++j) {
        const int nInside = pSource(j, band.Height());
        if (band.StartsAtTop())
            CopyLine(band, -j, nInside);
        if (band.EndsAtBottom())
            CopyLine(band, band.LastLine() + j, band.LastLine() - nInside);
    }
}

constexpr int kColorBytes = 4;

/// Paints one pixel. The colour's bytes are taken in memory order; in pixels of more than four bytes each of
/// them becomes a 16-bit sample.
void PutColor(unsigned char* pPixel, int nPixelBytes, int nColor)
{
    const int nSampleBytes = nPixelBytes > kColorBytes ? 2 : 1;
    std::fill_n(pPixel, nPixelBytes, static_cast<unsigned char>(0));
    for (int i = 0; i < kColorBytes && i * nSampleBytes < nPixelBytes; ++i)
        pPixel[i * nSampleBytes] = static_cast<unsigned char>(static_cast<unsigned>(nColor) >> (8 * i));
}

} // namespace

DWORD CImageObj::SetFrameColor(int nMode, int nColor)
{
    if (nMode < MM_FRAME_NONE || nMode > MM_FRAME_COLOR || (nMode == MM_FRAME_COLOR && nColor == -1))
        return MM_BAD_FRAME_MODE;
    m_ImgInfo.nFrameMode = nMode;
    if (m_nUnitMode != 0 || m_ImgInfo.nFsize < 1 || nMode == MM_FRAME_NONE)
        return MM_SUCCESS;
    if (m_ImgInfo.nWidth < 1 || m_ImgInfo.nHeight < 1)
        return MM_SUCCESS; // an image without edges

    T_ImageLrg_tag band{};
    const int nLast = m_ImgInfo.nHeight - 1;
    if (const DWORD nResult = MapBandRange(nLast, nLast, &band, kSlot); nResult != MM_SUCCESS)
        return nResult;
    FillColor(band, nColor);
    return UnmapBand(kSlot);
}

DWORD CImageObj::FillColor(T_ImageLrg_tag band, int nColor)
{
    switch (band.nFrameMode) {
    case MM_FRAME_REPLICATE:
        TUpFrame1(band);
        break;
    case MM_FRAME_MIRROR:
        TUpFrame2(band);
        break;
    case MM_FRAME_MIRROR_EDGE:
        TUpFrame3(band);
        break;
    case MM_FRAME_COLOR:
        TUpFrame4(band, nColor);
        break;
    default:
        return band.nFrameMode > MM_FRAME_COLOR ? MM_BAD_ARGUMENT : MM_SUCCESS;
    }
    return MM_SUCCESS;
}

void CImageObj::TUpFrame1(T_ImageLrg_tag band)
{
    PaintFromImage(FramedBand(band), Replicated);
}

void CImageObj::TUpFrame2(T_ImageLrg_tag band)
{
    PaintFromImage(FramedBand(band), Mirrored);
}

void CImageObj::TUpFrame3(T_ImageLrg_tag band)
{
    PaintFromImage(FramedBand(band), MirroredWithEdge);
}

void CImageObj::TUpFrame4(T_ImageLrg_tag band, int nColor)
{
    const FramedBand framed(band);
    const auto fill = [&](int k, int nFrom, int nTo) {
        for (int x = nFrom; x < nTo; ++x)
            PutColor(framed.Pixel(x, k), band.nPixelBytes, nColor);
    };
    const int nEnd = framed.Width() + framed.Frame();
    for (int k = framed.FirstSideLine(); k <= framed.LastLine(); ++k) {
        fill(k, -framed.Frame(), 0);
        fill(k, framed.Width(), nEnd);
    }
    for (int j = 1; j <= framed.LinesBeyond(); ++j) {
        if (framed.StartsAtTop())
            fill(-j, -framed.Frame(), nEnd);
        if (framed.EndsAtBottom())
            fill(framed.LastLine() + j, -framed.Frame(), nEnd);
    }
}

DWORD CImageObj::SetFrameColorForUnit(int nMode, int nExtra)
{
    constexpr SourceIndex kSources[] = {Replicated, Mirrored, MirroredWithEdge};
    if (nMode < MM_FRAME_REPLICATE || nMode > MM_FRAME_MIRROR_EDGE)
        return MM_SUCCESS;
    const T_ImageLrg_tag& band = m_ImgInfo;
    const int nHighest = -FrameLinesAbove(band);
    const int nLowest = band.nBandBottom - band.nBandTop + FrameLines(band);
    const int nImageEnd = band.nHeight - 1 - band.nBandTop + (nMode == MM_FRAME_MIRROR ? nExtra : 0);
    const auto bufferLine = [&](int k) {
        return band.pImage + std::ptrdiff_t{k} * band.nLineBytes -
               std::ptrdiff_t{band.nMarginX} * band.nPixelBytes;
    };
    for (int k = nImageEnd + 1; k <= nLowest; ++k) {
        const int nInside = kSources[nMode - MM_FRAME_REPLICATE](k - nImageEnd, nImageEnd - nHighest + 1);
        std::memcpy(bufferLine(k), bufferLine(nImageEnd - nInside),
                    static_cast<std::size_t>(band.nLineBytes));
    }
    return MM_SUCCESS;
}
