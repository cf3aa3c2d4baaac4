// The line functions of enlargement.
//
// Linear interpolation counts in units of half an enlarged pixel. Neighbouring centres are 2 factor units
// apart, so weights that are numbers of units make a value between two lines 2 factor times too large, and a
// value between two pixels of them (2 factor)^2 times. From one enlarged pixel to the next, which is two
// units, the value changes by a constant.

#include "pixels/EnlargeLines.h"

#include "pixels/BandLines.h"
#include "pixels/Reciprocal.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

constexpr int kBlockPixels = 256; ///< pixels whose values between the lines are held at a time

/// Plain division, for sums beyond 32 bits.
struct Quotient
{
    std::uint64_t nDivisor;

    std::uint64_t Divide(std::uint64_t nNumber) const { return nNumber / nDivisor; }
};

/// Values between the two lines for the pixels nFirst to nFirst + nCount - 1. Pixels beyond the edges take
/// the edge's value.
template <class Sample, class Sum>
void BlendLines(const LinePair<Sample>& lines, int nFirst, int nCount, int nPixels, int nFactor, Sum* pBlend)
{
    const Sum nLower = static_cast<Sum>(lines.nFromUpper);
    const Sum nUpper = static_cast<Sum>(2 * nFactor) - nLower;
    const auto fnBlend = [&](std::ptrdiff_t nFrom, std::ptrdiff_t nTo) {
        const std::ptrdiff_t nOffset = std::ptrdiff_t{nFirst} * kSamples;
        for (std::ptrdiff_t i = nFrom * kSamples; i < nTo * kSamples; ++i)
            pBlend[i - nOffset] = nUpper * lines.pUpper[i] + nLower * lines.pLower[i];
    };
    fnBlend(std::max(nFirst, 0), std::min(nFirst + nCount, nPixels));
    if (nFirst < 0)
        std::copy_n(pBlend + kSamples, kSamples, pBlend);
    if (nFirst + nCount > nPixels)
        std::copy_n(pBlend + (nCount - 2) * kSamples, kSamples, pBlend + (nCount - 1) * kSamples);
}

/// Writes the enlarged pixels nFrom to nTo - 1 of the nFactor pixels between two centres, and returns the
/// address behind them. Where values fall, the steps are negative: unsigned sums wrap and come out right.
template <class Sample, class Sum, class Divider>
Sample* WriteBetween(const Sum* pBlend, int nFrom, int nTo, int nFactor, Divider divider, Sample* pDst)
{
    const Sum nSpan = static_cast<Sum>(2 * nFactor);
    const Sum nHalf = nSpan * nSpan / 2;
    const Sum nStart = static_cast<Sum>(2 * nFrom + 1 - nFactor % 2);
    Sum values[kSamples], steps[kSamples];
    for (int s = 0; s < kSamples; ++s) {
        const Sum nRise = pBlend[kSamples + s] - pBlend[s];
        values[s] = nSpan * pBlend[s] + nStart * nRise + nHalf;
        steps[s] = 2 * nRise;
    }
    for (int i = nFrom; i < nTo; ++i, pDst += kSamples)
        for (int s = 0; s < kSamples; ++s) {
            pDst[s] = static_cast<Sample>(divider.Divide(values[s]));
            values[s] += steps[s];
        }
    return pDst;
}

/// Interpolates the line pair by pair: pair i lies between the centres of the pixels i and i + 1. The first
/// and the last pair reach over the edges.
template <class Sum, class Sample, class Divider>
void InterpolateWith(Divider divider, const LinePair<Sample>& lines, Sample* pDst, int nPixels, int nFactor)
{
    Sum blended[(kBlockPixels + 1) * kSamples];
    const int nHalf = nFactor / 2; // enlarged pixels from an edge to the first centre
    for (int nFirst = -1; nFirst < nPixels; nFirst += kBlockPixels) {
        const int nPairs = std::min(kBlockPixels, nPixels - nFirst);
        BlendLines(lines, nFirst, nPairs + 1, nPixels, nFactor, blended);
        for (int i = 0; i < nPairs; ++i) {
            const int nFrom = nFirst + i < 0 ? nFactor - nHalf : 0;
            const int nTo = nFirst + i == nPixels - 1 ? nFactor - nHalf : nFactor;
            pDst = WriteBetween(blended + i * kSamples, nFrom, nTo, nFactor, divider, pDst);
        }
    }
}

} // namespace

template <class Sample> void RepeatPixels(const Sample* pSrc, Sample* pDst, int nPixels, int nFactor)
{
    for (int i = 0; i < nPixels; ++i, pSrc += kSamples)
        for (int n = 0; n < nFactor; ++n, pDst += kSamples)
            std::copy_n(pSrc, kSamples, pDst);
}

template <class Sample>
void Interpolate(const LinePair<Sample>& lines, Sample* pDst, int nPixels, int nFactor)
{
    const std::uint64_t nDivisor =
        std::uint64_t{4} * static_cast<unsigned>(nFactor) * static_cast<unsigned>(nFactor);
    const std::uint64_t nLargest = nDivisor * std::numeric_limits<Sample>::max() + nDivisor / 2;
    if (nLargest <= UINT32_MAX) {
        const Reciprocal<std::uint32_t> reciprocal(static_cast<std::uint32_t>(nDivisor));
        if (reciprocal.IsExact(nLargest))
            return InterpolateWith<std::uint32_t>(reciprocal, lines, pDst, nPixels, nFactor);
    }
    InterpolateWith<std::uint64_t>(Quotient{nDivisor}, lines, pDst, nPixels, nFactor);
}

template void RepeatPixels(const std::uint8_t*, std::uint8_t*, int, int);
template void RepeatPixels(const std::uint16_t*, std::uint16_t*, int, int);
template void Interpolate(const LinePair<std::uint8_t>&, std::uint8_t*, int, int);
template void Interpolate(const LinePair<std::uint16_t>&, std::uint16_t*, int, int);
