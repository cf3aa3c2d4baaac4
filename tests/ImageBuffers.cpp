// Buffer layouts, standalone buffers, and the budget they are charged to.

#include "TestImages.h"

#include <array>
#include <climits>

using ImageBuffers = BudgetTest;
using Budget = BudgetTest;

TEST_F(ImageBuffers, AreLaidOutByTypeOrRefused)
{
    using Sizes = std::array<int, 4>; // of the buffer, of a line, and lines and pixels with their margins
    static constexpr Sizes kRefused = {-1, -1, -1, -1};
    const struct
    {
        const char* pszCase;
        int nWidth, nHeight, nMarginX, nMarginY, nFormat, nAlign;
        Sizes sizes = kRefused;
    } cases[] = {
        {"8 bits rounded up", 17, 2, 0, 0, 0x101, 2, {96, 32, 32, 2}},
        {"8 bits on the unit", 16, 2, 0, 0, 0x101, 2, {64, 16, 16, 2}},
        {"32-bit samples", 5, 1, 1, 0, 0x104, 2, {64, 32, 8, 1}},
        {"64-bit samples", 3, 1, 0, 0, 0x108, 2, {64, 32, 4, 1}},
        {"three 16-bit samples", 101, 1, 2, 0, 0x1322, 2, {704, 672, 112, 1}},
        {"spare bytes", 10, 4, 3, 2, 0x101, 1, {160, 16, 16, 8}},
        {"packed, cleared", 10, 4, 3, 2, 0x101, 0x10, {128, 16, 16, 8}},
        {"3-byte samples packed", 4, 1, 0, 0, 0x103, 0, {12, 12, 4, 1}},
        {"3-byte samples aligned", 4, 1, 0, 0, 0x103, 2},
        {"unknown type", 4, 1, 0, 0, 0x101, 3},
        {"buffer above 2 GiB", 30000, 30000, 0, 0, 0x401, 0},
        {"buffer wraps to a small number", 65536, 65537, 0, 0, 0x101, 0},
        {"margins above 2 GiB", 1, 1, INT_MAX, 0, 0x101, 0},
        {"spare bytes above 2 GiB", INT_MAX, 1, 0, 0, 0x101, 1},
        {"negative height", 1, -1, 0, 0, 0x101, 0},
        {"largest", INT_MAX, 1, 0, 0, 0x101, 0, {INT_MAX, INT_MAX, INT_MAX, 1}},
    };
    CImageObj image;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pszCase);
        auto [nBuffer, nLine, nWidth, nHeight] = kRefused;
        EXPECT_CODE(c.sizes == kRefused ? MM_BAD_ARGUMENT : MM_SUCCESS,
                    image.CalcImgBufLrg(nBuffer, nLine, nWidth, nHeight, c.nWidth, c.nHeight, c.nMarginX,
                                        c.nMarginY, c.nFormat, c.nAlign));
        EXPECT_EQ(c.sizes, (Sizes{nBuffer, nLine, nWidth, nHeight}));
    }
}

TEST_F(ImageBuffers, AreChargedFilledInAndGivenBack)
{
    CImageObj::InitBaseMemory(12 * kMiB, 12 * kMiB);
    for (int nAlign : {0, 1, 2, 0x12}) {
        SCOPED_TRACE(nAlign);
        T_ImageLrg_tag info{};
        info.nFsize = 7;
        ASSERT_OK(CImageObj::AllcImgBufLrg(&info, 2001, 1500, 3, 2, MM_FORMAT_RAW64, nAlign));
        EXPECT_EQ(12 * kMiB - info.nBufSize, CImageObj::AskFreeMemory()) << "charged even beyond the budget";
        EXPECT_LT(CImageObj::AskFreeMemory(), 0);
        EXPECT_EQ(nAlign & 0xF, info.nAlignType);
        EXPECT_EQ(8, info.nPixelBytes);
        EXPECT_EQ(4 * info.nAllocWidth, info.nLineSamples);
        EXPECT_EQ(7, info.nFsize) << "frame state is the owner's";

        const auto nBefore = info.pImage - info.pBase;
        const auto nPacked = 2 * info.nLineBytes + 3 * 8;
        EXPECT_GE(nBefore, nPacked);
        EXPECT_LT(nBefore, nPacked + 16);
        if (info.nAlignType != 0) {
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(info.pImage) % 16);
        }
        EXPECT_EQ(0, info.pBase[0]);
        EXPECT_EQ(0, info.pBase[info.nBufSize - 1]);
        info.pBase[info.nBufSize - 1] = 1;
        CImageObj::FreeImgBufLrg(&info);
        EXPECT_EQ(12 * kMiB, CImageObj::AskFreeMemory());
    }
    T_ImageLrg_tag none{};
    CImageObj::FreeImgBufLrg(&none);
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::AllcImgBufLrg(&none, 1, 1, 0, 0, 0x103, 2));
    EXPECT_EQ(12 * kMiB, CImageObj::AskFreeMemory());
    EXPECT_EQ(nullptr, none.pBase);
}

TEST_F(ImageBuffers, KeepAPixelSizeOfTheirOwn)
{
    T_ImageLrg_tag info = Geometry(5, 2, 1, 0x101, MM_ALIGN_LINES);
    info.nSampleBytes = 1;
    info.nSamples = 1;
    info.nPixelBytes = 3;
    CImageObj image;
    ASSERT_OK(image.CalcAlign(&info));
    EXPECT_EQ(16, info.nAllocWidth) << "rounded by the sample size";
    EXPECT_EQ(48, info.nLineBytes) << "sized by the pixel size";
    EXPECT_EQ(16, info.nLineSamples);
}

TEST_F(Budget, IsSizedWithinItsLimits)
{
    const struct
    {
        LONG nReserve, nMapping, nExpectedReserve, nExpectedMapping;
    } cases[] = {
        {0, 0, 12, 12}, {200, 64, 200, 32}, {20, 64, 20, 20}, {100, 1, 100, 12}, {64, 24, 64, 24},
    };
    for (const auto& c : cases) {
        EXPECT_OK(CImageObj::InitBaseMemory(c.nReserve * kMiB, c.nMapping * kMiB));
        EXPECT_EQ(c.nExpectedReserve * kMiB, CImageObj::ms_ReserveMemory);
        EXPECT_EQ(c.nExpectedReserve * kMiB, CImageObj::AskFreeMemory());
        EXPECT_EQ(c.nExpectedMapping * kMiB, CImageObj::ms_MaxOneMappingSize);
    }
}

TEST_F(Budget, NeverRisesAboveTheReserveNorWraps)
{
    CImageObj::UpdateUseMemory(-5 * kMiB);
    EXPECT_EQ(95 * kMiB, CImageObj::AskFreeMemory());
    CImageObj::UpdateUseMemory(6 * kMiB);
    EXPECT_EQ(100 * kMiB, CImageObj::AskFreeMemory());
    CImageObj::UpdateUseMemory(INT_MIN);
    CImageObj::UpdateUseMemory(INT_MIN);
    EXPECT_EQ(INT_MIN, CImageObj::AskFreeMemory());
    CImageObj::ms_FreeMemory = 7;
    EXPECT_EQ(7, CImageObj::AskUseMemory());
    EXPECT_EQ(0, CImageObj::AskUseMemory()) << "the second taker finds nothing";

    for (LONG nRefused : {0, -1, 2048, INT_MAX})
        EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::SetUseMaxBandMemory(nRefused));
    EXPECT_EQ(24 * kMiB, CImageObj::GetUseMaxBandMemory());
    EXPECT_EQ(0, CImageObj::SetUseMaxBandMemory(2047));
    EXPECT_EQ(2047 * kMiB, CImageObj::GetUseMaxBandMemory());
}
