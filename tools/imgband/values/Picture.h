#pragma once
// What a picture is made of: its format and its size.

#include "MemoryManager/MemoryManager.h"

/// The picture formats that the tool reads and writes, in the order of MM_DATA_TYPE.
enum class Format
{
    Bgr24 = MM_DATA_BITMAP24,  ///< bitmap, three 8-bit samples
    Bgra32 = MM_DATA_BITMAP32, ///< bitmap, four 8-bit samples
    Raw48 = MM_DATA_RAW48,     ///< no header, three 16-bit samples
    Raw64 = MM_DATA_RAW64,     ///< no header, four 16-bit samples
};

/// Width and height in pixels, both above 0.
struct ImageSize
{
    int nWidth;
    int nHeight;

    bool operator==(const ImageSize&) const = default;
};
