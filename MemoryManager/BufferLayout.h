#pragma once
// The rules that turn size, margins, pixel size and alignment type into a buffer's layout.

#include <cstdint>
#include <optional>

/// Bytes per sample, samples per pixel of a format code.
constexpr int SampleBytesOf(int nFormat)
{
    return nFormat & 0xF;
}
constexpr int SamplesOf(int nFormat)
{
    return (nFormat >> 8) & 0xF;
}
constexpr int AlignTypeOf(int nAlign)
{
    return nAlign & 0xF;
}

/// Bytes of a bitmap's line with the padding that brings it to a multiple of 4.
constexpr std::int64_t PaddedLine(std::int64_t nBytes)
{
    return (nBytes + 3) / 4 * 4;
}

/// What a layout is made from. Width and height without margins.
struct LayoutRequest
{
    int nWidth;
    int nHeight;
    int nMarginX;
    int nMarginY;
    int nPixelBytes;
    int nSamples;
    int nSampleBytes; ///< for the rounding of aligned lines only
    int nAlignType;
};

/// A buffer's layout; all sizes fit 32 bits.
struct BufferLayout
{
    int nBufSize;
    int nLineBytes;
    int nAllocWidth;
    int nAllocHeight;
    int nLineSamples;
};

/// Whether buffers of this alignment type can be made of samples of this size.
bool IsAlignmentSupported(int nAlignType, int nSampleBytes);

/// The layout; none when the alignment is not supported, a size is negative or does not fit 32 bits.
std::optional<BufferLayout> LayOutBuffer(const LayoutRequest& request);

/// Bytes charged for nCount band buffers of nLines lines, held within 32 bits.
int BandCharge(int nLineBytes, int nLines, int nCount);
