#pragma once
// The bytes that mapping a band with its frame takes.
//
// Internal.

#include "MemoryManager/ImageRecord.h"

#include <algorithm>
#include <cstdint>

/// A run of whole lines in an image's bytes.
struct BandBytes
{
    std::int64_t nStart;
    std::int64_t nBytes;
    std::int64_t nFrameBytes; ///< from nStart to the band's own first pixel
};

/// The bytes of nLines lines and of nFsize frame lines above and below them. The first frame line starts
/// nFsize pixels to the left of the band, so that the frame's pixels beside the band are included.
///
/// @param nFirstPixel  position of the band's own first pixel
/// @return nStart is negative where the frame reaches ahead of the image's bytes
inline BandBytes BytesWithFrame(const T_ImageLrg_tag& info, std::int64_t nFirstPixel, std::int64_t nLines)
{
    const std::int64_t nFrame = std::max(info.nFsize, 0);
    const std::int64_t nFrameBytes = nFrame * (std::int64_t{info.nLineBytes} + info.nPixelBytes);
    return {nFirstPixel - nFrameBytes, (nLines + 2 * nFrame) * info.nLineBytes, nFrameBytes};
}
