// The documented layout of image buffers and external images.

#include "MemoryManager/base/RecordLayout.h"

#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/ImageRecord.h"

template struct Documented<T_ImageLrg_tag, 88, MM_AT(0, T_ImageLrg_tag, pBase),
                           MM_AT(4, T_ImageLrg_tag, nBufSize), MM_AT(8, T_ImageLrg_tag, nLineBytes),
                           MM_AT(12, T_ImageLrg_tag, nPixelBytes), MM_AT(16, T_ImageLrg_tag, nSampleBytes),
                           MM_AT(20, T_ImageLrg_tag, nAllocWidth), MM_AT(24, T_ImageLrg_tag, nAllocHeight),
                           MM_AT(28, T_ImageLrg_tag, nMarginX), MM_AT(32, T_ImageLrg_tag, nMarginY),
                           MM_AT(36, T_ImageLrg_tag, pImage), MM_AT(40, T_ImageLrg_tag, nWidth),
                           MM_AT(44, T_ImageLrg_tag, nHeight), MM_AT(48, T_ImageLrg_tag, nLineSamples),
                           MM_AT(52, T_ImageLrg_tag, nSamples), MM_AT(56, T_ImageLrg_tag, nFormat),
                           MM_AT(60, T_ImageLrg_tag, nAlignType), MM_AT(64, T_ImageLrg_tag, nBandLines),
                           MM_AT(68, T_ImageLrg_tag, nBandTop), MM_AT(72, T_ImageLrg_tag, nBandBottom),
                           MM_AT(76, T_ImageLrg_tag, nFsize), MM_AT(80, T_ImageLrg_tag, nRatio),
                           MM_AT(84, T_ImageLrg_tag, nFrameMode)>;

template struct Documented<T_Image_tag, 64, MM_AT(0, T_Image_tag, pBase), MM_AT(4, T_Image_tag, nBufSize),
                           MM_AT(8, T_Image_tag, nLineBytes), MM_AT(12, T_Image_tag, nPixelBytes),
                           MM_AT(16, T_Image_tag, nSampleBytes), MM_AT(20, T_Image_tag, nAllocWidth),
                           MM_AT(24, T_Image_tag, nAllocHeight), MM_AT(28, T_Image_tag, nMarginX),
                           MM_AT(32, T_Image_tag, nMarginY), MM_AT(36, T_Image_tag, pImage),
                           MM_AT(40, T_Image_tag, nWidth), MM_AT(44, T_Image_tag, nHeight),
                           MM_AT(48, T_Image_tag, nLineSamples), MM_AT(52, T_Image_tag, nSamples),
                           MM_AT(56, T_Image_tag, nFormat), MM_AT(60, T_Image_tag, nAlignType)>;

template struct Documented<
    T_ImgInf, 36, MM_AT(0, T_ImgInf, nFileType), MM_AT(4, T_ImgInf, eAcsType), MM_AT(8, T_ImgInf, hData),
    MM_AT(12, T_ImgInf, nOffset), MM_AT(16, T_ImgInf, nWidth), MM_AT(20, T_ImgInf, nHeight),
    MM_AT(24, T_ImgInf, nSrcFormat), MM_AT(28, T_ImgInf, nDstFormat), MM_AT(32, T_ImgInf, nLineBytes)>;
