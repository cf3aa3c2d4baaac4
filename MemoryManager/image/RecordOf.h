#pragma once
// An object's geometry as its class tells it: that of the external image when the object stands for one.
//
// Internal.

#include "MemoryManager/CImageObj.h"

inline T_ImageLrg_tag RecordOf(CImageObj& image)
{
    T_ImageLrg_tag info{};
    image.GetImageInfo(&info);
    return info;
}
