#pragma once
// The filters on one strip of a band: a part of its width, so that what is carried from line to line stays in
// the processor's nearest cache and on the stack.
//
// What becomes of a pixel does not depend on the strip that it lies in.

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

/// Most columns that the sums of a strip's line are made from, and most sums of such a line.
inline constexpr int kMostColumns = (kStripPixels + 2 * kLargestRadius) * kSamples;
inline constexpr int kMostSums = kStripPixels * kSamples;

/// A strip of the source, and where its filtered pixels go. Pixels have four samples of 8 or 16 bits.
template <class Sample> struct FilterStrip
{
    const Sample* pSrc;      ///< first pixel; radius lines and pixels around the strip can be read
    std::ptrdiff_t nSrcStep; ///< samples from one line to the next
    Sample* pDst;
    std::ptrdiff_t nDstStep;
    int nPixels; ///< of a line, at most kStripPixels
    int nLines;
};

/// Every pixel becomes the mean of the (2 nRadius + 1)^2 pixels around it, in integers, rounded to nearest.
template <class Sample> void BoxStrip(const FilterStrip<Sample>& strip, int nRadius);

/// Every pixel becomes floor(v + 0.5), clamped to the samples' range, where v is the weighted mean of the
/// pixels around it: first over the column and then over the line, not rounded in between.
///
/// @param pWeights  of the distances 0 to nRadius. A sum begins with the centre and goes on with one
///                  product for the two values of each distance, so that mirrored lines give mirrored results
template <class Sample>
void GaussStrip(const FilterStrip<Sample>& strip, const double* pWeights, int nRadius);

/// The same with floor(c + fAmount * (c - v) + 0.5), where c is the pixel's own value.
template <class Sample>
void SharpenStrip(const FilterStrip<Sample>& strip, const double* pWeights, int nRadius, double fAmount);

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
