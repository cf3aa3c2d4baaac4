#pragma once
// The header of a bitmap file.

#include "pictures/Formats.h"

#include <cstdint>
#include <span>
#include <string>

/// What a picture file holds and where.
struct PictureFacts
{
    Format eFormat;
    ImageSize size;
    bool bBottomUp;          ///< the last line is stored first
    std::int64_t nOffset;    ///< bytes ahead of the first stored line
    std::int64_t nFileBytes; ///< bytes of the whole file
};

/// Bytes of a file's beginning that ParseBitmapHeader wants to see.
inline constexpr std::size_t kHeaderPeek = 54;

/// Whether these are the first bytes of a bitmap.
bool HasBitmapSignature(std::span<const unsigned char> head);

/// Reads and checks a header, against the file's size too.
/// @param szPath      for messages
/// @param head        the file's first kHeaderPeek bytes, or all of a shorter file
/// @param nFileBytes  of the whole file
///
/// Accepts uncompressed 24- and 32-bit bitmaps with an information header of 40 bytes or one of its longer
/// successors. Throws Failure (BadInput) for everything else, before anything is allocated.
PictureFacts ParseBitmapHeader(const std::string& szPath, std::span<const unsigned char> head,
                               std::int64_t nFileBytes);
