#pragma once
// Converting lines of four-sample pixels from one sample width to another.

/// Converts nPixels pixels; samples are 16-bit words in the machine's order, or bytes.
using LineFunction = void (*)(const unsigned char* pSrc, unsigned char* pDst, int nPixels);

/// @param nSrcBytes, nDstBytes  bytes a sample, 1 or 2
/// @param bFullRange            between two widths: scale from full range to full range, else keep the
///                              values, from 2 to 1 as far as 255
/// @param bTurned               the pixels of the line come out in reverse order
LineFunction ChooseLineFunction(int nSrcBytes, int nDstBytes, bool bFullRange, bool bTurned);

/// 0 .. 65535 to 0 .. 255, rounded.
constexpr unsigned char NarrowSample(unsigned nValue)
{
    return static_cast<unsigned char>((nValue + 128) / 257);
}
