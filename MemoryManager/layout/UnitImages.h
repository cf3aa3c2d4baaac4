#pragma once
// External images as unit bands reach them: the bytes of their lines, and whether 32 bits hold their
// positions.
//
// Sources and destinations have line lengths of their own: a source is read with the padding that it has, a
// destination is written in one form. Neither is the distance from one line to the next, which is the
// description's nLineBytes.
//
// Internal.

#include "MemoryManager/ExternalImage.h"

#include <cstdint>

/// Bytes that one stored line takes in a source. 0: a format that is not read.
///
/// Lines of four samples are as long as the description says. Three 8-bit samples are padded to a multiple of
/// 4 bytes, whatever the file type; three 16-bit samples are not padded.
std::int64_t SourceLineBytes(const T_ImgInf& in);

/// Bytes from one line to the next within a destination's band. 0: a format that is not written.
///
/// Three 8-bit samples are padded to a multiple of 4 bytes in bitmaps and in files that are appended to.
std::int64_t DestinationLineBytes(const T_ImgInf& out);

/// Whether the image can be reached: no size is negative, lines do not overlap, and every byte has a position
/// below 4 GiB - 1. A format that is neither read nor written is reachable.
bool IsSourceReachable(const T_ImgInf& in);
bool IsDestinationReachable(const T_ImgInf& out);
