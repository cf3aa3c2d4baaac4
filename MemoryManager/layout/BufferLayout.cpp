// The rules that turn size, margins, pixel size and alignment type into a buffer's layout, and band heights
// into charges. All arithmetic is done in 64 bits; each product is checked before it becomes a factor of the
// next.

#include "MemoryManager/layout/BufferLayout.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::int64_t kLineAlignBytes = 16; // a line of one sample plane is a multiple of this

std::int64_t AlignedWidth(std::int64_t nWidth, const LayoutRequest& request)
{
    if (request.nAlignType != MM_ALIGN_LINES)
        return nWidth;
    const std::int64_t nUnit = kLineAlignBytes / request.nSampleBytes;
    return (nWidth + nUnit - 1) / nUnit * nUnit;
}

} // namespace

bool IsAlignmentSupported(int nAlignType, int nSampleBytes)
{
    switch (nAlignType) {
    case MM_ALIGN_PACKED:
    case MM_ALIGN_SPARE:
        return true;
    case MM_ALIGN_LINES:
        return nSampleBytes == 1 || nSampleBytes == 2 || nSampleBytes == 4 || nSampleBytes == 8;
    default:
        return false;
    }
}

std::optional<BufferLayout> LayOutBuffer(const LayoutRequest& request)
{
    if (!IsAlignmentSupported(request.nAlignType, request.nSampleBytes))
        return std::nullopt;
    if (request.nWidth < 0 || request.nHeight < 0 || request.nMarginX < 0 || request.nMarginY < 0 ||
        request.nPixelBytes < 0 || request.nSamples < 0)
        return std::nullopt;

    const std::int64_t nWidth = AlignedWidth(request.nWidth + 2 * std::int64_t{request.nMarginX}, request);
    const std::int64_t nHeight = request.nHeight + 2 * std::int64_t{request.nMarginY};
    if (!Fits(nWidth) || !Fits(nHeight))
        return std::nullopt;
    const std::int64_t nLineBytes = nWidth * request.nPixelBytes;
    const std::int64_t nLineSamples = nWidth * request.nSamples;
    if (!Fits(nLineBytes) || !Fits(nLineSamples))
        return std::nullopt;
    const std::int64_t nSpare = request.nAlignType == MM_ALIGN_PACKED ? 0 : kSpareBytes;
    const std::int64_t nBufSize = nLineBytes * nHeight + nSpare;
    if (!Fits(nBufSize))
        return std::nullopt;
    return BufferLayout{static_cast<int>(nBufSize), static_cast<int>(nLineBytes), static_cast<int>(nWidth),
                        static_cast<int>(nHeight), static_cast<int>(nLineSamples)};
}

int BandCharge(int nLineBytes, int nLines, int nCount)
{
    constexpr std::int64_t nMost = std::numeric_limits<int>::max();
    const std::int64_t nBuffer = std::min(std::int64_t{nLineBytes} * nLines, nMost);
    return static_cast<int>(std::min(nBuffer * nCount, nMost));
}

int SizeBand(T_ImageLrg_tag& info, int nWhole, int nBand, int nSmallest, int nCount)
{
    if (nBand <= 0) {
        info.nBandLines = info.nHeight;
        return nWhole;
    }
    const int nLines = std::min(std::max(nBand, nSmallest), info.nAllocHeight);
    info.nBandLines = std::min(std::max(nLines - 2 * info.nFsize, nSmallest), info.nHeight);
    return BandCharge(info.nLineBytes, nLines, nCount);
}
