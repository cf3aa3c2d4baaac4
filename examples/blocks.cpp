// Makes a relief of one rectangle of a 24-bit bitmap: the rectangle is copied out of the image with a margin
// of one pixel, changed, and copied back. Lines are counted from the bottom of the picture, as they are
// stored.
#include "HostFile.h"

#include <MemoryManager/MemoryManager.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

/// Every sample becomes its distance from the one below to the left, round a medium grey. The last pixel
/// is changed first, so that each finds its neighbour unchanged. The neighbours of the first line and pixel
/// lie in the margin.
void MakeRelief(const T_ImageLrg_tag& block)
{
    const int nNeighbour = block.nLineBytes + block.nPixelBytes;
    for (int k = block.nHeight - 1; k >= 0; --k)
        for (int x = block.nWidth - 1; x >= 0; --x)
            for (int i = 0; i < 3; ++i) { // the fourth sample stays
                unsigned char* p = block.pImage + k * block.nLineBytes + x * block.nPixelBytes + i;
                *p = static_cast<unsigned char>(std::clamp(128 + *p - *(p - nNeighbour), 0, 255));
            }
}

DWORD ChangeRectangle(CImageObj& image, int nTop, int nBottom, int nLeft, int nRight)
{
    T_ImageLrg_tag block{};
    DWORD nResult = CImageObj::AllcImgBufLrg(&block, nRight - nLeft + 1, nBottom - nTop + 1, 1, 1,
                                             MM_FORMAT_BGRA32, MM_ALIGN_PACKED);
    if (nResult == MM_SUCCESS)
        nResult = image.MapBlock(nTop, nBottom, nLeft, nRight, &block);
    if (nResult == MM_SUCCESS) {
        MakeRelief(block);
        nResult = image.UnMapBlock(nTop, nBottom, nLeft, nRight, &block);
    }
    CImageObj::FreeImgBufLrg(&block);
    return nResult;
}

int main(int argc, char** argv)
{
    unsigned char header[54]{};
    const HANDLE hIn = argc == 7 ? OpenInput(argv[1]) : nullptr;
    if (!ReadStart(hIn, header, sizeof(header)) || header[0] != 'B' || header[28] != 24) {
        std::fprintf(stderr, "usage: blocks IN.bmp OUT.bmp FIRST_LINE LAST_LINE LEFT RIGHT\n");
        return 2;
    }
    T_ImgInf in{MM_FILE_BITMAP, ACS_FILEIO, {}, 54, 0, 0, MM_FORMAT_BGR24, MM_FORMAT_BGRA32, 0};
    std::memcpy(&in.nOffset, header + 10, 4);
    std::memcpy(&in.nWidth, header + 18, 4);
    std::memcpy(&in.nHeight, header + 22, 4);
    T_ImgInf out = in;
    std::swap(out.nSrcFormat, out.nDstFormat);
    in.hData = hIn;
    out.hData = CreateOutput(argv[2]);

    CImageObj image;
    DWORD nResult = ImportImg(&image, &in, 0, nullptr);
    if (nResult == MM_SUCCESS)
        nResult = ChangeRectangle(image, std::atoi(argv[3]), std::atoi(argv[4]), std::atoi(argv[5]),
                                  std::atoi(argv[6]));
    if (nResult == MM_SUCCESS)
        nResult = ExportImg(&image, &out, 0, nullptr, 1);
    if (nResult != MM_SUCCESS)
        std::fprintf(stderr, "blocks: %s\n", MM_ResultText(nResult));
    return nResult == MM_SUCCESS ? 0 : 1;
}
