// The box filter: sums of columns that slide down the strip, and sums of neighbouring columns by doubling.

#include "pixels/FilterStrips.h"
#include "pixels/Reciprocal.h"

#include <cstdint>
#include <limits>

namespace {

constexpr int kLargestShortRadius = 7; ///< up to here, sums of 8-bit samples fit 16 bits

constexpr std::uint32_t Area(int nRadius)
{
    return static_cast<std::uint32_t>((2 * nRadius + 1) * (2 * nRadius + 1));
}

/// Whether every sum of a box, plus half the area for rounding, is divided exactly, for all radii up to
/// nLastRadius.
template <class Sample, class Sum> constexpr bool DividesExactly(int nLastRadius)
{
    for (int nRadius = 1; nRadius <= nLastRadius; ++nRadius) {
        const std::uint64_t nArea = Area(nRadius);
        const std::uint64_t nLargest = nArea * std::numeric_limits<Sample>::max() + nArea / 2;
        if (!Reciprocal<Sum>(Area(nRadius)).IsExact(nLargest))
            return false;
    }
    return true;
}
static_assert(DividesExactly<std::uint8_t, std::uint16_t>(kLargestShortRadius));
static_assert(DividesExactly<std::uint8_t, std::uint32_t>(kLargestRadius));
static_assert(DividesExactly<std::uint16_t, std::uint32_t>(kLargestRadius));

template <class Sample, class Column> void AddLine(const Sample* pLine, Column* pColumns, int nColumns)
{
    for (int i = 0; i < nColumns; ++i)
        pColumns[i] = static_cast<Column>(pColumns[i] + pLine[i]);
}

template <class Sample, class Column>
void SlideDown(const Sample* pLeft, const Sample* pNew, Column* pColumns, int nColumns)
{
    for (int i = 0; i < nColumns; ++i)
        pColumns[i] = static_cast<Column>(pColumns[i] + pNew[i] - pLeft[i]);
}

/// Doubles the spans: pSpans holds sums of nSpan / 2 neighbouring columns, and then sums of nSpan columns,
/// and so on. Each of pSums takes in the spans whose lengths are the binary digits of nSide, one behind the
/// other.
///
/// The distance between two spans is a template argument, so that the compiler can make vector code of the
/// loop over one array.
/// @param nTaken  columns that the sums have taken in already
template <int nSpan, class Sum> void AddSpans(Sum* pSpans, Sum* pSums, int nSums, int nSide, int nTaken)
{
    const int nSpans = nSums + (nSide - nSpan) * kSamples;
    for (int i = 0; i < nSpans; ++i)
        pSpans[i] = static_cast<Sum>(pSpans[i] + pSpans[i + nSpan / 2 * kSamples]);
    if (nSide & nSpan) {
        for (int i = 0; i < nSums; ++i)
            pSums[i] = static_cast<Sum>(pSums[i] + pSpans[i + nTaken * kSamples]);
        nTaken += nSpan;
    }
    if constexpr (nSpan <= kLargestRadius) {
        if (2 * nSpan <= nSide)
            AddSpans<2 * nSpan>(pSpans, pSums, nSums, nSide, nTaken);
    }
}

/// Sums of nSide columns each. Because nSide is odd, each begins with a single column.
template <class Column, class Sum> void AddAcross(const Column* pColumns, Sum* pSums, int nSums, int nSide)
{
    Sum spans[kMostColumns];
    for (int i = 0; i < nSums; ++i)
        pSums[i] = pColumns[i];
    for (int i = 0, nColumns = nSums + (nSide - 1) * kSamples; i < nColumns; ++i)
        spans[i] = pColumns[i];
    AddSpans<2>(spans, pSums, nSums, nSide, 1);
}

template <class Sum, class Sample>
void DivideLine(const Sum* pSums, Sample* pDst, int nSums, Reciprocal<Sum> area, Sum nHalf)
{
    for (int i = 0; i < nSums; ++i)
        pDst[i] = static_cast<Sample>(area.Divide(static_cast<Sum>(pSums[i] + nHalf)));
}

template <class Column, class Sum, class Sample> void Box(const FilterStrip<Sample>& strip, int nRadius)
{
    const int nSide = 2 * nRadius + 1;
    const int nSums = strip.nPixels * kSamples;
    const int nColumns = nSums + (nSide - 1) * kSamples;
    const Reciprocal<Sum> area(Area(nRadius));
    const Sum nHalf = static_cast<Sum>(Area(nRadius) / 2); // the area is odd: no sum lies half way
    Column columns[kMostColumns] = {};
    Sum sums[kMostSums];

    const Sample* pTop = strip.pSrc - nRadius * (strip.nSrcStep + kSamples);
    for (int i = 0; i < nSide; ++i)
        AddLine(pTop + i * strip.nSrcStep, columns, nColumns);
    for (std::ptrdiff_t k = 0; k < strip.nLines; ++k, pTop += strip.nSrcStep) {
        if (k > 0)
            SlideDown(pTop - strip.nSrcStep, pTop + (nSide - 1) * strip.nSrcStep, columns, nColumns);
        Sample* pDst = strip.pDst + k * strip.nDstStep;
        AddAcross(columns, sums, nSums, nSide);
        DivideLine(sums, pDst, nSums, area, nHalf);
        CarryFourthSample(strip.pSrc + k * strip.nSrcStep, pDst, strip.nPixels);
    }
}

} // namespace

template <> void BoxStrip(const FilterStrip<std::uint8_t>& strip, int nRadius)
{
    if (nRadius <= kLargestShortRadius)
        Box<std::uint16_t, std::uint16_t>(strip, nRadius);
    else
        Box<std::uint16_t, std::uint32_t>(strip, nRadius);
}

template <> void BoxStrip(const FilterStrip<std::uint16_t>& strip, int nRadius)
{
    Box<std::uint32_t, std::uint32_t>(strip, nRadius);
}
