// Buffer layouts, standalone buffers, and the budget they are charged to.

#include "TestImages.h"

using ImageBuffers = BudgetTest;
using Budget = BudgetTest;

TEST_F(ImageBuffers, AreLaidOutByTypeOrRefused)
{
    using Sizes = std::array<int, 4>; // of the buffer, of a line, and lines and pixels with their margins
    static constexpr Sizes kRefused = {-1, -1, -1, -1};
    const std::tuple<const char*, int, int, int, int, int, int, Sizes> cases[] = {
        // width, height, margins, format and alignment
        {"8 bits rounded up", 17, 2, 0, 0, 0x101, 2, {96, 32, 32, 2}},
        {"8 bits on the unit", 16, 2, 0, 0, 0x101, 2, {64, 16, 16, 2}},
        {"32-bit samples", 5, 1, 1, 0, 0x104, 2, {64, 32, 8, 1}},
        {"64-bit samples", 3, 1, 0, 0, 0x108, 2, {64, 32, 4, 1}},
        {"three 16-bit samples", 101, 1, 2, 0, 0x1322, 2, {704, 672, 112, 1}},
        {"spare bytes", 10, 4, 3, 2, 0x101, 1, {160, 16, 16, 8}},
        {"packed, cleared", 10, 4, 3, 2, 0x101, 0x10, {128, 16, 16, 8}},
        {"3-byte samples packed", 4, 1, 0, 0, 0x103, 0, {12, 12, 4, 1}},
        {"3-byte samples aligned", 4, 1, 0, 0, 0x103, 2, kRefused},
        {"unknown type", 4, 1, 0, 0, 0x101, 3, kRefused},
        {"buffer above 2 GiB", 30000, 30000, 0, 0, 0x401, 0, kRefused},
        {"buffer wraps to a small number", 65536, 65537, 0, 0, 0x101, 0, kRefused},
        {"margins above 2 GiB", 1, 1, INT_MAX, 0, 0x101, 0, kRefused},
        {"spare bytes above 2 GiB", INT_MAX, 1, 0, 0, 0x101, 1, kRefused},
        {"negative height", 1, -1, 0, 0, 0x101, 0, kRefused},
        {"largest", INT_MAX, 1, 0, 0, 0x101, 0, {INT_MAX, INT_MAX, INT_MAX, 1}}};
    CImageObj image;
    for (const auto& [pszCase, nWidth, nHeight, nMarginX, nMarginY, nFormat, nAlign, wanted] : cases) {
        Sizes found = kRefused;
        auto& [nBuffer, nLine, nAllWidth, nAllHeight] = found;
        EXPECT_CODE(wanted == kRefused ? MM_BAD_ARGUMENT : MM_SUCCESS,
                    image.CalcImgBufLrg(nBuffer, nLine, nAllWidth, nAllHeight, nWidth, nHeight, nMarginX,
                                        nMarginY, nFormat, nAlign))
            << pszCase;
        EXPECT_EQ(wanted, found) << pszCase;
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
        // the frame state is the owner's
        EXPECT_EQ(std::tuple(nAlign & 0xF, 8, 4 * info.nAllocWidth, 7),
                  std::tuple(info.nAlignType, info.nPixelBytes, info.nLineSamples, info.nFsize));
        const auto nSpare = info.pImage - info.pBase - 2 * info.nLineBytes - 3 * 8;
        EXPECT_TRUE(nSpare >= 0 && nSpare < 16) << nSpare;
        EXPECT_TRUE(info.nAlignType == 0 || reinterpret_cast<std::uintptr_t>(info.pImage) % 16 == 0);
        EXPECT_EQ(std::pair(0, 0), std::pair(int{info.pBase[0]}, int{info.pBase[info.nBufSize - 1]}));
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

TEST_F(Budget, IsSizedWithinItsLimits)
{
    // asked for and given: reserve and mapping, in MiB
    const int cases[][4] = {
        {0, 0, 12, 12}, {200, 64, 200, 32}, {20, 64, 20, 20}, {100, 1, 100, 12}, {64, 24, 64, 24}};
    for (const auto& [nReserve, nMapping, nGivenReserve, nGivenMapping] : cases) {
        EXPECT_OK(CImageObj::InitBaseMemory(nReserve * kMiB, nMapping * kMiB));
        EXPECT_EQ((std::array{nGivenReserve * kMiB, nGivenReserve * kMiB, nGivenMapping * kMiB}),
                  (std::array{CImageObj::ms_ReserveMemory, CImageObj::AskFreeMemory(),
                              CImageObj::ms_MaxOneMappingSize}));
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
    Reset();
}
