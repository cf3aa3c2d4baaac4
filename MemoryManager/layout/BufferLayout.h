#pragma once
// The rules that turn size, margins, pixel size and alignment type into a buffer's layout.

#include "MemoryManager/ImageRecord.h"

#include <cstdint>
#include <limits>
#include <optional>

/// Bytes at the end of an aligned buffer that absorb the rounding of its first pixel's address.
inline constexpr std::int64_t kSpareBytes = 32;

/// Whether a size is one that 32 bits hold.
constexpr bool Fits(std::int64_t nSize)
{
    return nSize >= 0 && nSize <= std::numeric_limits<int>::max();
}

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

/// Bytes from the start of a buffer's first line to a pixel of an image line; both may lie in the margins.
/// Band mapping and dumps find pixels there, whatever the alignment type.
template <class Record>
constexpr std::int64_t PixelPosition(const Record& info, std::int64_t nLine, std::int64_t nPixel)
{
    return (info.nMarginY + nLine) * info.nLineBytes + (info.nMarginX + nPixel) * info.nPixelBytes;
}

/// Whether a record's image, margins, lines and nBufSize fit each other; then none of its positions
/// overflows.
template <class Record> constexpr bool IsSoundBuffer(const Record& info)
{
    if (info.nPixelBytes < 1 || info.nMarginX < 0 || info.nMarginY < 0 || info.nWidth < 0 || info.nHeight < 0)
        return false;
    return info.nAllocWidth >= info.nWidth + 2 * std::int64_t{info.nMarginX} &&
           info.nAllocHeight >= info.nHeight + 2 * std::int64_t{info.nMarginY} &&
           info.nLineBytes == std::int64_t{info.nPixelBytes} * info.nAllocWidth &&
           info.nBufSize >= std::int64_t{info.nLineBytes} * info.nAllocHeight;
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

/// Sets the band height of an image that gets bands of nBand lines, frame included, but no less than
/// nSmallest; 0 and less: the whole image, which costs nWhole bytes. Returns the bytes that nCount such bands
/// are charged.
int SizeBand(T_ImageLrg_tag& info, int nWhole, int nBand, int nSmallest, int nCount);

/// Bytes charged for nCount band buffers of nLines lines, held within 32 bits.
int BandCharge(int nLineBytes, int nLines, int nCount);
