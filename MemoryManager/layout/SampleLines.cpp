// Rules for copying pixels between sample layouts, and the kernels that apply them to a line. Every rule has
// a portable kernel; common rules have one for the processor's vectors too.

#include "MemoryManager/layout/SampleLines.h"

#include "MemoryManager/layout/SampleLinesX86.h"

#include <algorithm>
#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "pixels are taken as little-endian numbers");

namespace {

constexpr int kWordBytes = 8;

constexpr std::uint64_t LowBytes(int nBytes)
{
    return nBytes >= kWordBytes ? ~std::uint64_t{0} : (std::uint64_t{1} << (8 * nBytes)) - 1;
}

/// Spreads four bytes to four 16-bit samples.
constexpr std::uint64_t Spread(std::uint64_t nPixel)
{
    nPixel &= LowBytes(4);
    nPixel = (nPixel | nPixel << 16) & 0x0000FFFF0000FFFF;
    return (nPixel | nPixel << 8) & 0x00FF00FF00FF00FF;
}

template <bool kWiden> std::uint64_t ConvertPixel(const PixelRule& rule, std::uint64_t nPixel)
{
    return ((kWiden ? Spread(nPixel) : nPixel) & rule.nTaken) | rule.nFixed;
}

/// Converts pixels one by one and touches no byte beyond them.
void ConvertPixels(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc, std::size_t nPixels)
{
    const auto nRead = static_cast<std::size_t>(std::min(rule.nSrcBytes, kWordBytes));
    const auto nWritten = static_cast<std::size_t>(rule.nWritten);
    for (; nPixels > 0; --nPixels, pSrc += rule.nSrcBytes, pDst += rule.nDstBytes) {
        std::uint64_t nPixel = 0;
        std::memcpy(&nPixel, pSrc, nRead);
        nPixel = rule.bWiden ? ConvertPixel<true>(rule, nPixel) : ConvertPixel<false>(rule, nPixel);
        std::memcpy(pDst, &nPixel, nWritten);
    }
}

/// Converts pixels by loads and stores of whole words. The bytes that a store spills into the next pixel are
/// overwritten by that pixel's store; the last pixels, behind which there is no room to spill, go one by one.
template <bool kWiden>
void ConvertWords(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc, std::size_t nPixels)
{
    const int nShorter = std::min(rule.nSrcBytes, rule.nDstBytes);
    const auto nRoom = static_cast<std::size_t>((kWordBytes + nShorter - 1) / nShorter);
    for (; nPixels >= nRoom; --nPixels, pSrc += rule.nSrcBytes, pDst += rule.nDstBytes) {
        std::uint64_t nPixel;
        std::memcpy(&nPixel, pSrc, kWordBytes);
        nPixel = ConvertPixel<kWiden>(rule, nPixel);
        std::memcpy(pDst, &nPixel, kWordBytes);
    }
    ConvertPixels(rule, pDst, pSrc, nPixels);
}

void CopyBytes(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc, std::size_t nPixels)
{
    std::copy_n(pSrc, nPixels * static_cast<std::size_t>(rule.nDstBytes), pDst);
}

bool Everywhere()
{
    return true;
}

#if defined(MM_HAS_BYTE_SHUFFLE)
void Shuffle(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc, std::size_t nPixels)
{
    const std::size_t nDone = ShufflePixels(rule, pDst, pSrc, nPixels);
    ConvertPixels(rule, pDst + nDone * static_cast<std::size_t>(rule.nDstBytes),
                  pSrc + nDone * static_cast<std::size_t>(rule.nSrcBytes), nPixels - nDone);
}
#define MM_SHUFFLE_KERNEL {"ssse3", CanShuffle, Shuffle},
#else
#define MM_SHUFFLE_KERNEL
#endif

// clang-format off
constexpr LineKernel kCopying[] = {{"portable", Everywhere, CopyBytes}};
constexpr LineKernel kNarrow[] = {MM_SHUFFLE_KERNEL {"portable", Everywhere, ConvertWords<false>}};
constexpr LineKernel kWidening[] = {MM_SHUFFLE_KERNEL {"portable", Everywhere, ConvertWords<true>}};
constexpr LineKernel kSparse[] = {{"portable", Everywhere, ConvertPixels}};
// clang-format on

bool IsPlainCopy(const PixelRule& rule)
{
    return !rule.bWiden && rule.nSrcBytes == rule.nWritten && rule.nDstBytes == rule.nWritten &&
           rule.nTaken == LowBytes(rule.nWritten) && rule.nFixed == 0;
}

/// Whether pixels may be converted by whole words: they have no more than a word's bytes, and each
/// destination pixel is written wholly, so that nothing that was spilled remains.
bool IsDense(const PixelRule& rule)
{
    return rule.nSrcBytes >= 1 && rule.nSrcBytes <= kWordBytes && rule.nDstBytes >= 1 &&
           rule.nDstBytes == rule.nWritten;
}

} // namespace

PixelRule KeepSamples(int nSrcBytes, int nDstBytes, int nSampleBytes, bool bOpaque)
{
    const std::uint64_t nThree = LowBytes(3 * nSampleBytes);
    const std::uint64_t nFour = LowBytes(4 * nSampleBytes);
    const int nWritten = std::min(nDstBytes, 4 * nSampleBytes);
    const bool bFourthFixed = bOpaque || nSrcBytes < 4 * nSampleBytes;
    const std::uint64_t nTaken = (bFourthFixed ? nThree : nFour) & LowBytes(nSrcBytes) & LowBytes(nWritten);
    const std::uint64_t nFixed = bFourthFixed ? nFour & ~nThree & LowBytes(nWritten) : 0;
    return {nSrcBytes, nDstBytes, nWritten, nTaken, nFixed, false};
}

PixelRule WidenSamples(int nSamples)
{
    constexpr std::uint64_t nFourth = std::uint64_t{0xFF} << 48;
    return {nSamples, kWordBytes, kWordBytes, LowBytes(2 * nSamples), nSamples < 4 ? nFourth : 0, true};
}

std::span<const LineKernel> KernelsFor(const PixelRule& rule)
{
    if (IsPlainCopy(rule))
        return kCopying;
    if (!IsDense(rule))
        return kSparse;
    return rule.bWiden ? std::span<const LineKernel>(kWidening) : kNarrow;
}

const LineKernel& BestKernelFor(const PixelRule& rule)
{
    const auto kernels = KernelsFor(rule);
    return *std::find_if(kernels.begin(), kernels.end(), [](const LineKernel& k) { return k.pRunsHere(); });
}
