#pragma once
// Reading an object's geometry through its virtual operation.
//
// Internal.

#include "MemoryManager/CImageObj.h"

/// What the virtual GetImageInfo gives: for an I/O object the record of the external image. On a unit object
/// the call also restores the band height of its set-up.
inline T_ImageLrg_tag RecordOf(CImageObj& image)
{
    T_ImageLrg_tag info{};
    image.GetImageInfo(&info);
    return info;
}
