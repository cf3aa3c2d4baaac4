#pragma once
// External images as unit bands read and write them: the bytes of their lines, and whether every byte has a
// 32-bit position.
//
// Several rules tell how long a stored line is. They agree for every image that CreateParam describes:
// - CreateParam fills nLineBytes in from the data type;
// - a source with four samples is read by nLineBytes, which the host may have changed, any other by its
//   format;
// - a destination is written by its format, whatever nLineBytes says;
// - whole images (CImageObjIO) and the band heights of unit objects pad lines of three bytes a pixel in
//   bitmaps only.
// For other descriptions each rule decides which bytes are read or written, so they cannot become one.
//
// Internal.

#include "MemoryManager/ExternalImage.h"

#include <cstdint>

/// Bytes of the largest sample that a unit band has.
inline constexpr int kLargestUnitSample = 2;

/// Bytes of one stored line of a source; 0 for a format that is not read.
///
/// Lines with four samples a pixel are as long as the description says. Lines with three 8-bit samples are
/// padded to a multiple of 4 bytes, whatever the file type; lines with three 16-bit samples are not padded.
std::int64_t SourceLineBytes(const T_ImgInf& in);

/// Bytes from one line to the next within a band that is written to a destination; 0 for a format that is not
/// written. Lines with three 8-bit samples are padded to a multiple of 4 bytes in bitmaps and in files that
/// are appended to.
std::int64_t DestinationLineBytes(const T_ImgInf& out);

/// Whether the image can be read or written: no size is negative, lines do not overlap, and every byte has a
/// position below 4 GiB - 1. A format that is not read or written counts as reachable, unless its samples are
/// larger than those of any band.
bool IsSourceReachable(const T_ImgInf& in);
bool IsDestinationReachable(const T_ImgInf& out);
