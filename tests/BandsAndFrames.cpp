// Which bytes of the image buffer a band covers, and what a frame takes beyond the image's edges.

#include "TestImages.h"

using Bands = BudgetTest;
using Frames = BudgetTest;

TEST_F(Bands, StayInsideTheImage)
{
    TestImage image(Geometry(3, 40));
    ASSERT_OK(Step({&image}, {}).Alloc());
    ASSERT_OK(image.SetBandHeight(16));
    // line, direction, first and last line
    const int cases[][4] = {{0, 0, 0, 15}, {30, 0, 30, 39}, {39, 0, 39, 39}, {30, 1, 15, 30}, {0, 1, 0, 0}};
    T_ImageLrg_tag band{};
    for (const auto& [nLine, nDirection, nTop, nBottom] : cases) {
        ASSERT_OK(image.MapBand(nLine, &band, nDirection, 0)) << nLine;
        EXPECT_EQ(std::tuple(nTop, nBottom, nBottom - nTop + 1, BufferOf(image) + nTop * 12),
                  std::tuple(band.nBandTop, band.nBandBottom, band.nBandLines, band.pImage));
        EXPECT_EQ(16, image.m_ImgInfo.nBandLines) << "the planned height stays";
        EXPECT_OK(image.UnmapBand(0));
    }
    EXPECT_CODE(MM_LINE_OUTSIDE, image.MapBand(40, &band, MM_BAND_DOWNWARD, 0));
    EXPECT_CODE(MM_LINE_OUTSIDE, image.MapBand(-1, &band, MM_BAND_UPWARD, 0));
    EXPECT_CODE(MM_NO_SUCH_DIRECTION, image.MapBand(5, &band, 2, 0));
    EXPECT_CODE(MM_RANGE_REVERSED, image.MapBandRange(5, 4, &band, 0));
    EXPECT_OK(image.UnmapBand(7)) << "nothing is mapped there";
    EXPECT_OK(image.UnmapBand(10)) << "all is mapped";
    EXPECT_OK(image.UnmapBand(0));
}

TEST_F(Bands, ReachTheFrameInTheMargins)
{
    Shrink(kMiB);
    TestImage image(Geometry(984, 400, 8), 2); // 4000 bytes a line
    ASSERT_OK(Step({&image}, {}).Alloc());
    ASSERT_EQ(ACS_MMF, image.m_pImageCtrl->GetAcsType());
    T_ImageLrg_tag band{};
    ASSERT_OK(image.MapBandRange(10, 19, &band, 1));
    EXPECT_EQ(10, band.nBandLines);
    const std::size_t nGranule = 65536, nPixel = 18 * 4000 + 32, nStart = nPixel - 2 * 4004;
    EXPECT_EQ(0u, (reinterpret_cast<std::uintptr_t>(band.pImage) - 8008 - nStart % nGranule) % 4096);
    std::memset(band.pImage - 8008, 0xAB, 14 * 4000); // all of the frame can be written
    EXPECT_OK(image.UnmapBand(1));
    ASSERT_OK(image.MapBandRange(8, 8, &band, 2));
    EXPECT_EQ(0xAB, band.pImage[0]);
    EXPECT_EQ(0, *(band.pImage - 12)) << "before the frame";
    EXPECT_OK(image.UnmapBand(2));
    EXPECT_CODE(MM_NO_BAND_ADDRESS, image.MapBandRange(500, 510, &band, 0)) << "below the buffer";
    EXPECT_CODE(MM_BAD_ARGUMENT, image.MapBandRange(0, INT_MAX, &band, 0));
}

// A frame may be higher than the margin, and a margin made narrower than the frame that was set before.
TEST_F(Bands, KeepToTheBufferWhereTheFrameDoesNot)
{
    for (const auto& [nMarginX, nMarginY] : {std::pair(4, 1), {0, 2}, {0, 0}}) {
        TestImage image(Geometry(20, 30, 4), 3);
        T_ImageLrg_tag info{}, band{};
        image.GetImageInfo(&info);
        info.nMarginX = nMarginX;
        info.nMarginY = nMarginY;
        ASSERT_OK(image.SetImageInfo(&info));
        ASSERT_OK(Step({&image}, {}).Alloc());
        auto* pBuffer = BufferOf(image);
        for (const int nFirst : {0, 2}) {
            EXPECT_OK(image.MapBandRange(nFirst, 29, &band, 0));
            EXPECT_EQ(pBuffer + (nMarginY + nFirst) * info.nLineBytes + nMarginX * 4, band.pImage);
        }
        ASSERT_OK(image.SetFrameColor(MM_FRAME_COLOR, 0x7FFFFFFF)); // down to the buffer's last line
        EXPECT_EQ(nMarginX == 0 ? 0 : 255, pBuffer[info.nBufSize - info.nLineBytes + 4]);
        for (int i = 0; i < 30 * 80; ++i)
            ASSERT_EQ(0, pBuffer[(nMarginY + i / 80) * info.nLineBytes + nMarginX * 4 + i % 80]) << i;
    }
}

static int Source(int nMode, int nIndex, int nCount)
{
    const int nEdge = nMode == MM_FRAME_MIRROR ? 0 : 1;
    if (nIndex >= 0 && nIndex < nCount)
        return nIndex;
    if (nMode == MM_FRAME_REPLICATE)
        return nIndex < 0 ? 0 : nCount - 1;
    return std::clamp(nIndex < 0 ? -nIndex - nEdge : 2 * (nCount - 1) - nIndex + nEdge, 0, nCount - 1);
}

// Every buffer byte after SetFrameColor, against a reference that looks each pixel up on its own.
static void CheckFrame(int nFormat, int nMode, int nWidth, int nHeight, int nFrame)
{
    const int nMargin = 4, nColor = 0x44332211;
    TestImage image(Geometry(nWidth, nHeight, nMargin, nFormat), nFrame);
    ASSERT_OK(Step({&image}, {}).Alloc());
    const int P = image.m_ImgInfo.nPixelBytes, L = image.m_ImgInfo.nLineBytes,
              nBytes = image.m_ImgInfo.nBufSize;
    auto* pBuffer = static_cast<unsigned char*>(image.m_pImageCtrl->MapBandAdress(0, DWORD(nBytes), 9));
    ASSERT_NE(nullptr, pBuffer);
    for (int i = 0; i < nBytes; ++i)
        pBuffer[i] = static_cast<unsigned char>(i * 31 + i / 251);
    const std::vector<unsigned char> before(pBuffer, pBuffer + nBytes);
    ASSERT_OK(image.SetFrameColor(nMode, nColor));

    for (int y = -nMargin; y < nHeight + nMargin; ++y)
        for (int x = -nMargin; x < nWidth + nMargin; ++x) {
            const bool bBeside = x < 0 || x >= nWidth;
            const bool bInLine = x >= -nFrame && x < nWidth + nFrame;
            const bool bInLines = y >= nHeight - 1 - nFrame && y < nHeight + nFrame;
            const bool bInImage = !bBeside && y >= 0 && y < nHeight;
            const bool bPainted = bInLine && bInLines && !bInImage && (y >= 0 || nHeight == 1 || bBeside);
            // A line above the image keeps its pixels, unless it belongs to the frame of line 0.
            const int nLine = y < 0 && nHeight > 1 ? y : Source(nMode, y, nHeight);
            const int nSrc = (nLine + nMargin) * L + (Source(nMode, x, nWidth) + nMargin) * P;
            const int nDst = (y + nMargin) * L + (x + nMargin) * P;
            for (int i = 0; i < P; ++i) {
                int nExpected = before[std::size_t(bPainted ? nSrc + i : nDst + i)];
                if (bPainted && nMode == MM_FRAME_COLOR)
                    nExpected = P == 8 ? (i % 2 ? 0 : nColor >> (4 * i) & 0xFF) : nColor >> (8 * i) & 0xFF;
                ASSERT_EQ(nExpected, pBuffer[nDst + i]) << "x " << x << " y " << y << " byte " << i;
            }
        }
}

TEST_AT_ANY_ADDRESS(Frames, ArePaintedRoundTheLastLineOnly)
{
    constexpr int kFormats[] = {MM_FORMAT_BGR24, MM_FORMAT_BGRA32, MM_FORMAT_RAW64, 0x202};
    constexpr int kShapes[][3] = {{4, 9, 2}, {1, 1, 3}, {2, 2, 3}, {5, 3, 1}, {3, 1, 2}};
    for (const int nFormat : kFormats)
        for (int nMode = MM_FRAME_REPLICATE; nMode <= MM_FRAME_COLOR; ++nMode)
            for (const auto& [nWidth, nHeight, nFrame] : kShapes)
                for (const bool bFile : {false, true}) {
                    SCOPED_TRACE(testing::PrintToString(std::tuple(nFormat, nMode, nWidth, nHeight, bFile)));
                    bFile ? BudgetTest::Shrink(100) : BudgetTest::Reset();
                    ASSERT_NO_FATAL_FAILURE(CheckFrame(nFormat, nMode, nWidth, nHeight, nFrame));
                }
}

TEST_F(Frames, AreStoredOrRefused)
{
    TestImage image(Geometry(4, 4));
    for (const auto& [nMode, nColor] : {std::pair{-1, 0}, {5, 0}, {4, -1}})
        EXPECT_CODE(MM_BAD_FRAME_MODE, image.SetFrameColor(nMode, nColor));
    EXPECT_EQ(0, image.m_ImgInfo.nFrameMode);
    EXPECT_OK(image.SetFrameColor(MM_FRAME_MIRROR, 0)) << "no frame: nothing is mapped";
    EXPECT_EQ(2, image.m_ImgInfo.nFrameMode);
    TestImage framed(Geometry(4, 4, 2), 1);
    framed.m_nUnitMode = 1;
    EXPECT_OK(framed.SetFrameColor(MM_FRAME_REPLICATE, 0)) << "unit bands are painted when read";
    framed.m_nUnitMode = 0;
    EXPECT_CODE(MM_NO_BAND_ADDRESS, framed.SetFrameColor(MM_FRAME_REPLICATE, 0)) << "nothing is planned";
}
