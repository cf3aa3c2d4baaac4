#pragma once
// Lines that are enlarged by a whole factor. Pixels have four samples of 8 or 16 bits. Any thread.

/// Repeats every one of nPixels pixels nFactor times.
template <class Sample> void RepeatPixels(const Sample* pSrc, Sample* pDst, int nPixels, int nFactor);

/// A place between the centres of two neighbouring lines of the original.
template <class Sample> struct LinePair
{
    const Sample* pUpper;
    const Sample* pLower;
    int nFromUpper; ///< 0 to 2 factor - 1, in halves of an enlarged line; the centres are 2 factor apart
};

/// Makes a line of nPixels * nFactor pixels by interpolating between two lines of nPixels pixels, and between
/// the centres of their pixels. Exact until it is rounded once, to nearest, halves up.
template <class Sample>
void Interpolate(const LinePair<Sample>& lines, Sample* pDst, int nPixels, int nFactor);
