// Whole images in and out through every layout, access type, line order and band height, byte for byte
// against a picture that knows nothing of the library.

#include "ExternalPictures.h"
#include "ReportFiles.h"

#include <climits>

namespace {

constexpr int kOwn = -1; // every sample is the picture's own
constexpr std::size_t kHeader = MM_BITMAP_HEADER_BYTES;
constexpr int kOnes[] = {0, 0xFF, 0xFFFF}; // by bytes per sample

/// The host's file: a bitmap or raw image of samples of nDepth bytes, with nFourth for every fourth sample.
std::string FileOf(int nType, int nDepth, int nWidth, int nHeight, int nBottomUp, int nFourth, char cPad)
{
    const auto value = [=](int x, int y, int n) {
        const int nOwn = Sample(x, nBottomUp ? nHeight - 1 - y : y, n) & kOnes[nDepth];
        return n == 3 && nFourth != kOwn ? nFourth : nOwn;
    };
    const std::string sHeader = nType < 2 ? "BM" + std::string(kHeader - 2, 'h') : "";
    return sHeader + LinesOf(kLayouts[nType], nWidth, nHeight, cPad, value);
}

/// One image through the library and out again.
struct Transfer
{
    tag_E_ACSTYPE eAccess;
    int nIn, nOut, nObjectFormat, nWidth, nHeight, nInBottomUp, nOutBottomUp, nAlpha;

    void Run(bool bWhole) const
    {
        const Layout &from = kLayouts[nIn], &to = kLayouts[nOut];
        const int nDepth = int(from.nSampleBytes);
        const bool bOpaque = nAlpha == 1 || (nObjectFormat >> 8 & 0xF) == 3;
        const int nUnset = from.nSamples == 4 ? kOwn : kOnes[nDepth];
        const int nFourth = bOpaque ? kOnes[to.nSampleBytes] : nUnset;
        const std::string sWanted = FileOf(nOut, nDepth, nWidth, nHeight, nOutBottomUp, nFourth, '\0');
        std::string sIn = FileOf(nIn, nDepth, nWidth, nHeight, nInBottomUp, kOwn, 'p');
        sIn.insert(0, nIn < 2 ? "??B" : ""); // a bitmap begins where its signature is
        std::string sOut(sWanted.size(), '\0');
        const std::string sBefore = eAccess == ACS_FILEIO ? "the host's own" : "";
        const HostFile in(sIn), out(sBefore);
        void* pIn = eAccess == ACS_MEMORY ? sIn.data() : in.Handle();
        void* pOut = eAccess == ACS_MEMORY ? sOut.data() : out.Handle();
        T_ImgInf inInf{from.nFileType, eAccess, pIn, 54, nWidth, nHeight, from.nFormat, nObjectFormat, 0};
        T_ImgInf outInf{to.nFileType, eAccess, pOut, 0, nWidth, nHeight, nObjectFormat, to.nFormat, 0};

        CImageObj image;
        T_ImageLrg_tag band{};
        ASSERT_OK(ImportImg(&image, &inInf, nInBottomUp, nullptr));
        EXPECT_EQ(bWhole, image.IsOnMemory() == 1);
        ASSERT_OK(image.MapBandRange(0, 0, &band, 0));
        EXPECT_EQ(Sample(0, 0, 0) & 0xFF, int{*band.pImage}) << "the image is upside down";
        EXPECT_OK(image.UnmapBand(0));
        ASSERT_OK(ExportImg(&image, &outInf, nOutBottomUp, nullptr, nAlpha));
        const std::string sAll = eAccess == ACS_MEMORY ? sOut : out.Content();
        ASSERT_EQ(sBefore, sAll.substr(0, sBefore.size()));
        const std::string sGot = sAll.substr(sBefore.size());
        const std::size_t nHeader = std::min(nOut < 2 ? kHeader : 0, sGot.size());
        EXPECT_TRUE(SameBytes(sWanted.substr(nHeader), sGot.substr(nHeader)));
        EXPECT_EQ(nullptr, image.m_pImageCtrl);
        EXPECT_EQ(CImageObj::ms_ReserveMemory, CImageObj::AskFreeMemory());
    }
};

auto Fields(const T_ImgInf& inf)
{
    return std::tuple(inf.nFileType, inf.eAcsType, inf.hData, inf.nOffset, inf.nWidth, inf.nHeight,
                      inf.nSrcFormat, inf.nDstFormat, inf.nLineBytes);
}

template <class Pair> void CheckParam(int nType, int nLineBytes, tag_E_ACSTYPE eAccess, int nOffset)
{
    SCOPED_TRACE(nType);
    Pair pair{&pair, 1078, short(nType), 5, 6, 0, nullptr, 7, short(nType), 5, 8};
    T_ImgInf in{9, ACS_NONE, nullptr, 9, 9, 9, 9, 9, 9}, out = in;
    CreateParam(&pair, 11, 12, &in, &out);
    const bool bKnown = nLineBytes != 9;
    const int nFormat = bKnown ? kLayouts[nType].nFormat : 9, nFileType = bKnown ? nType / 2 : 9;
    EXPECT_EQ(Fields({nFileType, eAccess, &pair, 1078, 5, 6, nFormat, 11, nLineBytes}), Fields(in));
    EXPECT_EQ(Fields({nFileType, eAccess, nullptr, 7, 5, 8, 12, nFormat, nLineBytes}), Fields(out));
    EXPECT_EQ(nOffset, int{pair.nOutOffset});
}

} // namespace

using ImportExport = BudgetTest;

TEST_AT_ANY_ADDRESS(ImportExport, KeepEveryByte)
{
    const int paths[][3] = {{0, 0x1301, 0}, {0, 0x0401, 0}, {0, 0x0422, 2}, {1, 0x0401, 0}, {1, 0x0422, 2},
                            {2, 0x1322, 2}, {2, 0x0422, 2}, {3, 0x1322, 2}, {3, 0x0422, 2}};
    for (const bool bWhole : {true, false}) {
        bWhole ? BudgetTest::Reset() : BudgetTest::Shrink(6000);
        for (const auto& [nIn, nObject, nOut0] : paths)
            for (const auto eAccess : {ACS_MMF, ACS_MEMORY, ACS_FILEIO})
                for (int n = 0; n < 32; ++n) { // one bit each: samples out, alpha switch, line orders, width
                    SCOPED_TRACE(testing::PrintToString(std::tuple(nIn, nObject, eAccess, n, bWhole)));
                    const int nOut = nOut0 + n / 16, nWidth = n % 2 ? 3 : 70;
                    Transfer{eAccess, nIn, nOut, nObject, nWidth, 37, n / 2 % 2, n / 4 % 2, n / 8 % 2}.Run(
                        bWhole);
                    ASSERT_FALSE(testing::Test::HasFailure());
                }
    }
}

// Of an image that is held whole, by ranges or by bands in the work buffer, and in any order.
TEST_F(ImportExport, WriteEachRangeToItsOwnPlace)
{
    for (const auto& [nMode, bRange] : {std::pair(0, true), {1, true}, {1, false}})
        for (const auto eAccess : {ACS_MMF, ACS_MEMORY, ACS_FILEIO}) {
            SCOPED_TRACE(testing::PrintToString(std::tuple(nMode, bRange, eAccess)));
            std::string sLines(40 * 48, '\0'), sBlock(sLines.size(), '.');
            std::iota(sLines.begin(), sLines.end(), '\1');
            const HostFile file(eAccess == ACS_MMF ? sBlock : "");
            T_ImgInf inf{MM_FILE_RAW, eAccess, file.Handle(), 0, 8, 40, 0x1322, 0x1322, 48};
            inf.hData = eAccess == ACS_MEMORY ? sBlock.data() : inf.hData;
            HostImage io(inf, IMG_OUTPUT, 0, nMode);
            io.m_ImgInfo.nLineBytes = 48;
            T_ImageLrg_tag band{};
            for (const int nTop : {10, 0, 30, 20}) {
                ASSERT_OK(io.Create(1, 40 * 96, 1)); // anew where the whole view went with the last band
                io.m_ImgInfoIO.nFsize = eAccess == ACS_MEMORY && nTop == 10 ? 2 : 0;
                io.m_ImgInfoIO.nBandLines = 10;
                ASSERT_OK(bRange ? io.MapBandRange(nTop, nTop + 9, &band, 0)
                                 : io.MapBand(nTop, &band, MM_BAND_DOWNWARD, 0));
                const auto pLines = reinterpret_cast<unsigned char*>(&sLines[std::size_t(nTop) * 48]);
                EXPECT_OK(io.UnmapBand(pLines, 0));
                EXPECT_CODE(eAccess == ACS_MEMORY ? MM_SUCCESS : MM_BAD_ARGUMENT, io.UnmapBand(pLines, 0));
            }
            EXPECT_TRUE(SameBytes(sLines, eAccess == ACS_MEMORY ? sBlock : file.Content()));
        }
}

TEST_F(ImportExport, PairTheBandsOfSidesThatAreGivenDifferentHeights)
{
    const HostFile file("");
    HostImage io({0, ACS_FILEIO, file.Handle(), 0, 6000, 6000, 0x0401, 0x1301, 0}, IMG_OUTPUT, 1);
    TestImage image(Geometry(6000, 6000, 16, 0x0401, MM_ALIGN_LINES));
    Step step({&image}, {&io});
    ASSERT_OK(CImageObj::MemoryCalculation(&step.request, step.in.data(), step.out.data()));
    EXPECT_EQ(1864, io.GetBandHeight());
    EXPECT_EQ(1390, image.GetBandHeight());

    CImageObj::ms_nOnMemory = 0;
    CImageObj::InitBaseMemory(60000, 12000); // bands of 40 external lines and of 20 lines of the object
    for (const int nBottomUp : {0, 1})
        Transfer{ACS_FILEIO, 0, 0, 0x0401, 100, 207, 1, nBottomUp, 1}.Run(false);
}

TEST_F(ImportExport, ExportTheAskedPartOfAnObjectOfAnyGeometry)
{
    TestImage image(Geometry(5, 4, 1, 0x0422)); // lines of 7 pixels
    ASSERT_OK(Step({&image}, {}).Alloc());
    T_ImageLrg_tag band{};
    ASSERT_OK(image.MapBandRange(0, 3, &band, 0));
    std::iota(band.pImage, band.pImage + 3 * 56, 0);
    std::string sBlock(2 * 24, '\0');
    T_ImgInf inf{MM_FILE_RAW, ACS_MEMORY, sBlock.data(), 0, 3, 2, 0, 0x0422, 0}; // its source is the object
    ASSERT_OK(ExportImg(&image, &inf, 0, nullptr, 0));
    for (int i = 0; i < 48; ++i)
        EXPECT_EQ(static_cast<char>(i / 24 * 56 + i % 24), sBlock[std::size_t(i)]) << i;
}

TEST_F(ImportExport, ConvertIntoTheWorkBufferOnlyWhatItHolds)
{
    const std::string sFile = FileOf(3, 2, 4, 40, 0, kOwn, '\0'); // lines of 32 bytes, 320 in the object
    const HostFile file(sFile);
    HostImage io({1, ACS_FILEIO, file.Handle(), 0, 4, 40, 0x0422, 0x0422, 0}, IMG_INPUT, 0, 1);
    ASSERT_OK(io.Create(1 << 20, 40 * 352, 1)); // 1280 bytes of work buffer: four lines of the object
    const char* pWork = reinterpret_cast<char*>(static_cast<CImageCtrlIO*>(io.m_pImageCtrl)->GetTMPBuf(0));
    io.m_ImgInfoIO.nBandLines = 1; // it holds no less for that
    for (const int nLast : {4, 3}) {
        T_ImageLrg_tag band{};
        ASSERT_OK(io.MapBandRange(2, nLast, &band, 0));
        EXPECT_EQ(io.m_pImageCtrl->GetMemPtr(), band.pImage);
        EXPECT_EQ(nLast == 3 ? sFile.substr(64, 32) : std::string(32, '\0'), std::string(pWork + 640, 32));
    }
}

// The external record tells of the band that was mapped before: a range leaves it alone.
TEST_F(ImportExport, WriteTheBandOnLoanWhateverWasMappedBefore)
{
    const HostFile file("");
    HostImage io({1, ACS_FILEIO, file.Handle(), 0, 1, 20, 0x0422, 0x0422, 0}, IMG_OUTPUT);
    io.SetAlpha(0);
    ASSERT_OK(io.Create(1 << 20, 10 * 8, 1));
    io.m_ImgInfoIO.nBandLines = 10;
    std::string sBand(std::size_t(10 * io.m_ImgInfo.nLineBytes), 'a');
    const auto pBand = reinterpret_cast<unsigned char*>(sBand.data());
    T_ImageLrg_tag band{};
    ASSERT_OK(io.MapBand(15, &band, MM_BAND_DOWNWARD, 0));
    ASSERT_OK(io.UnmapBand(pBand, 0));
    std::fill(sBand.begin(), sBand.end(), 'b');
    ASSERT_OK(io.MapBandRange(0, 9, &band, 0));
    ASSERT_OK(io.UnmapBand(pBand, 0));
    EXPECT_EQ(std::string(40, 'a').append(80, 'b'), file.Content());
    ASSERT_OK(io.MapBandRangeBuf(19, 19, pBand, &band));
    EXPECT_CODE(MM_BAD_ARGUMENT, io.UnmapBand(pBand, 0)) << "ten lines into one";
    EXPECT_OK(io.UnmapBand(0));
}

TEST_F(ImportExport, PushEndEntriesOnSuccessOnly)
{
    T_LOG_STACK_tag stack[11];
    T_LOG_STACK_tag* pNext = stack;
    std::string sBlock(48, 'x');
    T_ImgInf inf{MM_FILE_RAW, ACS_MEMORY, sBlock.data(), 0, 2, 3, 0x0422, 0x0422, 0};
    CImageObj image;
    EXPECT_OK(ImportImg(&image, &inf, 0, &pNext));
    EXPECT_OK(ExportImg(&image, &inf, 0, &pNext, 0));
    inf.nHeight = 1 << 30;
    EXPECT_CODE(MM_BAD_ARGUMENT, ImportImg(&image, &inf, 0, &pNext));
    ASSERT_EQ(stack + 10, pNext);
    std::string sLog;
    for (const T_LOG_STACK_tag* p = stack; p->nLogCode != 0; ++p) {
        const std::string sSize = std::to_string(p->nLogData1) + "x" + std::to_string(p->nLogData2);
        sLog += std::to_string(p->nLogCode) + (p->nLogCode == 50 ? "" : p->pszLogText);
        sLog += p->nLogCode < 100 ? ", " : " " + sSize + ", ";
    }
    EXPECT_EQ("50, 32768[VMOX/A/_C_XXXX] 2003.08.14.0 2x3, 66, 32768 2x3, "
              "50, 33024[VMOX/A/_C_XXXX] 2003.08.14.0 2x3, 66, 33024 2x3, "
              "50, 32768[VMOX/A/_C_XXXX] 2003.08.14.0 2x1073741824, ",
              sLog);
    EXPECT_STRNE(stack[0].pszLogText, stack[4].pszLogText);
    EXPECT_NE(stack[0].nLogData1, stack[2].nLogData1) << "the counter stands still";
}

TEST_F(ImportExport, FailWithoutLosingTrackOfTheImage)
{
    const RunFolder folder;
    SetErrLogPath("log\\");
    const HostFile empty(""), noise(std::string(500, 'B')), shortFile(std::string(47, 'x'));
    void *hOut = empty.Handle(), *hNoise = noise.Handle(), *hShort = shortFile.Handle();
    void* hNone = reinterpret_cast<void*>(std::intptr_t{-1});
    // whether it is the import; what the object holds afterwards
    const std::tuple<const char*, bool, T_ImgInf, DWORD, bool> cases[] = {
        {"no signature", true, {0, ACS_FILEIO, hNoise, 0, 2, 3, 0x1301, 0x0401, 0}, MM_FILE_ACCESS, false},
        {"short file", true, {1, ACS_FILEIO, hShort, 0, 2, 3, 0x0422, 0x0422, 0}, MM_FILE_ACCESS, false},
        {"short mapping", true, {1, ACS_MMF, hShort, 0, 2, 3, 0x0422, 0x0422, 0}, MM_FILE_ACCESS, false},
        {"too large", false, {0, ACS_FILEIO, hOut, 0, 40000, 40000, 0x401, 0x401, 0}, MM_BAD_ARGUMENT, true},
        {"past the object", false, {1, ACS_FILEIO, hOut, 0, 3, 3, 0x422, 0x422, 0}, MM_BAD_ARGUMENT, true},
        {"no header", false, {0, ACS_FILEIO, hNone, 0, 2, 3, 0x0422, 0x1301, 0}, MM_FILE_ACCESS, true},
        {"not planned", false, {1, ACS_NONE, hNone, 0, 2, 3, 0x0422, 0x0422, 0}, MM_UNKNOWN_MODE, false}};
    std::string sBlock(48, 'x');
    T_ImgInf first{MM_FILE_RAW, ACS_MEMORY, sBlock.data(), 0, 2, 3, 0x0422, 0x0422, 0};
    for (auto [pszCase, bImport, inf, nResult, bKept] : cases) {
        SCOPED_TRACE(pszCase);
        CImageObj image;
        ASSERT_OK(ImportImg(&image, &first, 0, nullptr));
        const void* pBlock = image.m_pImageCtrl->GetMemPtr();
        EXPECT_CODE(nResult,
                    bImport ? ImportImg(&image, &inf, 0, nullptr) : ExportImg(&image, &inf, 0, nullptr, 1));
        EXPECT_EQ(bKept ? pBlock : nullptr, image.m_pImageCtrl ? image.m_pImageCtrl->GetMemPtr() : nullptr);
        Reset();
    }
    EXPECT_EQ("", empty.Content());
    EXPECT_CODE(MM_FILE_ACCESS, CImageObj().CnvFileImg());
    const std::string sLog = FileBytes("log/FileAccessErrorLog.txt");
    EXPECT_NE(std::string::npos, sLog.find("MemoryManager/CImageObjIO(189):LastError="));
    EXPECT_NE(std::string::npos, sLog.find("MemoryManager/CImageObjIO(199):LastError="));
    EXPECT_NE(std::string::npos, sLog.find("MemoryManager/CImageCtrl(1026):LastError=6")) << "no store";
    SetErrLogPath("..\\logdata\\");
}

TEST(CreateParam, GivesTheLineThatAnyWidthMakesOr0Beyond32Bits)
{
    const int cases[][3] = {{0, -5, -8},     {1, -5, -16},    {2, -5, -30},
                            {3, 5, 40},      {3, INT_MAX, 0}, {2, -INT_MAX, 0},
                            {0, INT_MAX, 0}, {1, INT_MIN, 0}, {2, INT_MIN / 6, INT_MIN / 6 * 6}};
    for (const auto& [nType, nWidth, nLineBytes] : cases) {
        ZBT_IMAGE_IN_FILE pair{nullptr, 0, short(nType), nWidth, 1, 0, nullptr, 0, short(nType), nWidth, 1};
        T_ImgInf in{}, out{};
        CreateParam(&pair, 0, 0, &in, &out);
        EXPECT_EQ(std::pair(nLineBytes, nLineBytes), std::pair(in.nLineBytes, out.nLineBytes)) << nWidth;
    }
}

TEST(CreateParam, LeavesUnknownTypesAloneAndTellsWhereABlocksPixelsWillStart)
{
    const int cases[][3] = {{0, 16, 54}, {1, 20, 54}, {2, 30, 0}, {3, 40, 0}, {4, 9, 7}, {-1, 9, 7}};
    for (const auto& [nType, nLineBytes, nOffset] : cases) {
        CheckParam<ZBT_IMAGE_ON_MEMORY>(nType, nLineBytes, ACS_MEMORY, nOffset);
        CheckParam<ZBT_IMAGE_IN_FILE>(nType, nLineBytes, ACS_FILEIO, 7);
    }
}
