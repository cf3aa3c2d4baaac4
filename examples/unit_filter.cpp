// Softens a 24-bit bitmap of any size: each sample becomes the mean of the 3 x 3 around it. Bands are read
// from one file and appended to the other in stored order, from the bottom up: a mean is the same either way.
#include "HostFile.h"

#include <MemoryManager/MemoryManager.h>

#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

/// Paints what the library leaves to the step: the frame beside every line, and the line above the image.
void PaintFrame(const T_ImageLrg_tag& band)
{
    const int nPixel = band.nPixelBytes, nLine = band.nLineBytes, nRight = band.nWidth * nPixel;
    for (int k = band.nBandTop == 0 ? 0 : -1; k <= band.nBandLines; ++k) {
        unsigned char* pLine = band.pImage + k * nLine;
        std::memcpy(pLine - nPixel, pLine, std::size_t(nPixel));
        std::memcpy(pLine + nRight, pLine + nRight - nPixel, std::size_t(nPixel));
    }
    if (band.nBandTop == 0)
        std::memcpy(band.pImage - nLine - nPixel, band.pImage - nPixel, std::size_t(nRight + 2 * nPixel));
}

/// Works in place, with copies of the lines that it has already changed but still needs.
void Soften(const T_ImageLrg_tag& band)
{
    const int nPixel = band.nPixelBytes, nBytes = band.nWidth * nPixel;
    const auto copyOf = [&](int k) {
        const unsigned char* pLine = band.pImage + k * band.nLineBytes;
        return std::vector<unsigned char>(pLine - nPixel, pLine + nBytes + nPixel);
    };
    auto above = copyOf(-1), here = copyOf(0), below = here;
    for (int k = 0; k < band.nBandLines; ++k, above.swap(here), here.swap(below)) {
        below = copyOf(k + 1);
        for (int i = 0; i < nBytes; ++i) {
            int nSum = 4; // rounds
            for (const unsigned char* p : {above.data(), here.data(), below.data()})
                nSum += p[i] + p[i + nPixel] + p[i + 2 * nPixel];
            band.pImage[k * band.nLineBytes + i] = static_cast<unsigned char>(nSum / 9);
        }
    }
}

int main(int argc, char** argv)
{
    unsigned char header[54]{};
    const HANDLE hIn = argc == 3 ? OpenInput(argv[1]) : nullptr;
    if (!ReadStart(hIn, header, sizeof(header)) || header[0] != 'B' || header[28] != 24)
        return std::fprintf(stderr, "usage: unit_filter IN.bmp OUT.bmp (IN has 24 bits a pixel)\n"), 2;
    T_ImgInf in{MM_FILE_BITMAP, ACS_FILEIO, {}, 54, 0, 0, MM_FORMAT_BGR24, MM_FORMAT_BGRA32, 0};
    std::memcpy(&in.nWidth, header + 18, 4);
    std::memcpy(&in.nHeight, header + 22, 4);
    in.nLineBytes = (in.nWidth * 3 + 3) / 4 * 4;
    in.hData = hIn;
    T_ImgInf out = in;
    std::swap(out.nSrcFormat, out.nDstFormat);
    out.hData = CreateOutput(argv[2]);

    CImageObj::ms_nUseMaxMemoryUnit = 1 << 20; // bands that stay in the processor's cache
    CImageObj image;
    image.m_ImgInfo.nMarginX = image.m_ImgInfo.nMarginY = 1; // room for the frame
    DWORD nResult = ImportImgForUnit(&image, &in, &out, 0, nullptr, MM_ALIGN_PACKED, 1);
    std::memcpy(&image.m_InImgInf.nOffset, header + 10, 4); // where the header says that the pixels start
    image.SetFsize(1);
    image.SetFrameColor(MM_FRAME_REPLICATE, 0);
    T_ImageLrg_tag band{};
    for (int y = 0; nResult == MM_SUCCESS && y < in.nHeight; y = band.nBandBottom + 1) {
        nResult = image.MapBand(y, &band, MM_BAND_DOWNWARD, 0);
        if (nResult != MM_SUCCESS)
            break;
        PaintFrame(band);
        Soften(band);
        nResult = image.UnmapBand(0);
    }
    std::fprintf(stderr, "unit_filter: %s\n", MM_ResultText(nResult));
    return nResult == MM_SUCCESS ? 0 : 1;
}
