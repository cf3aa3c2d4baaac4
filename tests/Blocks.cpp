// Rectangles out of images and back, in memory blocks, banded files and the unit scheme, byte for byte
// against a buffer that is looked up pixel by pixel.

#include "TestImages.h"

#include <climits>

namespace {

using Codes = std::pair<DWORD, DWORD>;

/// An image whose bytes tell where they belong: the store's whole buffer, or a unit object's source.
struct BlockImage : CImageObj
{
    bool bUnit;
    std::vector<unsigned char> bytes, target;

    BlockImage(bool bAsUnit, int nWidth, int nHeight, int nMarginX, int nMarginY, int nAlign) : bUnit(bAsUnit)
    {
        T_ImageLrg_tag info = Geometry(nWidth, nHeight, nMarginX, MM_FORMAT_BGRA32, nAlign);
        info.nMarginY = nMarginY;
        EXPECT_OK(SetImageInfo(&info));
        bytes.resize(std::size_t(bUnit ? nWidth * nHeight * 4 : info.nBufSize));
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(i % 249 + i / 249 % 3 + 1);
        target.resize(bytes.size(), '.');
        T_ImgInf in{1, ACS_MEMORY, bytes.data(), 0, nWidth, nHeight, 0x401, 0x401, nWidth * 4}, out = in;
        out.hData = target.data();
        EXPECT_OK(bUnit ? ImportImgForUnit(this, &in, &out, 0, nullptr, nAlign, 0)
                        : Step({this}, {}).Alloc());
        SetFrameColor(MM_FRAME_REPLICATE, 0);
        if (!bUnit)
            std::memcpy(Stored(), bytes.data(), bytes.size());
    }
    /// Where the image is, or what became of it.
    unsigned char* Stored()
    {
        return bUnit ? target.data()
                     : static_cast<unsigned char*>(m_pImageCtrl->MapBandAdress(0, DWORD(bytes.size()), 9));
    }
    std::size_t Offset(int x, int y) const
    {
        const auto& info = m_ImgInfo;
        return std::size_t(bUnit ? (y * info.nWidth + x) * 4
                                 : (y + info.nMarginY) * info.nLineBytes + (x + info.nMarginX) * 4);
    }
    /// Around a unit band nothing but the frame lines below the image is painted.
    unsigned char At(int x, int y, int i) const
    {
        if (bUnit && (y < 0 || x < 0 || x >= m_ImgInfo.nWidth))
            return 0;
        return bytes[Offset(x, bUnit ? std::min(y, m_ImgInfo.nHeight - 1) : y) + std::size_t(i)];
    }
};

} // namespace

using Blocks = BudgetTest;

TEST_AT_ANY_ADDRESS(Blocks, AreTheImageWithItsMarginAndGoBackWithout)
{
    std::mt19937 random{9};
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    int nFilled = 0;
    for (int n = 0; n < 6000; ++n) {
        n % 3 == 0 ? BudgetTest::Shrink(2000) : BudgetTest::Reset();
        const bool bUnit = n % 3 == 1;
        const int nWidth = 1 + pick(20), nHeight = 1 + pick(60), nMarginX = pick(5), nMarginY = pick(5);
        BlockImage image(bUnit, nWidth, nHeight, nMarginX, nMarginY, pick(3));
        image.m_ImgInfo.nBandLines = 1 + pick(20);
        const auto before = image.m_ImgInfo;
        const LONG nFree = CImageObj::AskFreeMemory();
        const int nTop = pick(nHeight), nBottom = nTop + pick(nHeight - nTop), X = pick(6) * pick(2);
        const int nLeft = pick(nWidth), nRight = nLeft + pick(nWidth - nLeft), Y = pick(6) * pick(2);
        SCOPED_TRACE(testing::PrintToString(std::tuple(n, nTop, nBottom, nLeft, nRight)));
        T_ImageLrg_tag block{};
        CImageObj::AllcImgBufLrg(&block, nRight - nLeft + 1, nBottom - nTop + 1, X, Y, 0x401, pick(3));

        const bool bMargin = nLeft >= X - nMarginX && nRight + X < nWidth + nMarginX &&
                             nTop >= Y - nMarginY && nBottom + Y < nHeight + nMarginY &&
                             (!bUnit || Y <= nMarginY);
        ASSERT_CODE(bMargin ? MM_SUCCESS : MM_BAD_ARGUMENT,
                    image.MapBlock(nTop, nBottom, nLeft, nRight, &block));
        ASSERT_TRUE(SameBytes(BytesAt(&before, sizeof(before)), BytesAt(&image.m_ImgInfo, sizeof(before))))
            << "the object's geometry has changed";
        std::vector<unsigned char> wanted(std::size_t(block.nBufSize), 0);
        for (int y = -Y; y < block.nHeight + Y && bMargin; ++y)
            for (int i = 0; i < 4 * (block.nWidth + 2 * X); ++i)
                wanted[std::size_t(block.pImage - block.pBase + y * block.nLineBytes + i - 4 * X)] =
                    image.At(nLeft + i / 4 - X, nTop + y, i % 4);
        ASSERT_TRUE(SameBytes(BytesAt(wanted.data(), wanted.size()), BytesAt(block.pBase, wanted.size())));
        nFilled += bMargin ? 1 : 0;
        const auto sStored = BytesAt(image.Stored(), image.bytes.size());
        ASSERT_TRUE(!bUnit || SameBytes(std::string(sStored.size(), '.'), sStored)) << "reading has written";

        std::generate_n(block.pBase, block.nBufSize, [&] { return static_cast<unsigned char>(pick(256)); });
        ASSERT_OK(image.UnMapBlock(nTop, nBottom, nLeft, nRight, &block));
        for (int y = 0; y < block.nHeight; ++y)
            std::memcpy(&image.bytes[image.Offset(nLeft, nTop + y)], block.pImage + y * block.nLineBytes,
                        std::size_t(block.nWidth) * 4);
        const unsigned char* pStored = image.Stored();
        for (std::size_t i = 0; i < image.bytes.size(); ++i) {
            const bool bVisited = !bUnit || (i >= image.Offset(0, nTop) && i < image.Offset(0, nBottom + 1));
            ASSERT_EQ(bVisited || pStored[i] != '.' ? image.bytes[i] : '.', pStored[i]) << i;
        }
        CImageObj::FreeImgBufLrg(&block);
        ASSERT_EQ(bUnit ? nullptr : before.pBase, image.m_ImgInfo.pBase) << "a unit band stays held";
        ASSERT_EQ(nFree, CImageObj::AskFreeMemory());
    }
    EXPECT_GT(nFilled, 3000);
}

TEST_F(Blocks, AreWholeWhereALineLiesAcrossTheEndOfAView)
{
    Shrink(kMiB); // views of 2 MiB
    BlockImage image(false, 10, 60000, 0, 4, MM_ALIGN_PACKED);
    T_ImageLrg_tag block{};
    ASSERT_OK(CImageObj::AllcImgBufLrg(&block, 10, 21, 0, 4, MM_FORMAT_BGRA32, MM_ALIGN_PACKED));
    ASSERT_OK(image.UnmapBand(9));
    ASSERT_OK(image.MapBlock(52400, 52420, 0, 9, &block));
    EXPECT_TRUE(
        SameBytes(BytesAt(&image.bytes[image.Offset(0, 52396)], 29 * 40), BytesAt(block.pBase, 29 * 40)));
    CImageObj::FreeImgBufLrg(&block);
}

TEST_F(Blocks, OfAnEnlargementHaveTheDestinationsSampleWidth)
{
    std::vector<unsigned char> source(54 + 3 * 12, 1), target(54 + 3 * 12, '.');
    T_ImgInf in{0, ACS_MEMORY, source.data(), 0, 4, 3, MM_FORMAT_BGR24, MM_FORMAT_RAW64, 12};
    T_ImgInf out{0, ACS_MEMORY, target.data(), 0, 4, 3, MM_FORMAT_RAW64, MM_FORMAT_BGR24, 12};
    CImageObj reader, writer;
    ASSERT_OK(ImportImgForUnitEnLarge(&writer, &out, &reader, &in, 0, nullptr, 0));
    EXPECT_EQ(4, writer.m_ImgInfo.nPixelBytes);
    T_ImageLrg_tag block{};
    for (const auto& [nFormat, nResult] :
         {std::pair(MM_FORMAT_RAW64, MM_BAD_ARGUMENT), {MM_FORMAT_BGRA32, MM_SUCCESS}}) {
        ASSERT_OK(CImageObj::AllcImgBufLrg(&block, 4, 3, 0, 0, nFormat, MM_ALIGN_PACKED));
        writer.m_ImgInfo.nPixelBytes = block.nPixelBytes; // a host may have set another geometry
        EXPECT_CODE(nResult, writer.UnMapBlock(0, 2, 0, 3, &block));
        writer.m_ImgInfo.nPixelBytes = block.nPixelBytes;
        EXPECT_CODE(nResult, writer.MapBlock(0, 2, 0, 3, &block));
        CImageObj::FreeImgBufLrg(&block);
        EXPECT_EQ(nullptr, writer.m_ImgInfo.pBase) << "a band stays held";
        EXPECT_EQ(nResult == MM_SUCCESS ? 0 : '.', target[54]) << "a refusal has written";
    }
    out.nDstFormat = 0x404, target[0] = '.';
    EXPECT_CODE(MM_BAD_ARGUMENT, ImportImgForUnitEnLarge(&writer, &out, &reader, &in, 0, nullptr, 0));
    EXPECT_EQ('.', target[0]) << "four bytes a sample: a refusal has written";
}

TEST_F(Blocks, AreRefusedOutsideTheImageAndForOtherPixels)
{
    BlockImage image(true, 5, 8, 1, 1, MM_ALIGN_PACKED);
    T_ImageLrg_tag block{}, band{};
    ASSERT_OK(CImageObj::AllcImgBufLrg(&block, 5, 8, 0, 0, MM_FORMAT_BGRA32, MM_ALIGN_PACKED));
    const auto codes = [&](int nTop, int nBottom, int nLeft, int nRight) {
        return Codes(image.MapBlock(nTop, nBottom, nLeft, nRight, &block),
                     image.UnMapBlock(nTop, nBottom, nLeft, nRight, &block));
    };
    for (const int nOutside : {-1, 8}) {
        EXPECT_EQ(Codes(MM_BLOCK_TOP, MM_UNBLOCK_TOP), codes(nOutside, nOutside, 9, 9));
        EXPECT_EQ(Codes(MM_BLOCK_BOTTOM, MM_UNBLOCK_BOTTOM), codes(7, nOutside, 9, 9));
        EXPECT_EQ(Codes(MM_BLOCK_LEFT, MM_UNBLOCK_LEFT), codes(7, 7, nOutside, 9));
        EXPECT_EQ(Codes(MM_BLOCK_RIGHT, MM_UNBLOCK_RIGHT), codes(7, 7, 4, nOutside));
    }
    EXPECT_EQ(Codes(MM_BAD_ARGUMENT, MM_SUCCESS), codes(3, 2, 0, 4)) << "bottom above top";
    EXPECT_EQ(Codes(MM_BAD_ARGUMENT, MM_SUCCESS), codes(2, 2, 4, 3)) << "right before left";
    block.nPixelBytes = 3;
    EXPECT_EQ(Codes(MM_BAD_ARGUMENT, MM_BAD_ARGUMENT), codes(0, 1, 0, 1)) << "other pixels";
    const T_ImageLrg_tag info = image.m_ImgInfo;
    block.nPixelBytes = 4, image.m_ImgInfo.nMarginX = INT_MIN;
    EXPECT_EQ(Codes(MM_BAD_ARGUMENT, MM_BAD_ARGUMENT), codes(0, 1, 0, 1)) << "no such margin";
    image.m_ImgInfo = info, image.m_ImgInfo.nBandLines = 0;
    EXPECT_EQ(Codes(MM_RANGE_REVERSED, MM_RANGE_REVERSED), codes(0, 1, 0, 1)) << "not planned";
    image.m_ImgInfo = info;
    EXPECT_OK(image.MapBandRange(2, 3, &band, 0));
    image.m_OutImgInf.eAcsType = ACS_FILEIO;
    EXPECT_EQ(Codes(MM_UNKNOWN_MODE, MM_UNKNOWN_MODE), codes(0, 7, 0, 4));
    EXPECT_NE(nullptr, image.m_ImgInfo.pBase) << "a refusal drops the band that was held";
    EXPECT_EQ(std::string(160, '.'), BytesAt(image.target.data(), 160)) << "a refusal has written";
    image.m_OutImgInf.eAcsType = ACS_MEMORY;
    EXPECT_OK(image.MapBlock(6, 7, 0, 4, &block));
    EXPECT_TRUE(SameBytes(BytesAt(&image.bytes[40], 40), BytesAt(&image.target[40], 40)))
        << "the band that was held is not written";
    EXPECT_EQ(nullptr, image.m_ImgInfo.pBase) << "the band that was held is put back";
    CImageObj::FreeImgBufLrg(&block);
}
