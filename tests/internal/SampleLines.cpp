// Every line kernel against a byte-by-byte reference, at all lengths around the vector widths.

#include "MemoryManager/layout/SampleLines.h"
#include "../StandardLibrary.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kGuard = 0xA5;

/// byteOf(pPixel, i) is byte i of the destination pixel that pPixel becomes.
template <class ByteOf> void CheckKernels(const PixelRule& rule, ByteOf byteOf)
{
    const auto kernels = KernelsFor(rule);
    EXPECT_STREQ("portable", kernels.back().pszName);
    EXPECT_TRUE(kernels.back().pRunsHere());
    EXPECT_TRUE(BestKernelFor(rule).pRunsHere());
    for (const LineKernel& kernel : kernels) {
        for (int nPixels = 0; kernel.pRunsHere() && nPixels <= 40; ++nPixels) {
            Bytes source(std::size_t(nPixels * rule.nSrcBytes)); // to the byte: the address sanitizer watches
            std::iota(source.begin(), source.end(), kGuard);
            Bytes expected;
            for (int i = 0; i < nPixels * rule.nDstBytes; ++i)
                expected.push_back(
                    byteOf(source.data() + i / rule.nDstBytes * rule.nSrcBytes, i % rule.nDstBytes));
            expected.resize(expected.size() + 40, kGuard);
            Bytes line(expected.size(), kGuard);
            kernel.pRun(rule, line.data(), source.data(), std::size_t(nPixels));
            ASSERT_EQ(expected, line) << kernel.pszName << ", " << nPixels << " pixels, " << rule.nSrcBytes
                                      << " to " << rule.nDstBytes << " bytes, fixed " << rule.nFixed;
        }
    }
}

TEST(SampleLines, EveryKernelWritesTheReferenceAndNothingElse)
{
    for (const int nSrc : {2, 3, 4, 5, 6, 8, 12})
        for (const int nDst : {2, 3, 4, 6, 7, 8, 12})
            for (const int nSample : {1, 2})
                for (const bool bOpaque : {false, true})
                    CheckKernels(KeepSamples(nSrc, nDst, nSample, bOpaque),
                                 [=](const unsigned char* pPixel, int i) -> unsigned char {
                                     if (i >= 4 * nSample)
                                         return kGuard;
                                     if (i >= 3 * nSample && (bOpaque || nSrc < 4 * nSample))
                                         return 0xFF;
                                     return i < nSrc ? pPixel[i] : 0;
                                 });
    for (const int nSamples : {3, 4})
        CheckKernels(WidenSamples(nSamples), [=](const unsigned char* pPixel, int i) -> unsigned char {
            return i % 2 != 0 ? 0 : i / 2 < nSamples ? pPixel[i / 2] : 0xFF;
        });
}

} // namespace
