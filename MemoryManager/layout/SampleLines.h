#pragma once
// Copies lines of pixels from one sample layout to another. Everything is addresses and counts: nothing here
// knows what an image is.
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

/// The rule for three or four samples of one size, which keep place and value. A fourth sample that the
/// source lacks becomes all ones, and so does every fourth sample when bOpaque is set. Pixels are not touched
/// beyond their own bytes: a destination that is too short for four samples gets the first ones, and bytes
/// that a short source lacks count as 0.
///
/// @param nSrcBytes, nDstBytes  bytes per pixel
/// @param nSampleBytes          1 or 2
PixelRule KeepSamples(int nSrcBytes, int nDstBytes, int nSampleBytes, bool bOpaque);

/// The rule that makes 16-bit samples with the same values of three or four 8-bit samples. The destination
/// has eight bytes a pixel; a fourth sample that the source lacks becomes 255.
PixelRule WidenSamples(int nSamples);

/// One way to convert a line.
struct LineKernel
{
    const char* pszName;
    bool (*pRunsHere)(); ///< whether this processor has the instructions
    /// Converts nPixels pixels. Reads and writes no byte behind the last of them.
    void (*pRun)(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc, std::size_t nPixels);
};

/// All kernels for a rule, the fastest first; the last one, "portable", runs everywhere. All write the same
/// bytes.
std::span<const LineKernel> KernelsFor(const PixelRule& rule);

/// The fastest of them that runs on this processor.
const LineKernel& BestKernelFor(const PixelRule& rule);
