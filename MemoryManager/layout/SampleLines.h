#pragma once
// Lines of pixels copied from one sample layout into another. Addresses and counts only: nothing here knows
// what an image is.
//
// Internal. Any thread may call anything; source and destination do not overlap.

#include <cstddef>
#include <cstdint>
#include <span>

/// How one pixel becomes another. A pixel is taken as one little-endian number of up to eight bytes:
/// destination = (source & nTaken) | nFixed, with the source's bytes spread to 16-bit samples first when
/// bWiden is set.
struct PixelRule
{
    int nSrcBytes;        ///< from one source pixel to the next
    int nDstBytes;        ///< from one destination pixel to the next
    int nWritten;         ///< bytes of a destination pixel that are written, 1 to 8; the others stay
    std::uint64_t nTaken; ///< bits that come from the source
    std::uint64_t nFixed; ///< bits that are always set
    bool bWiden;          ///< each source byte becomes a 16-bit sample of the same value
};

/// Three or four samples of one size keep place and value. A fourth sample that the source pixel lacks is
/// all ones, as is every fourth sample when bOpaque is set. Neither pixel is touched beyond its own bytes: a
/// destination too short for four samples gets the leading ones, what a source too short lacks is 0.
///
/// @param nSampleBytes  1 or 2
PixelRule KeepSamples(int nSrcBytes, int nDstBytes, int nSampleBytes, bool bOpaque);

/// Three or four 8-bit samples become 16-bit samples with the same values in an eight-byte pixel; a fourth
/// sample that is lacking becomes 255.
PixelRule WidenSamples(int nSamples);

/// One way to convert a line.
struct LineKernel
{
    const char* pszName;
    bool (*pRunsHere)(); ///< whether this processor has the instructions
    /// Writes nPixels pixels at pDst and nothing behind them, and reads nothing behind the source's.
    void (*pRun)(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc, std::size_t nPixels);
};

/// All kernels that can follow the rule, best first; the last one, "portable", runs everywhere. They write
/// the same bytes.
std::span<const LineKernel> KernelsFor(const PixelRule& rule);

/// The best of them that runs here.
const LineKernel& BestKernelFor(const PixelRule& rule);
