// Painting the frame of a band beyond the image's edges, and copying a band with its frame.
//
// Band line k is k lines below the band's first one.

#include "pixels/FrameFill.h"

#include "pixels/BandLines.h"
#include "pixels/BandWork.h"
#include "pixels/LineConversion.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

/// The lines of a band and its frame that lie inside the image, as band lines.
LineRange LinesInside(const T_ImageLrg_tag& band)
{
    return {std::max(-band.nFsize, -band.nBandTop),
            std::min(band.nBandLines + band.nFsize, band.nHeight - band.nBandTop) - 1};
}

/// How far inside the edge the pixel lies that a place nDistance beyond the edge takes; 0 is the edge itself.
int DistanceInside(int nMode, int nDistance)
{
    switch (nMode) {
    case MM_FRAME_MIRROR:
        return nDistance;
    case MM_FRAME_MIRROR_EDGE:
        return nDistance - 1;
    default:
        return 0; // MM_FRAME_REPLICATE
    }
}

/// Which of nCount lines or pixels a place beyond one of their ends takes.
int MirroredPlace(int nMode, int nPlace, int nCount)
{
    const int nDistance = nPlace < 0 ? -nPlace : nPlace - (nCount - 1);
    const int nInside = std::min(DistanceInside(nMode, nDistance), nCount - 1);
    return nPlace < 0 ? nInside : nCount - 1 - nInside;
}

/// A pixel of the colour, with room for the widest samples. The fourth sample is 0.
std::array<unsigned char, 8> ColorPixel(std::uint32_t nColor, int nSampleBytes)
{
    std::array<unsigned char, 8> pixel = {};
    for (int i = 0; i < 3 * nSampleBytes; ++i) // both bytes of a wide sample are the same: times 257
        pixel[static_cast<std::size_t>(i)] = static_cast<unsigned char>(nColor >> (8 * (i / nSampleBytes)));
    return pixel;
}

class FramePainter
{
public:
    FramePainter(const T_ImageLrg_tag& band, const FrameFill& fill)
        : m_band(band), m_nMode(fill.nMode), m_color(ColorPixel(fill.nColor, band.nSampleBytes))
    {
    }

    void PaintSides(int k) const
    {
        for (int j = 1; j <= m_band.nFsize; ++j) {
            PaintPixel(-j, k);
            PaintPixel(m_band.nWidth - 1 + j, k);
        }
    }

    /// Paints a whole line beyond the image, sides included, from a line inside whose sides are painted
    /// already.
    void PaintLine(int k) const
    {
        const int nFrame = m_band.nFsize;
        if (m_nMode == MM_FRAME_COLOR) {
            for (int x = -nFrame; x < m_band.nWidth + nFrame; ++x)
                PaintPixel(x, k);
            return;
        }
        const int nFrom = MirroredPlace(m_nMode, m_band.nBandTop + k, m_band.nHeight) - m_band.nBandTop;
        std::memcpy(PixelAddress(m_band, -nFrame, k), PixelAddress(m_band, -nFrame, nFrom),
                    (static_cast<std::size_t>(m_band.nWidth) + 2 * static_cast<std::size_t>(nFrame)) *
                        static_cast<std::size_t>(m_band.nPixelBytes));
    }

private:
    void PaintPixel(int x, int k) const
    {
        const unsigned char* pFrom = m_nMode == MM_FRAME_COLOR
                                         ? m_color.data()
                                         : PixelAddress(m_band, MirroredPlace(m_nMode, x, m_band.nWidth), k);
        std::memcpy(PixelAddress(m_band, x, k), pFrom, static_cast<std::size_t>(m_band.nPixelBytes));
    }

    const T_ImageLrg_tag& m_band;
    int m_nMode;
    std::array<unsigned char, 8> m_color;
};

} // namespace

void PaintFrame(const T_ImageLrg_tag& band, const FrameFill& fill, const Workers& workers)
{
    const FramePainter painter(band, fill);
    const LineRange inside = LinesInside(band);
    workers.ForLines(inside.Count(), [&](int nFirst, int nEnd) {
        for (int i = nFirst; i < nEnd; ++i)
            painter.PaintSides(inside.nFirst + i);
    });
    for (int k = -band.nFsize; k < inside.nFirst; ++k)
        painter.PaintLine(k);
    for (int k = inside.nLast + 1; k < band.nBandLines + band.nFsize; ++k)
        painter.PaintLine(k);
}

T_ImageLrg_tag CopyFramedBand(const T_ImageLrg_tag& band, const T_ImageLrg_tag& buffer, bool bMirrored,
                              const Workers& workers)
{
    T_ImageLrg_tag copy = buffer;
    copy.nHeight = band.nHeight;
    copy.nBandLines = band.nBandLines;
    copy.nBandTop = band.nBandTop;
    copy.nBandBottom = band.nBandBottom;
    copy.nFsize = band.nFsize;
    copy.nRatio = band.nRatio;
    copy.nFrameMode = band.nFrameMode;

    const LineFunction pCopy = ChooseLineFunction(band.nSampleBytes, band.nSampleBytes, false, bMirrored);
    const LineRange inside = LinesInside(band);
    workers.ForLines(inside.Count(), [&](int nFirst, int nEnd) {
        for (int k = inside.nFirst + nFirst; k < inside.nFirst + nEnd; ++k)
            pCopy(PixelAddress(band, 0, k), PixelAddress(copy, 0, k), band.nWidth);
    });
    return copy;
}
