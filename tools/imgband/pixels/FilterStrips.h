#pragma once
// The filters on one strip of a band: a part of its width, so that what is carried from line to line stays in
// the processor's nearest cache and on the stack.
//
// What comes out of a pixel does not depend on the strip that it lies in.

#include "pixels/BandLines.h"
#include "values/FilterSettings.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

/// Most pixels of a strip's lines.
inline constexpr int kStripPixels = 256;

/// Most sums that one line of a strip needs: over the columns, and of the columns around its pixels.
inline constexpr int kMostColumns = (kStripPixels + 2 * kLargestRadius) * kSamples;
inline constexpr int kMostSums = kStripPixels * kSamples;

/// Pixels have four samples, 8-bit or 16-bit ones.
template <class Sample> struct FilterStrip
{
    const Sample* pSrc;      ///< first pixel; radius lines and pixels around the strip can be read
    std::ptrdiff_t nSrcStep; ///< samples from one line to the next
    Sample* pDst;
    std::ptrdiff_t nDstStep;
    int nPixels; ///< of a line, at most kStripPixels
    int nLines;
};

/// Mean of the (2 nRadius + 1)^2 pixels around each, in integers, rounded to nearest.
template <class Sample> void BoxStrip(const FilterStrip<Sample>& strip, int nRadius);

/// Weighted mean v of the pixels around each, first over the column and then over the line, not rounded in
/// between; then floor(c + nAmount * (c - v) + 0.5) with the pixel's own value c for sharpening, and
/// floor(v + 0.5) without; clamped to the samples' range.
///
/// @param pWeights  of the distances 0 to nRadius; a sum begins with the centre and goes on with one product
///                  for the two values of each distance, so that mirrored lines give mirrored results
template <class Sample>
void GaussStrip(const FilterStrip<Sample>& strip, const double* pWeights, int nRadius);
template <class Sample>
void SharpenStrip(const FilterStrip<Sample>& strip, const double* pWeights, int nRadius, double nAmount);

/// Takes the fourth sample of every pixel of a line from the source.
template <class Sample> void CarryFourthSample(const Sample* pSrc, Sample* pDst, int nPixels)
{
    using Pixel = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
    constexpr auto kFourth =
        std::bit_cast<Pixel>(std::array<Sample, kSamples>{0, 0, 0, std::numeric_limits<Sample>::max()});
    for (std::ptrdiff_t i = 0; i < nPixels; ++i) {
        Pixel nSrc, nDst;
        std::memcpy(&nSrc, pSrc + i * kSamples, sizeof nSrc);
        std::memcpy(&nDst, pDst + i * kSamples, sizeof nDst);
        nDst = (nDst & ~kFourth) | (nSrc & kFourth);
        std::memcpy(pDst + i * kSamples, &nDst, sizeof nDst);
    }
}
