#pragma once
// The frame of a band beyond the image's edges.

#include "MemoryManager/MemoryManager.h"
#include "pixels/Workers.h"
#include "values/FilterSettings.h"

/// Paints the frame of a band, its nFsize lines and pixels, wherever it lies beyond the image's edges. Frame
/// lines inside the image hold the image's pixels already.
void PaintFrame(const T_ImageLrg_tag& band, const FrameFill& fill, const Workers& workers);

/// Copies a band with the lines of its frame into a buffer of the same geometry and gives the record of the
/// copy. bMirrored: the pixels of every line come out in reverse order, for which the lines' frame pixels do
/// not matter.
/// @param buffer  from AllcImgBufLrg, for at least as many lines and with margins of the frame's size
T_ImageLrg_tag CopyFramedBand(const T_ImageLrg_tag& band, const T_ImageLrg_tag& buffer, bool bMirrored,
                              const Workers& workers);
