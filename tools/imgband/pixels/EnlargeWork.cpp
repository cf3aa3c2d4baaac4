// Enlargement by a whole factor, line by line.
//
// Source lines are counted from the end of the source that the destination begins with.

#include "pixels/EnlargeWork.h"

#include "pixels/BandLines.h"
#include "pixels/EnlargeLines.h"

#include <algorithm>
#include <cstdint>

namespace {

/// Where an enlarged line lies between the centres of two neighbouring source lines. The upper one may lie
/// above the image.
struct Place
{
    int nUpper;     ///< -1 to the source's last line
    int nFromUpper; ///< in halves of an enlarged line, 0 to 2 factor - 1
};

Place PlaceOf(int nLine, int nFactor)
{
    // A unit is half an enlarged line, so half a source line has nFactor units. Counting from a centre above
    // the image keeps them positive.
    const std::int64_t nUnits = 2 * std::int64_t{nLine} + 1 + nFactor;
    return {static_cast<int>(nUnits / (2 * nFactor)) - 1, static_cast<int>(nUnits % (2 * nFactor))};
}

} // namespace

EnlargeWork::EnlargeWork(const EnlargeSettings& settings, ImageSize source, bool bReversed)
    : m_settings(settings), m_source(source), m_bReversed(bReversed)
{
}

LineRange EnlargeWork::SourceLines(LineRange dst) const
{
    LineRange lines = {dst.nFirst / m_settings.nFactor, dst.nLast / m_settings.nFactor};
    if (m_settings.eOp == EnlargeOp::Linear)
        lines = {std::max(PlaceOf(dst.nFirst, m_settings.nFactor).nUpper, 0),
                 std::min(PlaceOf(dst.nLast, m_settings.nFactor).nUpper + 1, m_source.nHeight - 1)};
    return m_bReversed ? lines.Reversed(m_source.nHeight) : lines;
}

void EnlargeWork::Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const
{
    workers.ForLines(dst.nBandLines, [&](int nFirst, int nEnd) {
        if (src.nSampleBytes == 1)
            RunLines<std::uint8_t>(src, dst, nFirst, nEnd);
        else
            RunLines<std::uint16_t>(src, dst, nFirst, nEnd);
    });
}

template <class Sample>
void EnlargeWork::RunLines(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, int nFirst, int nEnd) const
{
    const auto fnLine = [&](int nLine) { return SampleAddress<Sample>(src, 0, BandLine(src, nLine)); };
    for (int k = nFirst; k < nEnd; ++k) {
        Sample* pDst = SampleAddress<Sample>(dst, 0, k);
        const int nLine = dst.nBandTop + k;
        if (m_settings.eOp == EnlargeOp::Linear) {
            const Place place = PlaceOf(nLine, m_settings.nFactor);
            const int nUpper = std::max(place.nUpper, 0);
            const int nLower = std::min(place.nUpper + 1, m_source.nHeight - 1);
            Interpolate<Sample>({fnLine(nUpper), fnLine(nLower), place.nFromUpper}, pDst, m_source.nWidth,
                                m_settings.nFactor);
        } else if (k > nFirst && nLine % m_settings.nFactor != 0) {
            std::copy_n(pDst - SampleStep<Sample>(dst), std::ptrdiff_t{dst.nWidth} * kSamples, pDst);
        } else {
            RepeatPixels(fnLine(nLine / m_settings.nFactor), pDst, m_source.nWidth, m_settings.nFactor);
        }
    }
}

int EnlargeWork::BandLine(const T_ImageLrg_tag& src, int nLine) const
{
    return (m_bReversed ? m_source.nHeight - 1 - nLine : nLine) - src.nBandTop;
}
