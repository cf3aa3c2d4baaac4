#pragma once
// The record that describes one image buffer and its current band.

#include "Platform/PlatformTypes.h"

/// Pixel format codes: bits 0 to 3 are the bytes per sample, bits 8 to 11 the samples per pixel. The other
/// bits are kept and mean nothing to the library.
enum MM_FORMAT : int
{
    MM_FORMAT_BGR24 = 0x1301,  ///< three 8-bit samples, 24-bit bitmap
    MM_FORMAT_BGRA32 = 0x0401, ///< four 8-bit samples, 32-bit bitmap
    MM_FORMAT_RAW48 = 0x1322,  ///< three 16-bit samples, raw
    MM_FORMAT_RAW64 = 0x0422,  ///< four 16-bit samples, raw
};

/// Alignment argument: the type, to which MM_ALIGN_CLEAR may be added.
enum MM_ALIGN : int
{
    MM_ALIGN_PACKED = 0,   ///< lines of width + 2 margins pixels
    MM_ALIGN_SPARE = 1,    ///< the same, with the first pixel on a 16-byte boundary and 32 spare bytes
    MM_ALIGN_LINES = 2,    ///< as 1, with nAllocWidth * nSampleBytes a multiple of 16
    MM_ALIGN_CLEAR = 0x10, ///< asks for cleared memory; buffers of the library always are
};

/// One image buffer and the band of it that is mapped. Records are the caller's, usually zero-filled with
/// nRatio 100; the library never allocates one. Who owns the buffer is told by the operation that fills the
/// record.
struct T_ImageLrg_tag
{
    unsigned char* pBase;  ///< start of a standalone buffer or unit band; not used by objects with a store
    int nBufSize;          ///< bytes of the buffer: nLineBytes * nAllocHeight, + 32 for types 1 and 2
    int nLineBytes;        ///< bytes from one buffer line to the next: nPixelBytes * nAllocWidth
    int nPixelBytes;       ///< bytes per pixel
    int nSampleBytes;      ///< bytes per sample
    int nAllocWidth;       ///< pixels per buffer line, both side margins and alignment included
    int nAllocHeight;      ///< lines of the buffer: nHeight + 2 * nMarginY
    int nMarginX;          ///< margin pixels on each side
    int nMarginY;          ///< margin lines above and below
    unsigned char* pImage; ///< first image pixel; after a mapping the first pixel of the band
    int nWidth;            ///< image width in pixels, without margins
    int nHeight;           ///< image height in lines, without margins
    int nLineSamples;      ///< samples per buffer line: nAllocWidth * nSamples
    int nSamples;          ///< samples per pixel
    int nFormat;           ///< pixel format code
    int nAlignType;        ///< line alignment type 0, 1 or 2
    int nBandLines;        ///< band height in lines
    int nBandTop;          ///< first image line of the mapped band
    int nBandBottom;       ///< last image line of the mapped band
    int nFsize;            ///< frame: lines above and below, pixels beside a band that are mapped with it
    int nRatio;            ///< weight against the step's output in percent, 100 unless set
    int nFrameMode;        ///< frame fill mode 0 to 4
};

/// A flat image buffer: the first sixteen fields of T_ImageLrg_tag, with the same meanings. pBase is a
/// committed block, as AllcImgBufLrg makes it; each operation says whether it frees the block.
struct T_Image_tag
{
    unsigned char* pBase;
    int nBufSize;
    int nLineBytes;
    int nPixelBytes;
    int nSampleBytes;
    int nAllocWidth;
    int nAllocHeight;
    int nMarginX;
    int nMarginY;
    unsigned char* pImage;
    int nWidth;
    int nHeight;
    int nLineSamples;
    int nSamples;
    int nFormat;
    int nAlignType;
};
