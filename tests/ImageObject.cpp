// Image objects: geometry taken over from a source, settings with limits, exchange, and their store's life.

#include "TestImages.h"

using ImageObject = BudgetTest;

TEST_F(ImageObject, TakesItsGeometryFromASource)
{
    TestImage source(Geometry(100, 50, 4, MM_FORMAT_BGR24, MM_ALIGN_LINES));
    source.SetFsize(2);
    source.m_ImgInfo.nBandLines = 7;
    using Numbers = std::array<int, 8>; // width, height, a pixel's bytes and samples, a line's bytes, format,
                                        // and the band state, which is not taken over
    const auto expect = [&](const Numbers& wanted, const CImageObj& image, const char* pszCase) {
        const auto& info = image.m_ImgInfo;
        EXPECT_EQ(wanted, (Numbers{info.nWidth, info.nHeight, info.nPixelBytes, info.nSamples,
                                   info.nLineBytes, info.nFormat, info.nBandLines, info.nFsize}))
            << pszCase;
        EXPECT_NE(nullptr, image.m_pImageCtrl) << pszCase;
        EXPECT_NE(source.m_pImageCtrl, image.m_pImageCtrl) << pszCase;
    };
    expect({100, 50, 3, 3, 336, 0x1301}, CImageObj(&source), "as it is");
    expect({100, 50, 3, 3, 336, 0x1301}, CImageObj(&source, 0, -1, 0), "nothing replaced");
    expect({10, 20, 5, 3, 32 * 5, 0x1301}, CImageObj(&source, 10, 20, 5), "own pixel size");
    expect({10, 50, 8, 4, 96, 0x1301}, CImageObj(&source, 10, 0, 1, 1, MM_FORMAT_RAW64, 0), "own samples");
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
        TestImage image(Geometry(10, 1000, 8));
        image.SetFsize(nFrame);
        EXPECT_EQ(nLines * image.m_ImgInfo.nLineBytes, image.SetBandInfo(nBand, nCount)) << nBand;
        EXPECT_EQ(nBandLines, image.m_ImgInfo.nBandLines) << nBand;
    }
    EXPECT_EQ(INT_MAX, TestImage(Geometry(500000000, 1)).SetBandInfo(1, 10)) << "held within 32 bits";
}

/// Gives the work every byte of a band's own pixels, and the value that it has in this test.
template <class Work> static void ForEachByte(const T_ImageLrg_tag& band, int nSeed, Work work)
{
    for (int k = 0; k < band.nBandLines; ++k)
        for (int x = 0; x < band.nWidth * band.nPixelBytes; ++x)
            work(band.pImage[k * band.nLineBytes + x],
                 static_cast<unsigned char>(nSeed + (band.nBandTop + k) * 7 + x));
}

static void WriteLines(CImageObj& image, int nSeed)
{
    ForEachBand(image, [&](const auto& band) {
        ForEachByte(band, nSeed, [](auto& nByte, auto nValue) { nByte = nValue; });
    });
}

// Reads upwards in two-line ranges, so that other views than the writer's are used.
static void ExpectLines(CImageObj& image, int nSeed)
{
    T_ImageLrg_tag band{};
    for (int nLast = image.m_ImgInfo.nHeight - 1; nLast >= 0; nLast -= 2) {
        ASSERT_OK(image.MapBandRange(std::max(nLast - 1, 0), nLast, &band, 3));
        ForEachByte(band, nSeed, [&](auto nByte, auto nValue) { ASSERT_EQ(nValue, nByte) << nLast; });
        ASSERT_OK(image.UnmapBand(3));
    }
}

// One image through every state of its store: the pixels stay, and each state costs what it says.
TEST_F(ImageObject, KeepsItsPixelsInEveryKindOfStore)
{
    Shrink(4 * kMiB);
    TestImage image(Geometry(301, 700, 3, MM_FORMAT_BGR24, MM_ALIGN_LINES));
    const LONG nWhole = image.GetAreaSize();
    ASSERT_OK(Step({&image}, {}).Alloc());
    WriteLines(image, 1);
    ExpectLines(image, 1);
    EXPECT_EQ(4 * kMiB - nWhole, CImageObj::AskFreeMemory());

    ASSERT_OK(image.CnvFileImg());
    EXPECT_EQ(4 * kMiB, CImageObj::AskFreeMemory());
    EXPECT_EQ(nullptr, image.m_pImageCtrl->GetMemPtr());
    ExpectLines(image, 1);
    T_ImageLrg_tag band{};
    EXPECT_CODE(MM_RANGE_REVERSED, image.MapBand(0, &band, MM_BAND_DOWNWARD, 0)) << "not planned yet";

    ASSERT_OK(Step({&image}, {}).Alloc());
    EXPECT_EQ(1, image.m_pImageCtrl->GetAllMapFlg());
    ExpectLines(image, 1);
    ASSERT_OK(image.CnvFileImg());

    Shrink(kMiB / 8);
    ASSERT_OK(Step({&image}, {}).Alloc());
    EXPECT_EQ(0, image.m_pImageCtrl->GetAllMapFlg());
    EXPECT_LT(image.m_ImgInfo.nBandLines, 700);
    WriteLines(image, 3);
    ExpectLines(image, 3);

    CImageObj other;
    other.ExchangeImg(&image);
    EXPECT_EQ(nullptr, image.m_pImageCtrl);
    EXPECT_EQ(kMiB / 8, CImageObj::AskFreeMemory()) << "a file that changes hands is planned afresh";
    ExpectLines(other, 3);
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
}
