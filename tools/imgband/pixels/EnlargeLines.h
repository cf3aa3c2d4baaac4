#pragma once
// Lines that are enlarged by a whole factor. Pixels have four samples, 8-bit or 16-bit ones.

/// Repeats every pixel nFactor times.
template <class Sample> void RepeatPixels(const Sample* pSrc, Sample* pDst, int nPixels, int nFactor);

/// Where a place lies between the centres of two neighbouring lines of the original, in units of half a line
/// of the enlarged image.
template <class Sample> struct LinePair
{
    const Sample* pUpper;
    const Sample* pLower;
    int nFromUpper; ///< 0 to 2 factor - 1; the centres are 2 factor apart
};

/// Interpolates a line of nPixels * nFactor pixels between two lines of nPixels pixels, and between the
/// centres of their pixels; exact until it is rounded once, to nearest, halves up.
template <class Sample>
void Interpolate(const LinePair<Sample>& lines, Sample* pDst, int nPixels, int nFactor);
