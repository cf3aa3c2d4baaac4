#pragma once
// The frame of a band beyond the image's edges.

#include "MemoryManager/MemoryManager.h"
#include "pixels/Workers.h"
#include "values/FilterSettings.h"

/// Paints the frame of a mapped band, which is nFsize lines and pixels wide, wherever it lies beyond the
/// image's edges. Frame lines inside the image must hold the image's pixels already.
void PaintFrame(const T_ImageLrg_tag& band, const FrameFill& fill, const Workers& workers);

/// Copies a band with the frame lines that lie inside the image, and returns the record of the copy, whose
/// pixels are the buffer's. The frame pixels beside the lines are not copied.
/// @param buffer     from AllcImgBufLrg, for images as wide, of at least as many lines as the band, and with
///                   margins of the frame's size
/// @param bMirrored  the pixels of every line come out in reverse order
T_ImageLrg_tag CopyFramedBand(const T_ImageLrg_tag& band, const T_ImageLrg_tag& buffer, bool bMirrored,
                              const Workers& workers);
