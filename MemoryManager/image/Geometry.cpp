// Layouts of buffers, and standalone buffers that are charged to the budget. These operations work on
// records: none of them uses a member of an object.

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <cstdint>

namespace {

constexpr std::uintptr_t kPixelAlign = 16;

LayoutRequest RequestFor(int nWidth, int nHeight, int nMarginX, int nMarginY, int nFormat, int nAlign)
{
    const int nSampleBytes = SampleBytesOf(nFormat);
    const int nSamples = SamplesOf(nFormat);
    return {nWidth,   nHeight,      nMarginX,           nMarginY, nSampleBytes * nSamples,
            nSamples, nSampleBytes, AlignTypeOf(nAlign)};
}

unsigned char* FirstPixel(const T_ImageLrg_tag& info)
{
    unsigned char* pPixel = info.pBase + PixelPosition(info, 0, 0);
    if (info.nAlignType == MM_ALIGN_PACKED)
        return pPixel;
    const std::uintptr_t nOver = reinterpret_cast<std::uintptr_t>(pPixel) % kPixelAlign;
    return nOver == 0 ? pPixel : pPixel + (kPixelAlign - nOver);
}

} // namespace

DWORD CImageObj::CalcImgBufLrg(int& nBufferSize, int& nLineBytes, int& nBufferWidth, int& nBufferHeight,
                               int nWidth, int nHeight, int nMarginX, int nMarginY, int nFormat, int nAlign)
{
    const auto layout = LayOutBuffer(RequestFor(nWidth, nHeight, nMarginX, nMarginY, nFormat, nAlign));
    if (!layout)
        return MM_BAD_ARGUMENT;
    nBufferSize = layout->nBufSize;
    nLineBytes = layout->nLineBytes;
    nBufferWidth = layout->nAllocWidth;
    nBufferHeight = layout->nAllocHeight;
    return MM_SUCCESS;
}

DWORD CImageObj::CalcAlign(T_ImageLrg_tag* pInfo)
{
    const auto layout =
        LayOutBuffer({pInfo->nWidth, pInfo->nHeight, pInfo->nMarginX, pInfo->nMarginY, pInfo->nPixelBytes,
                      pInfo->nSamples, pInfo->nSampleBytes, pInfo->nAlignType});
    if (!layout)
        return MM_BAD_ARGUMENT;
    pInfo->nAllocWidth = layout->nAllocWidth;
    pInfo->nAllocHeight = layout->nAllocHeight;
    pInfo->nLineBytes = layout->nLineBytes;
    pInfo->nBufSize = layout->nBufSize;
    pInfo->nLineSamples = layout->nLineSamples;
    return MM_SUCCESS;
}

DWORD CImageObj::AllcImgBufLrg(T_ImageLrg_tag* pInfo, int nWidth, int nHeight, int nMarginX, int nMarginY,
                               int nFormat, int nAlign)
{
    const LayoutRequest request = RequestFor(nWidth, nHeight, nMarginX, nMarginY, nFormat, nAlign);
    const auto layout = LayOutBuffer(request);
    if (!layout)
        return MM_BAD_ARGUMENT;

    ChargeBudget(layout->nBufSize);
    auto* pBlock = static_cast<unsigned char*>(AllocMemoryBlock(SIZE_T(layout->nBufSize), 1));
    if (!pBlock) {
        ReturnToBudget(layout->nBufSize);
        return MM_NO_MEMORY;
    }
    // Nothing is left to do for MM_ALIGN_CLEAR: fresh memory is zero, and clearing it would only make it
    // resident.

    pInfo->pBase = pBlock;
    pInfo->nBufSize = layout->nBufSize;
    pInfo->nLineBytes = layout->nLineBytes;
    pInfo->nPixelBytes = request.nPixelBytes;
    pInfo->nSampleBytes = request.nSampleBytes;
    pInfo->nAllocWidth = layout->nAllocWidth;
    pInfo->nAllocHeight = layout->nAllocHeight;
    pInfo->nMarginX = nMarginX;
    pInfo->nMarginY = nMarginY;
    pInfo->nWidth = nWidth;
    pInfo->nHeight = nHeight;
    pInfo->nSamples = request.nSamples;
    pInfo->nLineSamples = layout->nLineSamples;
    pInfo->nFormat = nFormat;
    pInfo->nAlignType = request.nAlignType;
    pInfo->pImage = FirstPixel(*pInfo);
    return MM_SUCCESS;
}

void CImageObj::FreeImgBufLrg(T_ImageLrg_tag* pInfo)
{
    if (!pInfo->pBase)
        return;
    FreeMemoryBlock(pInfo->pBase);
    ReturnToBudget(pInfo->nBufSize);
}
