// Work buffers that share one block, and base buffers with their margins in another.

#include "ResultChecks.h"

#include "MemoryManager/MemoryManager.h"

TEST(WorkBuffers, ShareOneBlockWithoutGaps)
{
    using Sizes = std::vector<unsigned>;
    constexpr int kTooMuch = -1;
    const std::pair<Sizes, int> cases[] = {
        // and what they take together
        {{}, 0},      {{1, 65535}, 65536},    {{0xFFFFFFFF, 200}, kTooMuch},
        {{0, 0}, 0},  {{100, 0, 200}, 65536}, {{0x80000000, 0x80000000}, kTooMuch},
        {{7}, 65536}, {{65536, 1}, 131072},   {{INT_MAX, 1}, kTooMuch}};
    for (const auto& [sizes, nTotal] : cases) {
        SCOPED_TRACE(testing::PrintToString(sizes));
        CWorkTableList table;
        std::vector<unsigned char*> buffers(sizes.size());
        for (std::size_t i = 0; i < buffers.size(); ++i)
            EXPECT_EQ(1, table.SetWorkTable(&buffers[i], sizes[i]));
        EXPECT_EQ(std::max(nTotal, 0), table.GetTotalSize());
        EXPECT_CODE(nTotal == kTooMuch ? MM_NO_MEMORY : MM_SUCCESS, CImageObj::AllocWorkMem(&table));
        for (std::size_t i = 0, nAt = 0; i < buffers.size(); nAt += sizes[i++]) {
            const bool bPlaced = nTotal > 0 && sizes[i] > 0;
            EXPECT_EQ(bPlaced ? buffers[0] + nAt : nullptr, buffers[i]) << "buffer " << i;
        }
    }
}

TEST(WorkBuffers, AreListedOnceAndBeforeTheBlock)
{
    CWorkTableList table;
    unsigned char *pA = nullptr, *pB = nullptr, *pC = nullptr;
    EXPECT_EQ(1, table.SetWorkTable(&pA, 70000));
    EXPECT_EQ(1, table.SetWorkTable(&pA, 5000));
    EXPECT_EQ(1, table.AllocWorkTable());
    std::fill_n(pA, 65536, '\1');                 // the whole granule is theirs
    EXPECT_EQ(1, table.SetWorkTable(&pB, 60536)); // just fits behind the last size of the first
    EXPECT_EQ(1, table.AllocWorkTable());
    EXPECT_EQ(pA + 5000, pB);
    EXPECT_EQ(0, *pA) << "not a fresh block";
    *pA = 1;
    EXPECT_EQ(1, table.SetWorkTable(&pC, 1));
    EXPECT_CODE(MM_NO_MEMORY, CImageObj::AllocWorkMem(&table)) << "behind the block";
    EXPECT_EQ(1, *pA) << "the block is gone";
    EXPECT_EQ(nullptr, pC);
    CImageObj::ReleaseWorkMem(&table);
    EXPECT_EQ(0, table.GetTotalSize());
    EXPECT_EQ(1, table.SetWorkTable(&pC, 65537));
    EXPECT_EQ(131072, table.GetTotalSize());
    CImageObj::ReleaseWorkMem(nullptr);
    EXPECT_CODE(MM_NO_MEMORY, CImageObj::AllocWorkMem(nullptr));
    EXPECT_EQ(0, table.SetWorkTable(nullptr, 1));
}

/// How many buffers, of how many lines, margin lines and bytes a line.
using Buffers = std::array<int, 4>;

/// Places the buffers in the record's block; nFill 1 fills them with 0xFF.
static int Place(T_BaseBuf_tag& r, const Buffers& buffers, int nFill = 0)
{
    r.nBufCnt = buffers[0];
    std::fill_n(r.nBufLines, MM_BASE_BUFFERS, buffers[1]);
    std::fill_n(r.nBufMargin, MM_BASE_BUFFERS, buffers[2]);
    std::fill_n(r.nBufPitch, MM_BASE_BUFFERS, buffers[3]);
    return BaseMallocMain(&r, nFill, 0x1FF);
}

TEST(BaseBuffers, LieBehindTheirMargins)
{
    T_BaseBuf_tag r{};
    EXPECT_OK(BaseMallocInit(&r));
    EXPECT_EQ(2097152, r.nMemSize);
    unsigned char* const p = r.pMem;
    EXPECT_OK(Place(r, {2, 10, 2, 100}));
    EXPECT_EQ(std::pair(p + 208, p + 1408 + 208), std::pair(r.pBuf[0], r.pBuf[1]));
    EXPECT_OK(Place(r, {96, 1, 0, 1}, 1));
    EXPECT_EQ(p + 95 * 16, r.pBuf[95]);
    EXPECT_EQ(65536, std::count(p, p + 2097152, 0xFF)) << "no more than the buffers take";
    EXPECT_OK(Place(r, {1, 2097152, 0, 1}, 2));
    EXPECT_EQ(1, r.nBufCnt);
    EXPECT_EQ(nullptr, r.pBuf[1]);
    EXPECT_EQ(0, p[65536]) << "the larger buffers are not cleared";
    EXPECT_OK(Place(r, {3, 1024, 0, 1024}));
    EXPECT_EQ(std::pair(3145728, 0), std::pair(r.nMemSize, r.nBufCnt));
    EXPECT_EQ(r.pMem + 2097152, r.pBuf[2]) << "placed by what the record held before";
    BaseMallocFree(&r);
}

TEST(BaseBuffers, AreRefusedWithoutABlock)
{
    const Buffers refused[] = {{1, 1, -1, 1}, {1, 1, 65536, 65536}, {1, INT_MAX, INT_MAX, INT_MAX},
                               {96, 1, 0, 0}, {1, 65536, 0, 65536}, {5, 1722007169, 0, 2142470067},
                               {0, 1, 0, 1},  {96, 22369, 0, 1000}, {97, 1, 0, 1},
                               {2, 0, 0, 1}};
    const std::tuple<unsigned char*, int, unsigned char*> kNoBlock(nullptr, 0, nullptr);
    T_BaseBuf_tag r{};
    for (const Buffers& buffers : refused) {
        SCOPED_TRACE(testing::PrintToString(buffers));
        r.nMemSize = 70000;
        EXPECT_OK(BaseMallocInit(&r));
        EXPECT_EQ(131072, r.nMemSize);
        EXPECT_OK(Place(r, {1, 9, 2, 9}));
        EXPECT_CODE(MM_BAD_ARGUMENT, Place(r, buffers));
        EXPECT_EQ(kNoBlock, std::tuple(r.pMem, r.nMemSize, r.pBuf[0]));
    }
    for (const int nSize : {-1, 0x7FFFFFFF, 0x7FFF0001}) {
        r.nMemSize = nSize;
        EXPECT_CODE(MM_NO_MEMORY, BaseMallocInit(&r)) << nSize;
        EXPECT_EQ(kNoBlock, std::tuple(r.pMem, r.nMemSize, r.pBuf[0]));
    }
}
