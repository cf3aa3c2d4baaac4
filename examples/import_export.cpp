// Inverts the colours of a 24-bit bitmap of any size inside 64 MiB, and writes it with 32 bits a pixel.
// The image object holds the whole picture: in memory, or in a temporary file that is seen band by band.
#include "HostFile.h"

#include <MemoryManager/MemoryManager.h>

#include <cstdio>
#include <cstring>

/// Describes the bitmap in hIn and the one to be written; false if hIn is no 24-bit bitmap.
bool Describe(HANDLE hIn, T_ImgInf& in, T_ImgInf& out)
{
    unsigned char header[54];
    if (!ReadStart(hIn, header, sizeof(header)) || header[0] != 'B' || header[28] != 24)
        return false;
    ZBT_IMAGE_IN_FILE pair{};
    pair.hInImage = hIn;
    std::memcpy(&pair.nInOffset, header + 10, 4);
    std::memcpy(&pair.nInWidth, header + 18, 4);
    std::memcpy(&pair.nInHeight, header + 22, 4);
    pair.nInType = MM_DATA_BITMAP24;
    pair.nOutType = MM_DATA_BITMAP32;
    pair.nOutWidth = pair.nInWidth;
    pair.nOutHeight = pair.nInHeight;
    CreateParam(&pair, MM_FORMAT_BGRA32, MM_FORMAT_BGRA32, &in, &out); // four samples in between
    return true;
}

void Invert(const T_ImageLrg_tag& band)
{
    for (int k = 0; k < band.nBandLines; ++k)
        for (int i = 0; i < band.nWidth * band.nPixelBytes; ++i)
            band.pImage[k * band.nLineBytes + i] ^= 0xFF;
}

int main(int argc, char** argv)
{
    const HANDLE hIn = argc == 3 ? OpenInput(argv[1]) : nullptr;
    T_ImgInf in{}, out{};
    if (!Describe(hIn, in, out)) {
        std::fprintf(stderr, "usage: import_export IN.bmp OUT.bmp (IN has 24 bits a pixel)\n");
        return 2;
    }
    out.hData = CreateOutput(argv[2]);
    CImageObj::InitBaseMemory(64 << 20, 32 << 20); // the budget, and the largest single mapping
    CImageObj image;
    DWORD nResult = ImportImg(&image, &in, 1, nullptr); // 1: a bitmap's lines are stored bottom-up
    T_ImageLrg_tag band{};
    for (int y = 0; nResult == MM_SUCCESS && y < in.nHeight; y = band.nBandBottom + 1) {
        nResult = image.MapBand(y, &band, MM_BAND_DOWNWARD, 0);
        if (nResult != MM_SUCCESS)
            break;
        Invert(band);
        nResult = image.UnmapBand(0);
    }
    if (nResult == MM_SUCCESS)
        nResult = ExportImg(&image, &out, 1, nullptr, 1); // 1: the fourth sample is all ones
    if (nResult != MM_SUCCESS)
        std::fprintf(stderr, "import_export: %s\n", MM_ResultText(nResult));
    return nResult == MM_SUCCESS ? 0 : 1;
}
