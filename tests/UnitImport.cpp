// Setting unit objects up and sending images through them: band heights against a search line by line,
// headers, refusals before anything is written, and duplication over every way to a file or block.

#include "ExternalPictures.h"

constexpr tag_E_ACSTYPE kAccesses[] = {ACS_MMF, ACS_MEMORY, ACS_FILEIO};

/// An external image of one of the host's data types.
static T_ImgInf Image(int nType, tag_E_ACSTYPE eAccess, void* pData, int nWidth, int nHeight)
{
    const int nFormat = kLayouts[nType].nFormat, nUnit = nType == 0 ? 4 : 1;
    const std::int64_t nPixels = std::int64_t{nWidth} * (nType % 2 + 3) * (nType / 2 + 1);
    const int nLineBytes = static_cast<int>((nPixels + nUnit - 1) / nUnit * nUnit);
    return {nType / 2, eAccess, pData, 0, nWidth, nHeight, nFormat, nFormat, nLineBytes};
}

/// Bytes of a band's line of four samples.
static std::int64_t BandLine(int nWidth, int nSampleBytes, int nAlign)
{
    const int nUnit = nAlign == MM_ALIGN_LINES ? 16 / nSampleBytes : 1;
    return std::int64_t{4} * nSampleBytes * ((nWidth + nUnit - 1) / nUnit * nUnit);
}

using UnitImport = BudgetTest;

TEST_F(UnitImport, GivesBandsAllLinesThatFit)
{
    std::mt19937 random{4};
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int i = 0; i < 3000; ++i) {
        SCOPED_TRACE(i);
        Shrink(pick(2) == 0 ? 20000 : 200000);
        CImageObj::ms_nUseMaxMemoryUnit = 15000 + pick(2) * kMiB;
        CImageObj::UpdateUseMemory(-pick(30000));
        const LONG nBudget = std::min(CImageObj::AskFreeMemory(), CImageObj::ms_nUseMaxMemoryUnit);
        const int nType = pick(4), nAlign = pick(3), nMarginX = pick(4), nMarginY = pick(4);
        const int nWidth = 1 + pick(60), nHeight = 1 + pick(50), nOutHeight = 1 + pick(90);
        std::string sBlock(54, '.');
        T_ImgInf in = Image(nType, pick(2) ? ACS_MEMORY : ACS_FILEIO, nullptr, nWidth, nHeight);
        T_ImgInf out = Image(nType / 2 * 2 + pick(2), ACS_MEMORY, sBlock.data(), nWidth, nHeight);
        CImageObj image, other;
        image.m_ImgInfo.nMarginX = nMarginX;
        image.m_ImgInfo.nMarginY = nMarginY;
        ASSERT_OK(ImportImgForUnit(&image, &in, &out, 0, nullptr, nAlign, 0));
        const auto nLine = BandLine(nWidth + 2 * nMarginX, nType / 2 + 1, nAlign);
        const int nStored = in.eAcsType == ACS_MEMORY ? 0 : out.nLineBytes;
        int n = nHeight;
        while (n > 1 && 2 * ((n + 2 * nMarginY) * nLine + 32) + n * nStored > nBudget)
            --n;
        ASSERT_EQ(std::pair(n, n), std::pair(image.m_nUnitBandHeight, image.m_ImgInfo.nBandLines));

        out = Image(pick(4), ACS_MEMORY, sBlock.data(), 1 + pick(60), nOutHeight);
        ASSERT_OK(ImportImgForUnitEnLarge(&other, &out, &image, &in, 0, nullptr, 0));
        const auto nInBytes = BandLine(nWidth, nType / 2 + 1, 0);
        const auto nOutBytes = BandLine(out.nWidth, out.nDstFormat & 0xF, 0) + out.nLineBytes;
        const int nIn = std::max(nHeight / nOutHeight, 1), nOut = std::max(nOutHeight / nHeight, 1);
        for (n = 1; nIn * (n + 1) <= nHeight && nOut * (n + 1) <= nOutHeight; ++n)
            if ((n + 1) * (nIn * nInBytes + nOut * nOutBytes) > nBudget)
                break;
        const bool bWhole = nHeight * nInBytes + nOutHeight * nOutBytes < nBudget;
        ASSERT_EQ(bWhole ? std::pair(nHeight, nOutHeight) : std::pair(n * nIn, n * nOut),
                  std::pair(image.m_nUnitBandHeight, other.m_ImgInfo.nBandLines));
    }
    Reset();
}

TEST_F(UnitImport, WritesTheHeaderAndReadsBehindTheSourcesOwn)
{
    std::string sIn = "?BM" + std::string(52 + 5 * 16, 'h'); // 5 x 5 pixels of 3 bytes
    std::iota(sIn.begin() + 55, sIn.end(), '\1');
    std::string sWanted("BM\x9A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\5\0\0\0\5\0\0\0\1\0\x20\0\0\0\0\0\x64", 35);
    sWanted.resize(54);
    for (int i = 0; i < 25; ++i) // turned, and opaque
        sWanted += sIn.substr(std::size_t(55 + (4 - i / 5) * 16 + (4 - i % 5) * 3), 3) + '\xFF';
    for (const auto eIn : kAccesses)
        for (const auto eOut : kAccesses) {
            SCOPED_TRACE(testing::Message() << eIn << " to " << eOut);
            std::string sSource = sIn, sBlock(154, '.');
            const std::string sLonger(eOut == ACS_MMF ? 200 : 0, '.'); // a file may be there already
            const HostFile file(sIn), result(sLonger);
            T_ImgInf in = Image(0, eIn, eIn == ACS_MEMORY ? sSource.data() : file.Handle(), 5, 5);
            T_ImgInf out = Image(1, eOut, eOut == ACS_MEMORY ? sBlock.data() : result.Handle(), 5, 5);
            in.nOffset = eIn == ACS_MMF ? 55 : 7; // which only a source that is not searched needs
            CImageObj image;
            image.m_ImgInfo.pBase =
                reinterpret_cast<unsigned char*>(sSource.data()); // not a band that it holds
            T_ImageLrg_tag band{};
            for (bool bAgain = eOut == ACS_FILEIO;; bAgain = true) { // undoes what was set up before
                ASSERT_OK(ImportImgForUnit(&image, &in, &out, 1, nullptr, MM_ALIGN_LINES, 0));
                ASSERT_OK(image.SetBandHeight(2));
                if (bAgain)
                    break;
                ASSERT_OK(image.MapBand(4, &band, MM_BAND_DOWNWARD, 0));
            }
            EXPECT_OK(DuplicateImageForUnit(&image));
            EXPECT_EQ(sWanted, eOut == ACS_MEMORY ? sBlock : result.Content().substr(0, 154));
            EXPECT_EQ(100 * kMiB, CImageObj::AskFreeMemory());

            T_ImgInf whole = Image(0, ACS_MEMORY, sSource.data(), 5, 5);
            whole.nOffset = 54, whole.nDstFormat = 0x0401;
            EXPECT_OK(ImportImg(&image, &whole, 1, nullptr));
            EXPECT_OK(image.MapBandRange(0, 0, &band, 0)) << "the object has an image of its own now";
            EXPECT_EQ(sIn.substr(55 + 64, 3), BytesAt(band.pImage, 3));
        }
}

TEST_F(UnitImport, DuplicatesBetweenObjectsAndLeavesNothingMapped)
{
    std::string sSource(6 * 24, '\0'), sBlock(6 * 24, '.');
    std::iota(sSource.begin(), sSource.end(), '\1');
    T_ImgInf in = Image(2, ACS_MEMORY, sSource.data(), 4, 6), out = Image(2, ACS_MEMORY, sBlock.data(), 4, 6);
    CImageObj reader, writer;
    ASSERT_OK(ImportImgForUnitEnLarge(&writer, &out, &reader, &in, 0, nullptr, 0));
    EXPECT_OK(reader.SetBandHeight(4));
    EXPECT_OK(writer.SetBandHeight(4));
    for (int i = 0; i < 2; ++i) // the short band at the end leaves the set-up's height alone
        EXPECT_OK(DuplicateImageForUnit(&writer, &reader));
    EXPECT_EQ(sSource, sBlock);
    EXPECT_OK(writer.SetBandHeight(1));
    EXPECT_CODE(MM_BAD_ARGUMENT, DuplicateImageForUnit(&writer, &reader)) << "bands of 4 lines and of 1";
    EXPECT_TRUE(!reader.m_ImgInfo.pBase && !writer.m_ImgInfo.pBase);
    EXPECT_EQ(100 * kMiB, CImageObj::AskFreeMemory());
}

TEST_F(UnitImport, RefusesAMappedDestinationBeyondAllPositionsBeforeAnythingIsMade)
{
    for (const std::int64_t nBytes : {1ll << 32, (2ll << 32) - 1}) {
        const HostFile source(std::string(80, 's')), result("");
        ASSERT_TRUE(SetLength(result.pFile, nBytes));
        T_ImgInf in = Image(1, ACS_MMF, source.Handle(), 5, 4),
                 out = Image(1, ACS_MMF, result.Handle(), 5, 4);
        CImageObj image, other;
        EXPECT_CODE(MM_BAD_ARGUMENT, ImportImgForUnit(&image, &in, &out, 0, nullptr, 0, 0)) << nBytes;
        EXPECT_CODE(MM_BAD_ARGUMENT, ImportImgForUnitEnLarge(&other, &out, &image, &in, 0, nullptr, 0));
        EXPECT_EQ(nullptr, image.m_hInMap);
        EXPECT_EQ(std::string(54, '\0'), result.Content().substr(0, 54)) << "a header is written";
    }
}

TEST_F(UnitImport, RefusesBeforeAnythingIsWritten)
{
    // what is wrong; types, width and height of the source; what the destination has more, what the source's
    // lines have less, alignment; the code for a pair
    const std::tuple<const char*, int, int, int, int, int, int, int, int, DWORD> cases[] = {
        {"sample widths", 1, 3, 5, 5, 0, 0, 0, 0, MM_SUCCESS},
        {"widths", 0, 0, 5, 5, 1, 0, 0, 0, MM_SUCCESS},
        {"heights", 0, 0, 5, 5, 0, 1, 0, 0, MM_SUCCESS},
        {"no such alignment", 0, 0, 5, 5, 0, 0, 0, 3, MM_SUCCESS},
        {"lines that overlap", 2, 2, 5, 5, 0, 0, 1, 0, MM_BAD_ARGUMENT},
        {"a negative height", 0, 0, 5, -5, 0, 0, 0, 0, MM_BAD_ARGUMENT},
        {"band lines of 2 GiB", 0, 0, 1 << 29, 1, 0, 0, 0, 0, MM_BAD_ARGUMENT},
        {"a source beyond 4 GiB", 1, 0, 40000, 26844, 0, 0, 0, 0, MM_BAD_ARGUMENT},
        {"a destination beyond 4 GiB", 0, 1, 40000, 26844, 0, 0, 0, 0, MM_BAD_ARGUMENT}};
    for (const auto& [pszCase, nIn, nOut, nWidth, nHeight, nWider, nTaller, nLess, nAlign, nPair] : cases)
        for (const auto eOut : {ACS_MMF, ACS_FILEIO}) {
            SCOPED_TRACE(pszCase);
            const HostFile result("");
            T_ImgInf in = Image(nIn, ACS_NONE, nullptr, nWidth, nHeight);
            T_ImgInf out = Image(nOut, eOut, result.Handle(), nWidth + nWider, nHeight + nTaller);
            in.nLineBytes -= nLess;
            CImageObj image, other;
            T_ImageLrg_tag band{};
            EXPECT_CODE(MM_BAD_ARGUMENT, ImportImgForUnit(&image, &in, &out, 0, nullptr, nAlign, 0));
            EXPECT_EQ("", result.Content());
            EXPECT_CODE(nPair, ImportImgForUnitEnLarge(&other, &out, &image, &in, 0, nullptr, 0));
            EXPECT_TRUE(nPair == MM_SUCCESS || result.Content().empty());
            EXPECT_OK(ImportImgForUnitJudge(&image, &in, 0, nullptr, 0));
            const bool bBadSource = nPair != MM_SUCCESS && nOut != 1;
            EXPECT_EQ(bBadSource, image.MapBandRange(0, 0, &band, 0) != MM_SUCCESS) << "judges the source";
        }
}
