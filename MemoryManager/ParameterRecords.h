#pragma once
// The host's parameter records for a pair of images, one input and one output.

#include "Platform/PlatformTypes.h"

/// Data types of nInType and nOutType.
enum MM_DATA_TYPE : int
{
    MM_DATA_BITMAP24 = 0, ///< 24-bit bitmap
    MM_DATA_BITMAP32 = 1, ///< 32-bit bitmap
    MM_DATA_RAW48 = 2,    ///< raw, three 16-bit samples
    MM_DATA_RAW64 = 3,    ///< raw, four 16-bit samples
};

#pragma pack(push, 2)

/// A pair of image files. Fields lie on 2-byte boundaries: 38 bytes with 32-bit handles.
struct ZBT_IMAGE_IN_FILE
{
    HANDLE hInImage;   ///< input file
    int nInOffset;     ///< whole bitmap: bytes from "BM" to the first pixel; raw unit image: its position
    short nInType;     ///< MM_DATA_TYPE
    int nInWidth;      ///< pixels
    int nInHeight;     ///< lines
    short nInReserved; ///< not read
    HANDLE hOutImage;  ///< output file
    int nOutOffset;    ///< copied to the description's nOffset: where a raw unit image's lines start
    short nOutType;    ///< MM_DATA_TYPE
    int nOutWidth;     ///< pixels
    int nOutHeight;    ///< lines
};

/// A pair of images in memory: the same bytes, with block addresses for handles.
struct ZBT_IMAGE_ON_MEMORY
{
    void* hInImage;    ///< input block
    int nInOffset;     ///< whole bitmap: bytes from "BM" to the first pixel; raw unit image: its position
    short nInType;     ///< MM_DATA_TYPE
    int nInWidth;      ///< pixels
    int nInHeight;     ///< lines
    short nInReserved; ///< not read
    void* hOutImage;   ///< output block
    int nOutOffset;    ///< CreateParam writes where the output's pixels will start: 54 bitmap, 0 raw
    short nOutType;    ///< MM_DATA_TYPE
    int nOutWidth;     ///< pixels
    int nOutHeight;    ///< lines
};

#pragma pack(pop)
