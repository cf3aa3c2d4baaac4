// Converts lines with the byte shuffle of x86 processors (SSSE3): one load, shuffle, or and store for as many
// pixels as fit a vector. Wider vectors were not faster for lines that come from memory.

#include "MemoryManager/layout/SampleLinesX86.h"

#if defined(MM_HAS_BYTE_SHUFFLE)

#include <algorithm>
#include <immintrin.h>

namespace {

constexpr int kVectorBytes = 16;
constexpr unsigned char kZeroByte = 0x80; // a shuffle index that gives 0

/// How the bytes of one destination vector are made.
struct VectorPlan
{
    alignas(kVectorBytes) unsigned char nIndex[kVectorBytes]; // source byte, or kZeroByte
    alignas(kVectorBytes) unsigned char nFixed[kVectorBytes];
    std::size_t nPixels; // pixels in one vector
    std::size_t nRoom;   // pixels that must remain for loading and storing a whole vector
};

VectorPlan PlanFor(const PixelRule& rule)
{
    VectorPlan plan{};
    std::fill_n(plan.nIndex, kVectorBytes, kZeroByte);
    const int nPixels = kVectorBytes / std::max(rule.nSrcBytes, rule.nDstBytes);
    for (int i = 0; i < nPixels * rule.nDstBytes; ++i) {
        const int nPixel = i / rule.nDstBytes;
        const int nByte = i % rule.nDstBytes;
        const bool bTaken = (rule.nTaken >> (8 * nByte) & 0xFF) != 0 && !(rule.bWiden && nByte % 2 != 0);
        if (bTaken)
            plan.nIndex[i] =
                static_cast<unsigned char>(nPixel * rule.nSrcBytes + (rule.bWiden ? nByte / 2 : nByte));
        plan.nFixed[i] = static_cast<unsigned char>(rule.nFixed >> (8 * nByte) & 0xFF);
    }
    const int nShorter = std::min(rule.nSrcBytes, rule.nDstBytes);
    plan.nPixels = static_cast<std::size_t>(nPixels);
    plan.nRoom = static_cast<std::size_t>((kVectorBytes + nShorter - 1) / nShorter);
    return plan;
}

} // namespace

bool CanShuffle()
{
    return __builtin_cpu_supports("ssse3");
}

__attribute__((target("ssse3"))) std::size_t ShufflePixels(const PixelRule& rule, unsigned char* pDst,
                                                           const unsigned char* pSrc, std::size_t nPixels)
{
    const VectorPlan plan = PlanFor(rule);
    const __m128i index = _mm_load_si128(reinterpret_cast<const __m128i*>(plan.nIndex));
    const __m128i fixed = _mm_load_si128(reinterpret_cast<const __m128i*>(plan.nFixed));
    const std::size_t nSrcStep = plan.nPixels * static_cast<std::size_t>(rule.nSrcBytes);
    const std::size_t nDstStep = plan.nPixels * static_cast<std::size_t>(rule.nDstBytes);
    std::size_t nDone = 0;
    for (; nPixels - nDone >= plan.nRoom; nDone += plan.nPixels, pSrc += nSrcStep, pDst += nDstStep) {
        const __m128i source = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc));
        const __m128i pixels = _mm_or_si128(_mm_shuffle_epi8(source, index), fixed);
        // Bytes that are spilled behind these pixels are overwritten by the next ones.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst), pixels);
    }
    return nDone;
}

#endif
