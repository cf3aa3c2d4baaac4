// Unit bands through every format, access, order, frame and band height, against a picture that is computed
// sample by sample; and what their objects refuse, hold and give back.

#include "ExternalPictures.h"

namespace {

constexpr int kFlip = 0xA55A; // what a step does to every sample

/// One way of a picture through an object.
struct Way
{
    Layout in, out;
    tag_E_ACSTYPE eIn, eOut;
    bool bTurned;
    int nFrame, nMode, nBand, nAlpha, nWidth, nHeight, nMarginX, nMarginY, nAlign;

    /// Of the picture; 0 where the source has none.
    int SampleIn(int x, int y, int n) const
    {
        const bool bThere = y >= 0 && x >= 0 && x < nWidth && n < int(in.nSamples);
        return bThere ? Sample(x, y, n) : 0;
    }
    /// The image line that a band shows at line y, or -1 where it shows none.
    int LineAt(int y, const T_ImageLrg_tag& band) const
    {
        const int nLines = std::min(nFrame, nMarginY), nLast = nHeight - 1;
        const int nHighest = std::max(band.nBandTop - nLines, 0);
        if (y < nHighest || y > band.nBandBottom + nLines || (y > nLast && nMode == 0))
            return -1;
        const int nInside[] = {0, nLast, 2 * nLast - y, 2 * nLast - y + 1};
        return y <= nLast ? y : std::max(nInside[nMode], nHighest);
    }
    /// Compares all that a band's buffer holds, flips its own samples and spoils the others.
    void Work(const T_ImageLrg_tag& band) const
    {
        for (int k = -nMarginY; k < band.nBandLines + nMarginY; ++k) {
            unsigned char* pNext = band.pImage + k * band.nLineBytes - nMarginX * band.nPixelBytes;
            for (int n = 0; n < band.nLineBytes / band.nSampleBytes; ++n, pNext += in.nSampleBytes) {
                const int x = n / 4 - nMarginX;
                const int nWanted = SampleIn(x, LineAt(band.nBandTop + k, band), n % 4);
                ASSERT_EQ(0, std::memcmp(pNext, &nWanted, in.nSampleBytes))
                    << "band line " << k << ", pixel " << x << ", sample " << n % 4;
                const bool bOwn = k >= 0 && k < band.nBandLines && x >= 0 && x < nWidth;
                const int nNew = bOwn ? nWanted ^ kFlip : 0xEEEE;
                std::memcpy(pNext, &nNew, in.nSampleBytes);
            }
        }
    }
    void Go() const
    {
        const std::string sHead = in.nFileType == MM_FILE_BITMAP ? "?BM" + std::string(52, 'h') : "raw";
        const std::string sLines = LinesOf(in, nWidth, nHeight, 'p', [this](int x, int y, int n) {
            return bTurned ? SampleIn(nWidth - 1 - x, nHeight - 1 - y, n) : SampleIn(x, y, n);
        });
        const std::string sFile = sHead + sLines.substr(0, sLines.find_last_not_of('p') + 1);
        std::vector<char> block(sFile.begin(), sFile.end()); // to the byte: the address sanitizer watches
        const bool bAppends = eOut == ACS_FILEIO;
        const std::string sImage =
            LinesOf(out, nWidth, nHeight, bAppends ? '\0' : '.', [this](int x, int y, int n) {
                return n == 3 && nAlpha == 1 ? -1 : SampleIn(x, y, n) ^ kFlip;
            });
        const std::size_t nStart = out.nFileType == MM_FILE_BITMAP ? 54 : bAppends ? 0 : 6;
        const std::string sAfter(eOut == ACS_MEMORY ? 5 : 0, '.');
        std::string sTarget = std::string(nStart + sImage.size(), '.') + sAfter;
        const HostFile source(sFile), target(bAppends ? "" : sTarget);
        void* pSource = eIn == ACS_MEMORY ? block.data() : source.Handle();
        void* pTarget = eOut == ACS_MEMORY ? sTarget.data() : target.Handle();
        const int nFrom = int(sLines.size()) / nHeight, nTo = int(sImage.size()) / nHeight;
        const int nHead = int(sHead.size());
        T_ImgInf from{in.nFileType, eIn, pSource, nHead, nWidth, nHeight, in.nFormat, 0, nFrom};
        T_ImgInf to{out.nFileType, eOut, pTarget, int(nStart), nWidth, nHeight, 0, out.nFormat, nTo};
        Run(from, to);
        std::string sGot = eOut == ACS_MEMORY ? sTarget : target.Content();
        std::fill_n(sGot.begin(), out.nFileType == MM_FILE_BITMAP ? 54 : 0, '.'); // the set-up's header
        ASSERT_TRUE(SameBytes(std::string(nStart, '.') + sImage + sAfter, sGot));
    }
    void Run(T_ImgInf& from, T_ImgInf& to) const
    {
        CImageObj image;
        image.m_ImgInfo.nMarginX = nMarginX;
        image.m_ImgInfo.nMarginY = nMarginY;
        ASSERT_OK(ImportImgForUnit(&image, &from, &to, bTurned, nullptr, nAlign, 0));
        image.m_nAlpha = nAlpha;
        image.SetBandHeight(std::min(nBand, nHeight));
        ASSERT_OK(image.SetFsize(nFrame));
        ASSERT_OK(image.SetFrameColor(nMode, 0));
        ForEachBand(image, [&](const auto& band) {
            EXPECT_EQ(100 * kMiB - band.nBufSize, CImageObj::AskFreeMemory());
            EXPECT_EQ(std::min(nBand, nHeight - band.nBandTop), band.nBandLines);
            ASSERT_NO_FATAL_FAILURE(Work(band));
            ASSERT_OK(image.UnmapBand(0)); // the second time nothing is left to write
        });
    }
};

/// An object over two blocks, for a test to change before it maps bands.
struct UnitImage : CImageObj
{
    std::string sSource = std::string(100, 's'), sTarget = std::string(100, '.');

    UnitImage(int nWidth, int nHeight, int nFormat, int nOutFormat, int nLineBytes, int nMargin = 0)
    {
        T_ImageLrg_tag info = Geometry(nWidth, nHeight, nMargin);
        EXPECT_OK(SetImageInfo(&info));
        m_nUnitMode = m_nUnitType = 1;
        m_nAlpha = 0;
        m_InImgInf = {0, ACS_MEMORY, sSource.data(), 0, nWidth, nHeight, nFormat, 0, nLineBytes};
        m_OutImgInf = {0, ACS_MEMORY, sTarget.data(), 0, nWidth, nHeight, 0, nOutFormat, nLineBytes};
    }
    int Written() const { return 100 - int(std::count(sTarget.begin(), sTarget.end(), '.')); }
};

} // namespace

using UnitBands = BudgetTest;

TEST_AT_ANY_ADDRESS(UnitBands, BringEverySampleToItsPlaceAndTouchNothingElse)
{
    constexpr tag_E_ACSTYPE kAccess[] = {ACS_MMF, ACS_MEMORY, ACS_FILEIO};
    constexpr int kShapes[][5] = {{7, 9, 2, 2, 0}, {5, 3, 3, 1, 2}, {1, 1, 2, 4, 1}};
    for (const auto& [nWidth, nHeight, nMarginX, nMarginY, nAlign] : kShapes)
        for (const Layout& in : kLayouts)
            for (const Layout& out : kLayouts)
                for (int i = 0; i < 9 * 2 * 4 * 3 && in.nSampleBytes == out.nSampleBytes; ++i) {
                    SCOPED_TRACE(testing::Message() << in.nFormat << " " << out.nFormat << " " << i);
                    const tag_E_ACSTYPE eIn = kAccess[i % 3], eOut = kAccess[i / 3 % 3];
                    const int nMode = i / 18 % 4, nFrame = nMode == 0 ? 0 : 2, nBand = 1 + i / 72 * 4;
                    const int nAlpha = nBand == 5 ? 1 : 0; // bands have 1, 5 or 9 lines
                    const Way way{in,    out,    eIn,    eOut,    i / 9 % 2 == 1, nFrame,   nMode,
                                  nBand, nAlpha, nWidth, nHeight, nMarginX,       nMarginY, nAlign};
                    ASSERT_NO_FATAL_FAILURE(way.Go());
                }
}

TEST_F(UnitBands, RefuseWhatTheyCannotReachAndTouchNothing)
{
    using Change = void (*)(UnitImage&);
    const Change none = [](auto&) {};
    const std::tuple<const char*, int, int, DWORD, Change> cases[] = {
        {"reversed", 3, 2, MM_RANGE_REVERSED, none},
        {"above", -1, 2, MM_LINE_OUTSIDE, none},
        {"below", 2, 4, MM_LINE_OUTSIDE, none},
        {"stored lines overlap", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_InImgInf.nLineBytes = 19; }},
        {"source beyond 4 GiB", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_InImgInf.nOffset = -80; }},
        {"destination's overlap", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_OutImgInf.nLineBytes = 0; }},
        {"destination too narrow", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_OutImgInf.nWidth = 4; }},
        {"destination too low", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_OutImgInf.nHeight = 3; }},
        {"no such alignment", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_ImgInfo.nAlignType = 3; }},
        {"four bytes a sample read", 0, 0, MM_BAD_ARGUMENT, [](auto& i) { i.m_InImgInf.nSrcFormat = 0x404; }},
        {"four bytes a sample written", 0, 0, MM_BAD_ARGUMENT,
         [](auto& i) { i.m_nUnitType = 3, i.m_OutImgInf.nDstFormat = 0x404; }},
        {"formats unknown", 0, 0, MM_SUCCESS,
         [](auto& i) { i.m_InImgInf.nSrcFormat = 0x1201, i.m_OutImgInf.nDstFormat = 0x301; }},
        {"read only", 0, 0, MM_SUCCESS, [](auto& i) { i.m_nUnitType = 5, i.m_OutImgInf = {}; }},
        {"written only", 0, 4, MM_LINE_OUTSIDE,
         [](auto& i) { i.m_nUnitType = 3, i.m_InImgInf.nHeight = 9; }}};
    for (const auto& [pszCase, nFirst, nLast, nResult, change] : cases) {
        SCOPED_TRACE(pszCase);
        UnitImage image(5, 4, MM_FORMAT_BGRA32, MM_FORMAT_BGRA32, 20);
        change(image);
        T_ImageLrg_tag band{};
        EXPECT_CODE(nResult, image.MapBandRange(nFirst, nLast, &band, 0));
        EXPECT_EQ(nResult == MM_SUCCESS, band.pImage != nullptr);
        EXPECT_EQ(nResult == MM_SUCCESS, CImageObj::AskFreeMemory() < 100 * kMiB) << "charged";
        EXPECT_EQ(image.m_nUnitType == 5 ? 's' : 0, band.pImage ? *band.pImage : 0) << "reads known formats";
        EXPECT_OK(image.UnmapBand(0));
        EXPECT_EQ(std::pair(0, 100 * kMiB), std::pair(image.Written(), CImageObj::AskFreeMemory()));
    }
}

TEST_F(UnitBands, HoldOneBandAndKeepItsHeight) // and free it
{
    UnitImage image(5, 4, MM_FORMAT_BGRA32, MM_FORMAT_BGRA32, 20);
    T_ImageLrg_tag band{}, again{};
    ASSERT_OK(image.MapBandRange(0, 1, &band, 0));
    EXPECT_CODE(MM_BAD_ARGUMENT, image.SetImageInfo(&again)) << "the buffer has the old geometry";
    ASSERT_OK(image.MapBand(2, &again, MM_BAND_DOWNWARD, 7)) << "two lines, as before";
    EXPECT_EQ(40, image.Written()) << "a band that is still held is ended first";
    image.m_nUnitBandHeight = 3;
    image.GetImageInfo(&again); // which sets the next band's height, not the held one's
    ASSERT_OK(image.MapBandRange(3, 3, &again, 0));
    EXPECT_EQ(80, image.Written());
    EXPECT_EQ(3 * 20, again.nBufSize) << "a line alone has the room of a whole band";
    image.m_ImgInfo.nBandLines = 0;
    EXPECT_CODE(MM_RANGE_REVERSED, image.MapBand(0, &again, MM_BAND_DOWNWARD, 0));
    CImageObj target;
    CImageObj::ExchangeImg(&target, &image);
    EXPECT_OK(image.UnmapBand(0));
    EXPECT_EQ(80, image.Written());
    EXPECT_EQ(100 * kMiB - 60, CImageObj::AskFreeMemory()) << "the target holds it";
    CImageObj other;
    other.m_ImgInfo.pBase = band.pBase; // of a geometry: no band
    target.ExchangeImg(&other);
    EXPECT_OK(target.UnmapBand(0));
    EXPECT_EQ(80, image.Written());
    EXPECT_EQ(100 * kMiB, CImageObj::AskFreeMemory()) << "the exchange drops it";
    target.m_ImgInfo = image.m_ImgInfo;
    target.m_ImgInfo.nBandLines = 2;
    ASSERT_OK(target.MapBand(0, &band, MM_BAND_DOWNWARD, 0));
}

TEST_F(UnitBands, FindTheNextLineBehindAnyPadding)
{
    const std::string sPad(22, '#'), sFile = "aaaaaaaa" + sPad + "bbbbbbbb" + sPad + "########";
    for (const auto eAccess : {ACS_MEMORY, ACS_FILEIO}) {
        UnitImage image(2, 2, MM_FORMAT_BGRA32, MM_FORMAT_RAW64, 30, 1);
        const HostFile file(sFile);
        image.m_InImgInf.eAcsType = eAccess;
        image.m_InImgInf.hData = eAccess == ACS_FILEIO ? file.Handle() : image.sSource.data();
        image.sSource.replace(0, sFile.size(), sFile);
        image.m_OutImgInf.nOffset = 3;
        T_ImageLrg_tag band{};
        ASSERT_OK(image.MapBandRange(0, 1, &band, 0));
        const auto pLine = reinterpret_cast<const char*>(band.pImage) - 4;
        EXPECT_EQ(std::string("\0\0\0\0aaaaaaaa####\0\0\0\0bbbbbbbb####", 32), std::string(pLine, 32));
        EXPECT_OK(image.UnmapBand(0));
        EXPECT_OK(image.sTarget.find("..aaaa")) << "16-bit samples start at an even position of a block";
    }
}

TEST_F(UnitBands, FindTheirPixelsBehindABitmapsSignature)
{
    // type of the file, access, where the signature is, and the pixels' offset then; 7 is the host's own
    const int cases[][4] = {{0, ACS_MEMORY, 0, 54}, {0, ACS_MEMORY, 58, 112}, {0, ACS_MEMORY, 59, 7},
                            {1, ACS_MEMORY, 0, 7},  {0, ACS_FILEIO, 0, 54},   {0, ACS_FILEIO, 98, 152},
                            {0, ACS_FILEIO, 14, 7}, {0, ACS_MMF, 0, 7}};
    for (const auto& [nFileType, nAccess, nAt, nOffset] : cases) {
        UnitImage image(5, 4, MM_FORMAT_BGR24, MM_FORMAT_BGR24, 16); // pieces of 15 bytes
        image.sSource.replace(std::size_t(nAt), 2, "BM");
        const HostFile file(image.sSource);
        image.m_InImgInf.nFileType = nFileType;
        image.m_InImgInf.eAcsType = tag_E_ACSTYPE(nAccess);
        image.m_InImgInf.hData = nAccess == ACS_MEMORY ? image.sSource.data() : file.Handle();
        image.m_InImgInf.nOffset = 7;
        EXPECT_CODE(nOffset == 7 ? MM_BAD_ARGUMENT : MM_SUCCESS, image.CalcOffsetLength())
            << nAccess << ", signature at " << nAt;
        EXPECT_EQ(nOffset, image.m_InImgInf.nOffset);
        image.m_InImgInf.hData = nullptr;
        EXPECT_OK(image.CalcOffsetLength());
    }
}
