// Painting of the frame round a mapped band where it lies beyond the image's edges.
// Band line k is k lines below the band's first; a frame-width line reaches nFsize pixels past both edges.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/UnitBands.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

/// Index inside the image of what the frame takes at a distance of 1 and more beyond an edge, of nCount
/// pixels or lines counted from that edge. Mirrors stop at the far edge.
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

/// The mapped band: addresses of pixels and the extent of its frame inside the image buffer.
class FramedBand
{
public:
    explicit FramedBand(const T_ImageLrg_tag& band) : m_band(band) {}

    /// A margin that was made narrower after the frame was set has room for less.
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
    int FirstSideLine() const { return std::max(-Frame(), -(m_band.nBandTop + m_band.nMarginY)); }

    /// Frame lines beyond the image's first or last line: the buffer has no more than its margin.
    int LinesBeyond() const { return std::min(Frame(), m_band.nMarginY); }

private:
    const T_ImageLrg_tag& m_band;
};

void CopyLine(const FramedBand& band, int nTo, int nFrom)
{
    std::memmove(band.FrameLine(nTo), band.FrameLine(nFrom), band.FrameLineBytes());
}

/// Sides first, so that the lines above and below take their corners along.
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

/// One pixel of the colour: its bytes in memory order; in wider pixels one 16-bit sample for each of them.
void PutColor(unsigned char* pPixel, int nPixelBytes, int nColor)
{
    const int nStep = nPixelBytes > kColorBytes ? 2 : 1;
    for (int i = 0; i < nPixelBytes; ++i) {
        const bool bFromColor = i % nStep == 0 && i / nStep < kColorBytes;
        pPixel[i] =
            static_cast<unsigned char>(bFromColor ? static_cast<unsigned>(nColor) >> (8 * (i / nStep)) : 0);
    }
}

} // namespace

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
