// I/O image objects over blocks of the host: set-up, sizes, every row of the conversions, band addresses.

#include "HostFile.h"
#include "TestImages.h"

namespace {

constexpr char kUntouched = '.';
constexpr int kFormat[] = {0, 0, 0, 0x301, 0x401, 0, 0x302, 0, 0x402}; // by bytes per pixel

/// A set-up over a block that begins with a bitmap's signature and is large enough for anything here.
struct Wrapped
{
    std::string sBlock = "BM" + std::string(10000, kUntouched);
    CImageObjIO io;
    int nHeader;

    Wrapped(int nFileType, int nWidth, int nHeight, int nExternal, int nObject, tag_E_IMGTYPE eRole,
            int nTmpBufMode = 0)
        : nHeader(nFileType == MM_FILE_BITMAP ? MM_BITMAP_HEADER_BYTES : 0)
    {
        T_ImgInf inf{nFileType, ACS_MEMORY, sBlock.data(), nHeader, nWidth, nHeight, nExternal, nObject, 0};
        if (eRole != IMG_INPUT)
            std::swap(inf.nSrcFormat, inf.nDstFormat);
        EXPECT_OK(io.InitForUnify(&inf, eRole, 0, 0, 0, MM_ALIGN_LINES, 0, nTmpBufMode));
        io.SetBandInfo(0, 1);
        io.Create(0, 0, 1);
    }
    char* Line(int n) { return sBlock.data() + nHeader + n * io.m_ImgInfoIO.nLineBytes; }
};

// Rows that whole transfers do not meet. A pixel of digits is converted; the result tells a digit for a
// source byte, z for 0, F for 255, and a dot for what stays as it was.
TEST(ExternalImages, ConvertWhatFitsAPixelAndLeaveUnknownCombinationsAlone)
{
    using Row = std::tuple<tag_E_IMGTYPE, int, int, int, int, std::string>;
    // role, file type, bytes of an external and of an object's pixel, alpha, result
    const Row cases[] = {{IMG_INPUT, 0, 4, 3, 0, "........."},  {IMG_INPUT, 0, 6, 8, 0, "........."},
                         {IMG_INPUT, 2, 3, 4, 0, "........."},  {IMG_INPUT, 1, 4, 4, 0, "........."},
                         {IMG_INPUT, 1, 6, 4, 0, "0123....."},  {IMG_INPUT, 1, 8, 3, 0, "012......"},
                         {IMG_OUTPUT, 0, 3, 8, 2, "012z....."}, {IMG_OUTPUT, 0, 4, 8, 0, "0123....."},
                         {IMG_OUTPUT, 0, 4, 6, 1, "012F....."}, {IMG_OUTPUT, 0, 4, 4, 2, "........."},
                         {IMG_OUTPUT, 0, 4, 3, 2, "........."}, {IMG_OUTPUT, 0, 8, 8, 0, "........."},
                         {IMG_OUTPUT, 1, 8, 8, 2, "........."}, {IMG_OUTPUT, 1, 6, 4, 2, "0123zz..."},
                         {IMG_OUTPUT, 1, 6, 3, 0, "012zzz..."}, {IMG_OUTPUT, 1, 8, 4, 1, "0123zzFF."},
                         {IMG_OUTPUT, 1, 4, 4, 0, "........."}, {IMG_OUTPUT, 2, 3, 3, 0, "........."}};
    for (const auto& row : cases) {
        const auto& [eRole, nFileType, nExternal, nObject, nAlpha, sWanted] = row;
        Wrapped w(nFileType, 1, 2, kFormat[nExternal], kFormat[nObject], eRole);
        w.io.SetAlpha(nAlpha);
        std::string sLine(64, kUntouched);
        const auto pObject = reinterpret_cast<unsigned char*>(sLine.data());
        std::copy_n("01234567", 8, eRole == IMG_INPUT ? w.Line(1) : sLine.data());
        T_ImageLrg_tag record{};
        if (eRole == IMG_INPUT) {
            ASSERT_OK(w.io.MapBandRangeBuf(1, 1, pObject, &record));
        } else {
            ASSERT_OK(w.io.MapBand(1, &record, MM_BAND_DOWNWARD, 0));
            ASSERT_OK(w.io.UnmapBand(pObject, 0));
            sLine.assign(w.Line(1), 64);
        }
        std::replace(sLine.begin(), sLine.end(), '\0', 'z');
        std::replace(sLine.begin(), sLine.end(), '\xFF', 'F');
        EXPECT_EQ(sWanted, sLine.substr(0, 9)) << testing::PrintToString(row);
    }
}

TEST(ExternalImages, AreRefusedWhenTheyDoNotFitAndLeaveTheObjectAlone)
{
    Wrapped w(1, 4, 4, 0x302, 0x402, IMG_INPUT);
    CImageCtrl* const pStore = w.io.m_pImageCtrl;
    // file type, width, height, object's and external format
    const int cases[][5] = {{1, 40000, 40000, 0x1322, 0x1322},
                            {0, 256999, 2089, 0x1301, 0x0401}, // by its header
                            {1, -1, 4, 0x1322, 0x1322},
                            {1, 4, 4, 0x1323, 0x1322}};
    for (const auto& [nFileType, nWidth, nHeight, nObject, nExternal] : cases) {
        T_ImgInf inf{nFileType, ACS_MEMORY, w.sBlock.data(), 0, nWidth, nHeight, nObject, nExternal, 0};
        EXPECT_CODE(MM_BAD_ARGUMENT, w.io.InitForUnify(&inf, IMG_OUTPUT, 0, 0, 0, MM_ALIGN_LINES, 0, 0))
            << nWidth;
        EXPECT_EQ(std::pair(pStore, 4), std::pair(w.io.m_pImageCtrl, w.io.m_ImgInfoIO.nWidth));
        EXPECT_EQ(kUntouched, w.sBlock[MM_BITMAP_HEADER_BYTES - 1]) << "a header was written";
    }
}

TEST(ExternalImages, AnswerThePlannerInExternalLines)
{
    CImageObj::ms_MinBand = 16;
    for (const int nHeight : {100, 10}) {
        Wrapped w(1, 8, nHeight, 0x302, 0x402, IMG_OUTPUT);
        const auto planned = [&](int nBand, int nCount) {
            const int nArea = w.io.SetBandInfo(nBand, nCount);
            return std::pair(nArea, w.io.GetBandHeight());
        };
        const int nLeast = std::min(16, nHeight);
        EXPECT_EQ(std::pair(48 * nLeast * 2, nLeast), planned(5, 2));
        EXPECT_EQ(std::pair(w.io.m_ImgInfo.nBufSize, nHeight), planned(0, 3));
        w.io.m_ImgInfoIO.nFsize = 4;
        EXPECT_EQ(std::min(32, nHeight), planned(40, 1).second);
        w.io.m_nTmpBufMode = 1;
        EXPECT_EQ(w.io.m_ImgInfo.nBufSize + 48 * nHeight, w.io.GetAreaSize());
        w.io.m_nTmpBufMode = 2;
        EXPECT_EQ(-1, w.io.GetAreaSize());
    }
}

TEST(ExternalImages, SplitTheAreaByLineLength)
{
    // bytes of an external and of an object's line, of the area; lines, 1 where the split fails
    const int cases[][4] = {{3000, 4224, 9000000, 1245}, {3000, 4224, 14448, 2}, {3000, 4224, 14447, 1},
                            {3000, 4224, 100, 1},        {3000, 0, 9000, 3},     {0, 4224, 9000, 1}};
    for (const auto& [nExternalLine, nObjectLine, nArea, nLines] : cases) {
        Wrapped w(0, 10, 5, 0x301, 0x401, IMG_OUTPUT, 1);
        w.io.m_ImgInfoIO.nLineBytes = nExternalLine;
        w.io.m_ImgInfo.nLineBytes = nObjectLine;
        if (w.io.Create(1, nArea, 1) == MM_SUCCESS) {
            w.io.m_ImgInfo.nBandLines = 0; // as MemoryClear leaves it
            EXPECT_OK(w.io.Create(1, nArea, 1));
        }
        EXPECT_EQ(std::pair(nLines, nLines), std::pair(w.io.m_ImgInfo.nBandLines, w.io.GetBandHeight()));
    }
}

TEST(ExternalImages, MapTheLinesThatWereAskedFor)
{
    Wrapped w(0, 3, 100, 0x301, 0x401, IMG_OUTPUT);
    w.io.SetBandInfo(16, 1);
    // line, direction, first and last line
    const int cases[][4] = {{0, 0, 0, 15}, {96, 0, 96, 99}, {99, 0, 99, 99},
                            {0, 1, 0, 0},  {15, 1, 0, 15},  {99, 1, 84, 99}};
    T_ImageLrg_tag record{};
    EXPECT_CODE(MM_IO_LINE_OUTSIDE, w.io.MapBand(-1, &record, MM_BAND_DOWNWARD, 0));
    EXPECT_CODE(MM_IO_LINE_OUTSIDE, w.io.MapBand(100, &record, MM_BAND_UPWARD, 0));
    EXPECT_CODE(MM_IO_NO_SUCH_DIRECTION, w.io.MapBand(5, &record, 2, 0));
    for (const auto& [nLine, nDirection, nTop, nBottom] : cases) {
        ASSERT_OK(w.io.MapBand(nLine, &record, nDirection, 0)) << nLine;
        EXPECT_EQ(
            std::tuple(nTop, nBottom, nBottom - nTop + 1, nTop),
            std::tuple(record.nBandTop, record.nBandBottom, record.nBandLines, w.io.m_ImgInfoIO.nBandTop))
            << nLine;
        EXPECT_EQ(w.Line(nTop), static_cast<void*>(record.pImage));
        EXPECT_OK(w.io.UnmapBand(0));
        EXPECT_EQ(kUntouched, *w.Line(nTop)) << "ending a band by its slot converts nothing";
    }
    EXPECT_CODE(MM_IO_RANGE_REVERSED, w.io.MapBandRange(5, 4, &record, 0));
    EXPECT_CODE(MM_IO_RANGE_ADDRESS, w.io.MapBandRange(-1, 4, &record, 0));
    for (const auto& [nFirst, nLast] : {std::pair(100, 100), {99, 100}, {-1, 0}, {5, 4}})
        EXPECT_CODE(MM_IO_BUFFER_ADDRESS, w.io.MapBandRangeBuf(nFirst, nLast, nullptr, &record)) << nFirst;

    Wrapped in(1, 1, 10, 0x402, 0x402, IMG_INPUT, 1);
    ASSERT_OK(in.io.Create(1 << 20, 1 << 20, 1));
    ASSERT_OK(in.io.MapBandRange(5, 30, &record, 0));
    const auto pWork = static_cast<CImageCtrlIO*>(in.io.m_pImageCtrl)->GetTMPBuf(0);
    EXPECT_EQ(0, pWork[30 * in.io.m_ImgInfo.nLineBytes]) << "converted from behind the image";
}

TEST(ExternalImages, TakeANullBufferForTheWorkBufferWhenThatHoldsTheBand)
{
    Wrapped w(1, 2, 4, 0x302, 0x302, IMG_OUTPUT, 1);
    T_ImageLrg_tag record{};
    for (const int nArea : {1000, 80000}) { // for less than one line of the object, and for more than four
        ASSERT_OK(w.io.Create(0, nArea, 1));
        ASSERT_OK(w.io.MapBand(0, &record, MM_BAND_DOWNWARD, 0));
        std::iota(record.pImage, record.pImage + 12, 'a');
        EXPECT_CODE(nArea == 1000 ? MM_BAD_ARGUMENT : MM_SUCCESS, w.io.UnmapBand(nullptr, 0));
        EXPECT_EQ(nArea == 1000 ? "BM.........." : "abcdefghijkl", std::string(w.Line(0), 12));
    }
}

TEST(ExternalImages, ForColourWorkLieInTheHostsBlock)
{
    std::string sBlock(100, 'x');
    for (const bool bRaw : {false, true}) {
        T_ImgInf inf{bRaw, ACS_MEMORY, sBlock.data(), 9, 5, 4, kFormat[bRaw ? 6 : 3], 0, 99};
        CImageObjIO io;
        ASSERT_OK(io.InitForCMS(&inf, IMG_INPUT, 2, 3, 0, MM_ALIGN_LINES, 1, 0));
        inf.nWidth = 1 << 30;
        EXPECT_CODE(MM_BAD_ARGUMENT, io.InitForCMS(&inf, IMG_INPUT, 0, 0, 0, 0, 0, 0));
        const T_ImageLrg_tag& info = io.m_ImgInfo;
        EXPECT_EQ(sBlock.data() + (bRaw ? 0 : MM_BITMAP_HEADER_BYTES), static_cast<void*>(info.pImage));
        EXPECT_EQ(std::tuple(5, 10, bRaw ? 16 * 6 : 16 * 3, int{bRaw}, 1, bRaw ? 0 : 1),
                  std::tuple(info.nWidth, info.nAllocHeight, info.nLineBytes, io.m_nFileType, io.m_nBottomUp,
                             io.m_nLinePad));
        inf.nSrcFormat = 0x303;
        EXPECT_OK(io.InitForCMS(&inf, IMG_INPUT, 0, 0, 0, MM_ALIGN_LINES, 0, 0)) << "no layout: met later";
    }
}

TEST(ExternalImages, WithoutAFileAreNotMapped)
{
    // A failed mapping leaves this handle behind, by which Windows would map memory.
    const auto hFile = reinterpret_cast<HANDLE>(std::intptr_t{-1});
    HostImage image({MM_FILE_RAW, ACS_MMF, hFile, 0, 4, 4, 0x302, 0x302, 0}, IMG_OUTPUT);
    EXPECT_CODE(MM_FILE_ACCESS, image.Create(image.GetAreaSize(), image.GetAreaSize(), 1));
}

TEST(ExternalImages, ThatAreWholeAreReachedInAnySlotWithAnyNumberOfBytes)
{
    std::string sBlock(100, 'x');
    CImageCtrl plain;
    plain.SetImageData(sBlock.data());
    ASSERT_OK(plain.MapBandAll(0, 100, 0));
    EXPECT_EQ(&sBlock[99], plain.MapBandAdress(99, 1, 10)) << "nobody has told its size";
    plain.SetFileSize(99);
    EXPECT_EQ(nullptr, plain.MapBandAdress(99, 1, 0));
    EXPECT_OK(plain.FreeBandAdress(-1));
    EXPECT_CODE(MM_NO_MEMORY, plain.Create(-2, -1, 1)) << "a negative size";
    for (const auto eAccess : {ACS_MMF, ACS_MEMORY, ACS_FILEIO}) {
        const HostFile file(sBlock);
        CImageCtrlIO store;
        store.SetAcsType(eAccess);
        store.SetImgType(IMG_INPUT);
        store.SetFileHandle(file.Handle());
        store.SetImageData(eAccess == ACS_MEMORY ? sBlock.data() : nullptr);
        EXPECT_CODE(MM_NO_MEMORY, store.Create(100, -1, 1));
        ASSERT_OK(store.Create(100, 99, 1));
        EXPECT_EQ(eAccess == ACS_MEMORY, store.MapBandAdress(0, 0, 0) != nullptr) << "a band of no bytes";
        EXPECT_CODE(eAccess == ACS_MEMORY ? MM_SUCCESS : MM_BAD_ARGUMENT, store.FreeBandAdress(10));
        ASSERT_OK(store.Create(100, 100, 1));
        const void* pBand = store.MapBandAdress(99, 0, -1);
        EXPECT_EQ("x", BytesAt(pBand ? pBand : "", 1)) << eAccess;
        EXPECT_OK(store.FreeBandAdress(10));
        store.Destroy();
    }
}

} // namespace
