#pragma once
// Converting lines of four-sample pixels from one sample width to another. Any thread.

/// Converts nPixels pixels; samples are 16-bit words in the machine's order, or bytes.
using LineFunction = void (*)(const unsigned char* pSrc, unsigned char* pDst, int nPixels);

/// The function that converts a line as wanted. Between equal widths the samples keep their values.
/// @param nSrcBytes, nDstBytes  bytes a sample, 1 or 2
/// @param bFullRange            between two widths: scale from full range to full range; else keep the
///                              values, those above 255 as 255
/// @param bTurned               the pixels of the line come out in reverse order
LineFunction ChooseLineFunction(int nSrcBytes, int nDstBytes, bool bFullRange, bool bTurned);

/// A sample of 16 bits in 8 bits: 0 to 65535 becomes 0 to 255, rounded to nearest.
constexpr unsigned char NarrowSample(unsigned nValue)
{
    return static_cast<unsigned char>((nValue + 128) / 257);
}
