// Image objects: geometry taken over from a source, settings with limits, exchange, and their store's life.

#include "TestImages.h"

using ImageObject = BudgetTest;

TEST_F(ImageObject, TakesItsGeometryFromASource)
{
    TestImage source(Geometry(100, 50, 4, MM_FORMAT_BGR24, MM_ALIGN_LINES), 2);
    source.m_ImgInfo.nBandLines = 7;
    // width, height, a pixel's bytes and samples, a line's bytes and samples, format, and the band state,
    // which is not taken over
    using Numbers = std::array<int, 9>;
    const auto expect = [&](const Numbers& wanted, const CImageObj& image, const char* pszCase) {
        const auto& i = image.m_ImgInfo;
        EXPECT_EQ(wanted, (Numbers{i.nWidth, i.nHeight, i.nPixelBytes, i.nSamples, i.nLineBytes,
                                   i.nLineSamples, i.nFormat, i.nBandLines, i.nFsize}))
            << pszCase;
        EXPECT_TRUE(image.m_pImageCtrl && image.m_pImageCtrl != source.m_pImageCtrl) << pszCase;
    };
    expect({100, 50, 3, 3, 336, 336, 0x1301}, CImageObj(&source), "as it is");
    expect({100, 50, 3, 3, 336, 336, 0x1301}, CImageObj(&source, 0, -1, 0), "nothing replaced");
    expect({10, 20, 5, 3, 160, 96, 0x1301}, CImageObj(&source, 10, 20, 5), "own pixel size");
    expect({10, 50, 8, 4, 96, 48, 0x1301}, CImageObj(&source, 10, 0, 1, 1, 0x0422, 0), "own samples");
}

TEST_F(ImageObject, CompletesAGeometryOrRefusesIt)
{
    CImageObj image;
    EXPECT_EQ(1, image.IsOnMemory()) << "nothing needs nothing";
    EXPECT_OK(image.Destroy());
    T_ImageLrg_tag info = Geometry(10, 4, 0, MM_FORMAT_RAW48);
    ASSERT_OK(image.SetImageInfo(&info));
    EXPECT_EQ(60, info.nLineBytes);
    EXPECT_EQ(240, image.GetAreaSize());

    T_ImageLrg_tag huge = Geometry(INT_MAX, 4, 0, MM_FORMAT_RAW48);
    EXPECT_CODE(MM_BAD_ARGUMENT, image.SetImageInfo(&huge));
    EXPECT_EQ(0, huge.nPixelBytes);
    EXPECT_EQ(240, image.GetAreaSize()) << "a refused geometry changes nothing";

    image.m_nUnitMode = 1;
    image.m_ImgInfo.nBandLines = 3;
    ASSERT_OK(image.SetImageInfo(&info));
    EXPECT_EQ(8, info.nPixelBytes) << "unit bands have four samples";
    unsigned char buffer[1];
    info.pBase = buffer;
    ASSERT_OK(image.SetImageInfo(&info));
    EXPECT_EQ(buffer, std::exchange(info.pBase, nullptr)) << "the caller's own buffer";
    EXPECT_EQ(nullptr, image.m_ImgInfo.pBase);
    EXPECT_EQ(3, info.nBandLines);
    EXPECT_OK(image.SetBandHeight(2));
    image.m_ImgInfo.nBandLines = 1;
    image.GetImageInfo(&info);
    EXPECT_EQ(2, info.nBandLines) << "unit mode reports the height that was set";
    T_ImageLrg_tag wide = Geometry(INT_MAX / 8 - 16, 1 << 20, 2, MM_FORMAT_RAW48, MM_ALIGN_LINES);
    ASSERT_OK(image.SetImageInfo(&wide)) << "larger than any buffer, read line by line";
    EXPECT_EQ(std::pair(-1, (1 << 20) + 4), std::pair(wide.nBufSize, wide.nAllocHeight));
    EXPECT_EQ(8 * wide.nAllocWidth, wide.nLineBytes);
    wide.nWidth = INT_MAX;
    EXPECT_CODE(MM_BAD_ARGUMENT, image.SetImageInfo(&wide));
    image.m_nUnitMode = 2;
    EXPECT_CODE(MM_UNKNOWN_MODE, image.MapBandRange(0, 0, &wide, 0));
}

TEST_F(ImageObject, KeepsSettingsWithinTheirLimits)
{
    TestImage image(Geometry(100, 1000, 8));
    image.m_ImgInfo.nBandLines = 20;
    const std::tuple<DWORD (CImageObj::*)(int), int, DWORD> cases[] = {
        {&CImageObj::SetFsize, 8, MM_SUCCESS},         {&CImageObj::SetFsize, 9, MM_BAD_FRAME_SIZE},
        {&CImageObj::SetFsize, -1, MM_BAD_FRAME_SIZE}, {&CImageObj::SetRatio, 0, MM_SUCCESS},
        {&CImageObj::SetRatio, -1, MM_BAD_RATIO},      {&CImageObj::SetBandHeight, 21, MM_BAD_BAND_HEIGHT},
        {&CImageObj::SetBandHeight, 12, MM_SUCCESS},   {&CImageObj::SetBandHeight, 13, MM_BAD_BAND_HEIGHT}};
    for (const auto& [pSet, nValue, nResult] : cases)
        EXPECT_CODE(nResult, (image.*pSet)(nValue)) << nValue;
    EXPECT_EQ(std::pair(8, 12), std::pair(image.m_ImgInfo.nFsize, image.GetBandHeight()));
}

TEST_F(ImageObject, ChargesBandsWithTheirFrame)
{
    // lines and count of the bands, lines of the frame; lines that are charged, and of the bands
    const int cases[][5] = {{5, 1, 0, 16, 16},        {100, 2, 8, 200, 84}, {5, 1, 8, 16, 16},
                            {5000, 1, 0, 1016, 1000}, {17, 1, 0, 17, 17},   {0, 3, 8, 1016, 1000}};
    for (const auto& [nBand, nCount, nFrame, nLines, nBandLines] : cases) {
        TestImage image(Geometry(10, 1000, 8), nFrame);
        EXPECT_EQ(nLines * image.m_ImgInfo.nLineBytes, image.SetBandInfo(nBand, nCount)) << nBand;
        EXPECT_EQ(nBandLines, image.m_ImgInfo.nBandLines) << nBand;
    }
    EXPECT_EQ(INT_MAX, TestImage(Geometry(500000000, 1)).SetBandInfo(1, 10)) << "held within 32 bits";
}

/// Writes the picture of a number, or finds it, upwards in two-line ranges: through views of its own.
static void VisitLines(CImageObj& image, int nPicture, bool bWrite)
{
    const int nSlot = bWrite ? 0 : 3;
    T_ImageLrg_tag band{};
    for (int nLast = image.m_ImgInfo.nHeight - 1; nLast >= 0; nLast -= 2) {
        ASSERT_OK(image.MapBandRange(std::max(nLast - 1, 0), nLast, &band, nSlot));
        for (int i = 0; i < band.nBandLines * band.nWidth * 3; ++i) {
            const int y = i / (band.nWidth * 3), x = i % (band.nWidth * 3);
            const auto nValue = static_cast<unsigned char>(nPicture + (band.nBandTop + y) * 7 + x);
            auto& nByte = band.pImage[y * band.nLineBytes + x];
            if (bWrite)
                nByte = nValue;
            ASSERT_EQ(nValue, nByte) << "line " << band.nBandTop + y << " byte " << x;
        }
        ASSERT_OK(image.UnmapBand(nSlot));
    }
}

// One image through every state of its store: the pixels stay, and each state costs what it says.
TEST_F(ImageObject, KeepsItsPixelsInEveryKindOfStore)
{
    Shrink(4 * kMiB);
    TestImage image(Geometry(301, 700, 3, MM_FORMAT_BGR24, MM_ALIGN_LINES));
    const LONG nWhole = image.GetAreaSize();
    ASSERT_OK(Step({&image}, {}).Alloc());
    VisitLines(image, 1, true);
    VisitLines(image, 1, false);
    EXPECT_EQ(4 * kMiB - nWhole, CImageObj::AskFreeMemory());

    ASSERT_OK(image.CnvFileImg());
    EXPECT_EQ(4 * kMiB, CImageObj::AskFreeMemory());
    EXPECT_EQ(nullptr, image.m_pImageCtrl->GetMemPtr());
    VisitLines(image, 1, false);
    T_ImageLrg_tag band{};
    EXPECT_CODE(MM_RANGE_REVERSED, image.MapBand(0, &band, MM_BAND_DOWNWARD, 0)) << "not planned yet";

    ASSERT_OK(Step({&image}, {}).Alloc());
    EXPECT_EQ(1, image.m_pImageCtrl->GetAllMapFlg());
    VisitLines(image, 1, false);
    ASSERT_OK(image.CnvFileImg());

    Shrink(kMiB / 8);
    ASSERT_OK(Step({&image}, {}).Alloc());
    EXPECT_EQ(0, image.m_pImageCtrl->GetAllMapFlg());
    EXPECT_LT(image.m_ImgInfo.nBandLines, 700);
    VisitLines(image, 3, true);
    VisitLines(image, 3, false);

    CImageObj other;
    other.ExchangeImg(&image);
    EXPECT_EQ(nullptr, image.m_pImageCtrl);
    EXPECT_EQ(kMiB / 8, CImageObj::AskFreeMemory()) << "a file that changes hands is planned afresh";
    VisitLines(other, 3, false);
    EXPECT_OK(other.Destroy());
}

TEST_F(ImageObject, MovesWhatMayExistOnce) // and is given back once
{
    TestImage source(Geometry(10, 10)), spare(Geometry(10, 10));
    ASSERT_CODE(MM_TOO_MANY_OUTPUTS, Step({&source}, {&spare, &spare}).Alloc());
    CImageObj target;
    CImageObj::ExchangeImg(&target, &source);
    EXPECT_EQ(std::pair(1, 0), std::pair(target.m_nReserveTaken, source.m_nReserveTaken));
    EXPECT_EQ(nullptr, target.m_pImageCtrl);
    EXPECT_EQ(10, target.m_ImgInfo.nWidth);
    EXPECT_EQ(0, CImageObj::AskFreeMemory());
    spare.ExchangeImg(&target);
    EXPECT_EQ(std::pair(1, 0), std::pair(spare.m_nReserveTaken, target.m_nReserveTaken));
    CImageObj::ExchangeImg(&spare, &target);
    EXPECT_EQ(1, spare.m_nReserveTaken) << "the target's own mark";
}
