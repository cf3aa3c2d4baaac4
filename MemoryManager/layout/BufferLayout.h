#pragma once
// The rules that turn size, margins, pixel size and alignment type into a buffer's layout, and band heights
// into charges.
//
// Internal.

#include "MemoryManager/ImageRecord.h"

#include <cstdint>
#include <limits>
#include <optional>

/// Bytes at the end of an aligned buffer that make room for rounding up the address of its first pixel.
inline constexpr std::int64_t kSpareBytes = 32;

/// Whether a size is not negative and fits a signed 32-bit number.
constexpr bool Fits(std::int64_t nSize)
{
    return nSize >= 0 && nSize <= std::numeric_limits<int>::max();
}

/// Bytes per sample of a format code.
constexpr int SampleBytesOf(int nFormat)
{
    return nFormat & 0xF;
}

/// Samples per pixel of a format code.
constexpr int SamplesOf(int nFormat)
{
    return (nFormat >> 8) & 0xF;
}

/// The alignment type in an alignment argument.
constexpr int AlignTypeOf(int nAlign)
{
    return nAlign & 0xF;
}

/// Bytes of a bitmap's line with the padding that brings it to a multiple of 4.
constexpr std::int64_t PaddedLine(std::int64_t nBytes)
{
    return (nBytes + 3) / 4 * 4;
}

/// Bytes from the start of a buffer's first line to a pixel of an image line. Line and pixel may lie in the
/// margins. The rounding of aligned buffers is not counted: band mapping and dumps do not round.
template <class Record>
constexpr std::int64_t PixelPosition(const Record& info, std::int64_t nLine, std::int64_t nPixel)
{
    return (info.nMarginY + nLine) * info.nLineBytes + (info.nMarginX + nPixel) * info.nPixelBytes;
}

/// Whether a record's image and margins fit its lines, and its lines fit nBufSize. If so, no position in the
/// buffer overflows 32 bits.
template <class Record> constexpr bool IsSoundBuffer(const Record& info)
{
    if (info.nPixelBytes < 1 || info.nMarginX < 0 || info.nMarginY < 0 || info.nWidth < 0 || info.nHeight < 0)
        return false;
    return info.nAllocWidth >= info.nWidth + 2 * std::int64_t{info.nMarginX} &&
           info.nAllocHeight >= info.nHeight + 2 * std::int64_t{info.nMarginY} &&
           info.nLineBytes == std::int64_t{info.nPixelBytes} * info.nAllocWidth &&
           info.nBufSize >= std::int64_t{info.nLineBytes} * info.nAllocHeight;
}

/// What a layout is made from. Width and height do not include the margins.
struct LayoutRequest
{
    int nWidth;
    int nHeight;
    int nMarginX;
    int nMarginY;
    int nPixelBytes;
    int nSamples;
    int nSampleBytes; ///< read for MM_ALIGN_LINES only
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

/// Sets a record's band height and returns the bytes to charge for it.
/// @param nWhole     bytes of the whole image
/// @param nBand      lines of a band buffer, with the frame above and below; 0 or less: the whole image
/// @param nSmallest  lines of the smallest band buffer; the band height is not set lower either
/// @param nCount     band buffers; the whole image is charged once, whatever their number
int SizeBand(T_ImageLrg_tag& info, int nWhole, int nBand, int nSmallest, int nCount);

/// Bytes charged for nCount band buffers of nLines lines, at most INT32_MAX.
int BandCharge(int nLineBytes, int nLines, int nCount);
