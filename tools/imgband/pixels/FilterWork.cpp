// Neighbourhood filters: the frame is painted, then every thread filters its lines strip by strip.

#include "pixels/FilterWork.h"

#include "pixels/BandLines.h"
#include "pixels/FilterStrips.h"
#include "pixels/FrameFill.h"

#include <algorithm>
#include <cmath>

namespace {

/// Weights of the distances 0 to nRadius; all 2 nRadius + 1 of a line add up to 1.
std::vector<double> GaussWeights(int nRadius)
{
    const double fSigma = nRadius / 2.0;
    std::vector<double> weights;
    double fTotal = 0;
    for (int d = 0; d <= nRadius; ++d) {
        weights.push_back(std::exp(-(d * d) / (2 * fSigma * fSigma)));
        fTotal += d == 0 ? weights[0] : 2 * weights.back();
    }
    for (double& fWeight : weights)
        fWeight /= fTotal;
    return weights;
}

template <class Sample>
void RunFilter(const FilterStrip<Sample>& strip, const FilterSettings& settings, const double* pWeights)
{
    switch (settings.eOp) {
    case FilterOp::Box:
        BoxStrip(strip, settings.nRadius);
        break;
    case FilterOp::Gauss:
        GaussStrip(strip, pWeights, settings.nRadius);
        break;
    case FilterOp::Sharpen:
        SharpenStrip(strip, pWeights, settings.nRadius, settings.fAmount);
        break;
    }
}

template <class Sample>
void FilterBand(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const FilterSettings& settings,
                const double* pWeights, const Workers& workers)
{
    workers.ForLines(dst.nBandLines, [&](int nFirst, int nEnd) {
        for (int x = 0; x < dst.nWidth; x += kStripPixels)
            RunFilter<Sample>({SampleAddress<Sample>(src, x, nFirst), SampleStep<Sample>(src),
                               SampleAddress<Sample>(dst, x, nFirst), SampleStep<Sample>(dst),
                               std::min(kStripPixels, dst.nWidth - x), nEnd - nFirst},
                              settings, pWeights);
    });
}

} // namespace

FilterWork::FilterWork(const FilterSettings& settings) : m_settings(settings)
{
    if (settings.eOp != FilterOp::Box)
        m_weights = GaussWeights(settings.nRadius);
}

void FilterWork::Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const
{
    PaintFrame(src, m_settings.frame, workers);
    if (src.nSampleBytes == 1)
        FilterBand<std::uint8_t>(src, dst, m_settings, m_weights.data(), workers);
    else
        FilterBand<std::uint16_t>(src, dst, m_settings, m_weights.data(), workers);
}
