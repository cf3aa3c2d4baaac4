#pragma once
// The lines of a unit band: its own, those of its frame, and where they lie in the source's storage order.
//
// Internal.

#include "MemoryManager/ImageRecord.h"

#include <algorithm>

/// Where a band's lines lie among all stored lines of its source.
enum class StoredPlace : int
{
    Start = 1,
    Inside = 2,
    End = 3,
    Whole = 4,
};

/// Lines of a band that an object holds. Its nBandLines does not tell: while the band is held, asking for the
/// geometry or setting the band height makes that field the height of the next band.
inline int LinesOf(const T_ImageLrg_tag& band)
{
    return band.nBandBottom - band.nBandTop + 1;
}

/// Frame lines for which the band's buffer has room, above and below alike: at most its margin.
inline int FrameLines(const T_ImageLrg_tag& band)
{
    return std::clamp(band.nFsize, 0, band.nMarginY);
}

/// Those frame lines above the band that are lines of the image.
inline int FrameLinesAbove(const T_ImageLrg_tag& band)
{
    return std::min(FrameLines(band), band.nBandTop);
}

/// Those frame lines below the band that are lines of the image.
inline int FrameLinesBelow(const T_ImageLrg_tag& band)
{
    return std::min(FrameLines(band), band.nHeight - 1 - band.nBandBottom);
}
