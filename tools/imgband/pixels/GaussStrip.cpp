// The Gaussian filter and sharpening: sums of doubles in one order, rounded once.
//
// The build forbids contracting products and sums, so that every compiler gives the same bytes.

#include "pixels/FilterStrips.h"

#include <cstdint>
#include <limits>

namespace {

struct Weights
{
    const double* pWeights;
    int nRadius;
};

/// Weighted sums of each column: of a line and those up to nRadius lines above and below it. The two samples
/// of one distance add up exactly.
template <class Sample>
void WeighColumns(const Sample* pLine, std::ptrdiff_t nStep, Weights weights, double* pColumns, int nColumns)
{
    for (int i = 0; i < nColumns; ++i)
        pColumns[i] = weights.pWeights[0] * pLine[i];
    for (int d = 1; d <= weights.nRadius; ++d) {
        const double fWeight = weights.pWeights[d];
        const Sample* pAbove = pLine - d * nStep;
        const Sample* pBelow = pLine + d * nStep;
        for (int i = 0; i < nColumns; ++i)
            pColumns[i] += fWeight * (pAbove[i] + pBelow[i]);
    }
}

/// Weighted sums of neighbouring columns; the centre of the first one is nRadius pixels behind pColumns.
void WeighAcross(const double* pColumns, Weights weights, double* pSums, int nSums)
{
    const double* pCentre = pColumns + weights.nRadius * kSamples;
    for (int i = 0; i < nSums; ++i)
        pSums[i] = weights.pWeights[0] * pCentre[i];
    for (int d = 1; d <= weights.nRadius; ++d) {
        const double fWeight = weights.pWeights[d];
        const double* pLeft = pCentre - d * kSamples;
        const double* pRight = pCentre + d * kSamples;
        for (int i = 0; i < nSums; ++i)
            pSums[i] += fWeight * (pLeft[i] + pRight[i]);
    }
}

/// floor(fValue + 0.5) clamped to the samples' range. The value is at least 0 when it is truncated, so that
/// this is its floor.
template <class Sample> Sample Rounded(double fValue)
{
    constexpr double kMost = std::numeric_limits<Sample>::max();
    const double fNotBelow = fValue > 0 ? fValue : 0;
    const double fInside = fNotBelow < kMost ? fNotBelow : kMost;
    return static_cast<Sample>(static_cast<int>(fInside + 0.5));
}

/// Calls fnFinish(centre, sums, destination, samples) for every line.
template <class Sample, class Finish>
void Gauss(const FilterStrip<Sample>& strip, Weights weights, Finish fnFinish)
{
    const int nSums = strip.nPixels * kSamples;
    const int nColumns = nSums + 2 * weights.nRadius * kSamples;
    double columns[kMostColumns];
    double sums[kMostSums];
    for (std::ptrdiff_t k = 0; k < strip.nLines; ++k) {
        const Sample* pSrc = strip.pSrc + k * strip.nSrcStep;
        Sample* pDst = strip.pDst + k * strip.nDstStep;
        WeighColumns(pSrc - weights.nRadius * kSamples, strip.nSrcStep, weights, columns, nColumns);
        WeighAcross(columns, weights, sums, nSums);
        fnFinish(pSrc, sums, pDst, nSums);
        CarryFourthSample(pSrc, pDst, strip.nPixels);
    }
}

} // namespace

template <class Sample> void GaussStrip(const FilterStrip<Sample>& strip, const double* pWeights, int nRadius)
{
    Gauss(strip, {pWeights, nRadius}, [](const Sample*, const double* pSums, Sample* pDst, int nSums) {
        for (int i = 0; i < nSums; ++i)
            pDst[i] = Rounded<Sample>(pSums[i]);
    });
}

template <class Sample>
void SharpenStrip(const FilterStrip<Sample>& strip, const double* pWeights, int nRadius, double fAmount)
{
    Gauss(strip, {pWeights, nRadius},
          [fAmount](const Sample* pSrc, const double* pSums, Sample* pDst, int nSums) {
              for (int i = 0; i < nSums; ++i)
                  pDst[i] = Rounded<Sample>(pSrc[i] + fAmount * (pSrc[i] - pSums[i]));
          });
}

template void GaussStrip(const FilterStrip<std::uint8_t>&, const double*, int);
template void GaussStrip(const FilterStrip<std::uint16_t>&, const double*, int);
template void SharpenStrip(const FilterStrip<std::uint8_t>&, const double*, int, double);
template void SharpenStrip(const FilterStrip<std::uint16_t>&, const double*, int, double);
