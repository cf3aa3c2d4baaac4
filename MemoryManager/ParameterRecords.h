#pragma once
// The host's records for a pair of images, one input and one output, from which CreateParam makes
// descriptions.

#include "Platform/PlatformTypes.h"

/// Values of nInType and nOutType.
enum MM_DATA_TYPE : int
{
    MM_DATA_BITMAP24 = 0, ///< 24-bit bitmap
    MM_DATA_BITMAP32 = 1, ///< 32-bit bitmap
    MM_DATA_RAW48 = 2,    ///< raw, three 16-bit samples
    MM_DATA_RAW64 = 3,    ///< raw, four 16-bit samples
};

#pragma pack(push, 2)

/// A pair of image files. Fields lie on 2-byte boundaries; with 32-bit handles the record has 38 bytes.
struct ZBT_IMAGE_IN_FILE
{
    HANDLE hInImage;   ///< input file, open for reading
    int nInOffset;     ///< nOffset of the input's description (see T_ImgInf)
    short nInType;     ///< MM_DATA_TYPE
    int nInWidth;      ///< pixels
    int nInHeight;     ///< lines
    short nInReserved; ///< not read
    HANDLE hOutImage;  ///< output file, open for reading and writing
    int nOutOffset;    ///< nOffset of the output's description
    short nOutType;    ///< MM_DATA_TYPE
    int nOutWidth;     ///< pixels
    int nOutHeight;    ///< lines
};

/// A pair of images in memory: the same bytes, with the addresses of blocks in place of the handles.
struct ZBT_IMAGE_ON_MEMORY
{
    void* hInImage;    ///< input block
    int nInOffset;     ///< nOffset of the input's description (see T_ImgInf)
    short nInType;     ///< MM_DATA_TYPE
    int nInWidth;      ///< pixels
    int nInHeight;     ///< lines
    short nInReserved; ///< not read
    void* hOutImage;   ///< output block
    int nOutOffset;    ///< nOffset of the output's description; then CreateParam puts 54 (bitmap) or 0 (raw)
                       ///< here
    short nOutType;    ///< MM_DATA_TYPE
    int nOutWidth;     ///< pixels
    int nOutHeight;    ///< lines
};

#pragma pack(pop)
