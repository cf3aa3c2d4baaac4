// Which bytes of the image buffer a band covers, and what a frame takes beyond the image's edges.

#include "TestImages.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <tuple>

using Bands = BudgetTest;
using Frames = BudgetTest;

TEST_F(Bands, StayInsideTheImage)
{
    const struct
    {
        const char* pszCase;
        int nLine, nDirection;
        DWORD nResult;
        int nTop, nBottom;
    } cases[] = {
        {"down from the top", 0, 0, 0, 0, 15},     {"down, cut at the bottom", 30, 0, 0, 30, 39},
        {"the last line alone", 39, 0, 0, 39, 39}, {"up", 30, 1, 0, 15, 30},
        {"up, cut at the top", 0, 1, 0, 0, 0},     {"below the image", 40, 0, 97, 0, 0},
        {"above the image", -1, 1, 97, 0, 0},      {"no such direction", 5, 2, 113, 0, 0},
    };
    TestImage image(Geometry(3, 40));
    ASSERT_EQ(MM_SUCCESS, Step({&image}, {}).Alloc());
    ASSERT_EQ(MM_SUCCESS, image.SetBandHeight(16));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pszCase);
        T_ImageLrg_tag band{};
        EXPECT_EQ(c.nResult, image.MapBand(c.nLine, &band, c.nDirection, 0));
        if (c.nResult != MM_SUCCESS)
            continue;
        EXPECT_EQ(std::tuple(c.nTop, c.nBottom, c.nBottom - c.nTop + 1),
                  std::tuple(band.nBandTop, band.nBandBottom, band.nBandLines));
        EXPECT_EQ(16, image.m_ImgInfo.nBandLines) << "the planned height stays";
        EXPECT_EQ(static_cast<unsigned char*>(image.m_pImageCtrl->GetMemPtr()) + c.nTop * 12, band.pImage);
        EXPECT_EQ(MM_SUCCESS, image.UnmapBand(0));
    }
    T_ImageLrg_tag band{};
    EXPECT_EQ(MM_RANGE_REVERSED, image.MapBandRange(5, 4, &band, 0));
    EXPECT_EQ(MM_SUCCESS, image.UnmapBand(7)) << "nothing is mapped there";
    EXPECT_EQ(MM_BAD_ARGUMENT, image.UnmapBand(10));
    EXPECT_EQ(MM_SUCCESS, image.UnmapBand(0));
}

TEST_F(Bands, ReachTheFrameInTheMargins)
{
    Shrink(kMiB);
    TestImage image(Geometry(984, 400, 8)); // 4000 bytes a line
    image.SetFsize(2);
    ASSERT_EQ(MM_SUCCESS, Step({&image}, {}).Alloc());
    ASSERT_EQ(ACS_MMF, image.m_pImageCtrl->GetAcsType());
    T_ImageLrg_tag band{};
    ASSERT_EQ(MM_SUCCESS, image.MapBandRange(10, 19, &band, 1));
    EXPECT_EQ(10, band.nBandLines);
    const std::size_t nGranule = 65536, nPixel = 18 * 4000 + 32, nStart = nPixel - 2 * 4004;
    EXPECT_EQ(0u, (reinterpret_cast<std::uintptr_t>(band.pImage) - 8008 - nStart % nGranule) % 4096);
    std::memset(band.pImage - 8008, 0xAB, 14 * 4000); // all of the frame can be written
    EXPECT_EQ(MM_SUCCESS, image.UnmapBand(1));
    ASSERT_EQ(MM_SUCCESS, image.MapBandRange(8, 8, &band, 2));
    EXPECT_EQ(0xAB, band.pImage[0]);
    EXPECT_EQ(0, *(band.pImage - 12)) << "before the frame";
    EXPECT_EQ(MM_SUCCESS, image.UnmapBand(2));
    EXPECT_EQ(MM_NO_BAND_ADDRESS, image.MapBandRange(500, 510, &band, 0)) << "below the buffer";
    EXPECT_EQ(MM_BAD_ARGUMENT, image.MapBandRange(0, INT_MAX, &band, 0));
}

// A frame may be higher than the margin, and a margin made narrower than the frame that was set before.
TEST_F(Bands, KeepToTheBufferWhereTheFrameDoesNot)
{
    for (const auto& [nMarginX, nMarginY] : {std::pair(4, 1), {0, 2}, {0, 0}}) {
        TestImage image(Geometry(20, 30, 4));
        image.SetFsize(3);
        T_ImageLrg_tag info{}, band{};
        image.GetImageInfo(&info);
        info.nMarginX = nMarginX;
        info.nMarginY = nMarginY;
        ASSERT_EQ(MM_SUCCESS, image.SetImageInfo(&info));
        ASSERT_EQ(MM_SUCCESS, Step({&image}, {}).Alloc());
        auto* pBuffer = static_cast<unsigned char*>(image.m_pImageCtrl->GetMemPtr());
        for (const int nFirst : {0, 2}) {
            EXPECT_EQ(MM_SUCCESS, image.MapBandRange(nFirst, 29, &band, 0));
            EXPECT_EQ(pBuffer + (nMarginY + nFirst) * info.nLineBytes + nMarginX * 4, band.pImage);
        }
        ASSERT_EQ(MM_SUCCESS,
                  image.SetFrameColor(MM_FRAME_COLOR, 0x7FFFFFFF)); // down to the buffer's last line
        EXPECT_EQ(nMarginX == 0 ? 0 : 255, pBuffer[info.nBufSize - info.nLineBytes + 4]);
        for (int i = 0; i < 30 * 80; ++i)
            ASSERT_EQ(0, pBuffer[(nMarginY + i / 80) * info.nLineBytes + nMarginX * 4 + i % 80]) << i;
    }
}

namespace {

int Source(int nMode, int nIndex, int nCount)
{
    const int nEdge = nMode == MM_FRAME_MIRROR ? 0 : 1;
    if (nIndex >= 0 && nIndex < nCount)
        return nIndex;
    if (nMode == MM_FRAME_REPLICATE)
        return nIndex < 0 ? 0 : nCount - 1;
    return std::clamp(nIndex < 0 ? -nIndex - nEdge : 2 * (nCount - 1) - nIndex + nEdge, 0, nCount - 1);
}

} // namespace

// Every buffer byte after SetFrameColor, against a reference that looks each pixel up on its own.
TEST_F(Frames, ArePaintedRoundTheLastLineOnly)
{
    const int nColor = 0x44332211;
    for (int nFormat : {int(MM_FORMAT_BGR24), int(MM_FORMAT_BGRA32), int(MM_FORMAT_RAW64), 0x202})
        for (int nMode = MM_FRAME_REPLICATE; nMode <= MM_FRAME_COLOR; ++nMode)
            for (const auto& [nWidth, nHeight, F] :
                 {std::array{4, 9, 2}, {1, 1, 3}, {2, 2, 3}, {5, 3, 1}, {3, 1, 2}}) {
                SCOPED_TRACE(testing::Message() << std::hex << nFormat << std::dec << " mode " << nMode
                                                << " size " << nWidth << "x" << nHeight << " frame " << F);
                const int nMargin = 4;
                TestImage image(Geometry(nWidth, nHeight, nMargin, nFormat));
                image.SetFsize(F);
                ASSERT_EQ(MM_SUCCESS, Step({&image}, {}).Alloc());
                auto* pBuffer = static_cast<unsigned char*>(image.m_pImageCtrl->GetMemPtr());
                const int P = image.m_ImgInfo.nPixelBytes, L = image.m_ImgInfo.nLineBytes;
                for (int i = 0; i < image.m_ImgInfo.nBufSize; ++i)
                    pBuffer[i] = static_cast<unsigned char>(i * 31 + i / 251);
                const std::vector<unsigned char> before(pBuffer, pBuffer + image.m_ImgInfo.nBufSize);
                ASSERT_EQ(MM_SUCCESS, image.SetFrameColor(nMode, nColor));

                for (int y = -nMargin; y < nHeight + nMargin; ++y)
                    for (int x = -nMargin; x < nWidth + nMargin; ++x) {
                        const bool bInLine = x >= -F && x < nWidth + F;
                        const bool bInImage = x >= 0 && x < nWidth && y >= 0 && y < nHeight;
                        const bool bPainted = bInLine && !bInImage && y >= nHeight - 1 - F &&
                                              y < nHeight + F &&
                                              (y >= 0 || nHeight == 1 || x < 0 || x >= nWidth);
                        // A line above the image keeps its pixels, unless it belongs to the frame of line 0.
                        const int nLine = y < 0 && nHeight > 1 ? y : Source(nMode, y, nHeight);
                        const int nSrc = (nLine + nMargin) * L + (Source(nMode, x, nWidth) + nMargin) * P;
                        const int nDst = (y + nMargin) * L + (x + nMargin) * P;
                        for (int i = 0; i < P; ++i) {
                            int nExpected = before[std::size_t(bPainted ? nSrc + i : nDst + i)];
                            if (bPainted && nMode == MM_FRAME_COLOR)
                                nExpected = P == 8 ? (i % 2 ? 0 : nColor >> (4 * i) & 0xFF)
                                                   : nColor >> (8 * i) & 0xFF;
                            ASSERT_EQ(nExpected, pBuffer[nDst + i])
                                << "x " << x << " y " << y << " byte " << i;
                        }
                    }
            }
}

TEST_F(Frames, AreStoredOrRefused)
{
    TestImage image(Geometry(4, 4));
    for (const auto& [nMode, nColor] : {std::pair{-1, 0}, {5, 0}, {4, -1}})
        EXPECT_EQ(MM_BAD_FRAME_MODE, image.SetFrameColor(nMode, nColor));
    EXPECT_EQ(0, image.m_ImgInfo.nFrameMode);
    EXPECT_EQ(MM_SUCCESS, image.SetFrameColor(MM_FRAME_MIRROR, 0)) << "no frame: nothing is mapped";
    EXPECT_EQ(2, image.m_ImgInfo.nFrameMode);
    TestImage framed(Geometry(4, 4, 2));
    framed.SetFsize(1);
    framed.m_nUnitMode = 1;
    EXPECT_EQ(MM_SUCCESS, framed.SetFrameColor(MM_FRAME_REPLICATE, 0)) << "unit bands are painted when read";
    framed.m_nUnitMode = 0;
    EXPECT_EQ(MM_NO_BAND_ADDRESS, framed.SetFrameColor(MM_FRAME_REPLICATE, 0))
        << "not planned: nothing to map";
}
