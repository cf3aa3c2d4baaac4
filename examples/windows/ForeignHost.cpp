// A host that another compiler built: it takes the adapter's functions by name, paints an image of 96 MiB
// inside a budget of 16 MiB band by band, and reads it back. Exit status 0: every pixel is as it was painted.
#include "Adapter.h"

#define FUNCTION(hDll, name)                                                                                 \
    reinterpret_cast<decltype(&name)>(reinterpret_cast<void*>(GetProcAddress(hDll, #name)))

const int kWidth = 6000;
const int kHeight = 4194;

DWORD* Line(const T_ImageLrg_tag& band, int nLine)
{
    return reinterpret_cast<DWORD*>(band.pImage + (nLine - band.nBandTop) * band.nLineBytes);
}

void Paint(const T_ImageLrg_tag& band, int& nWrong)
{
    for (int y = band.nBandTop; y <= band.nBandBottom; ++y)
        for (int x = 0; x < kWidth; ++x)
            Line(band, y)[x] = static_cast<DWORD>(y * kWidth + x);
    nWrong += band.nWidth != kWidth || band.nPixelBytes != 4;
}

void Compare(const T_ImageLrg_tag& band, int& nWrong)
{
    for (int y = band.nBandTop; y <= band.nBandBottom; ++y)
        for (int x = 0; x < kWidth; ++x)
            nWrong += Line(band, y)[x] != static_cast<DWORD>(y * kWidth + x);
}

int main()
{
    const HMODULE hDll = LoadLibraryA("Adapter.dll");
    if (!hDll)
        return 2;
    const auto mapBand = FUNCTION(hDll, MapBand);
    const auto unmapBand = FUNCTION(hDll, UnmapBand);
    FUNCTION(hDll, SetBudget)(16 << 20);
    CImageObj* pImage = nullptr;
    DWORD nResult = FUNCTION(hDll, OpenImage)(kWidth, kHeight, &pImage);
    int nBands = 0;
    int nWrong = 0;
    void (*const passes[])(const T_ImageLrg_tag&, int&) = {Paint, Compare};
    for (const auto work : passes) {
        T_ImageLrg_tag band{};
        for (int y = 0; nResult == MM_SUCCESS && y < kHeight; y = band.nBandBottom + 1, ++nBands) {
            nResult = mapBand(pImage, y, &band);
            if (nResult == MM_SUCCESS) {
                work(band, nWrong);
                nResult = unmapBand(pImage);
            }
        }
    }
    if (pImage)
        FUNCTION(hDll, CloseImage)(pImage);
    FreeLibrary(hDll);
    return nResult != MM_SUCCESS || nWrong > 0 || nBands < 4;
}
