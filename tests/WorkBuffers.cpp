// Work buffers that share one block, and base buffers with their margins in another.

#include "MemoryManager/MemoryManager.h"
#include <gtest/gtest.h>

TEST(WorkBuffers, ShareOneBlockWithoutGaps)
{
    // clang-format off
    const std::tuple<std::vector<unsigned>, int, DWORD> cases[] = { // sizes, size of the block, result
        {{}, 0, 0}, {{0, 0}, 0, 0}, {{100, 0, 200}, 65536, 0}, {{1, 65535}, 65536, 0}, {{65536, 1}, 131072, 0},
        {{0x7FFFFFFF, 1}, 0, 1}, {{0x80000000, 0x80000000}, 0, 1}, {{0xFFFFFFFF, 200}, 0, 1}};
    // clang-format on
    for (const auto& [sizes, nTotal, nResult] : cases) {
        CWorkTableList table;
        std::vector<unsigned char*> buffers(sizes.size());
        for (std::size_t i = 0; i < buffers.size(); ++i)
            EXPECT_EQ(1, table.SetWorkTable(&buffers[i], sizes[i]));
        EXPECT_TRUE(table.GetTotalSize() == nTotal && CImageObj::AllocWorkMem(&table) == nResult);
        for (std::size_t i = 0, nAt = 0; i < buffers.size(); nAt += sizes[i++])
            EXPECT_EQ(nTotal > 0 && sizes[i] > 0 ? buffers[0] + nAt : nullptr, buffers[i]) << i;
    }
}

TEST(WorkBuffers, AreListedOnceAndBeforeTheBlock)
{
    CWorkTableList table;
    unsigned char *pA = nullptr, *pB = nullptr, *pC = nullptr;
    EXPECT_TRUE(table.SetWorkTable(&pA, 70000) && table.SetWorkTable(&pA, 5000) && table.AllocWorkTable());
    std::fill_n(pA, 65536, '\1'); // the whole granule is theirs
    // The next just fits, behind the last size of the first, in a fresh block.
    EXPECT_TRUE(table.SetWorkTable(&pB, 60536) && table.AllocWorkTable() && pB == pA + 5000 && (*pA)++ == 0);
    EXPECT_TRUE(table.SetWorkTable(&pC, 1) && CImageObj::AllocWorkMem(&table) == 1 && *pA == 1 && !pC);
    CImageObj::ReleaseWorkMem(&table);
    EXPECT_TRUE(!table.GetTotalSize() && table.SetWorkTable(&pC, 65537) && table.GetTotalSize() == 131072);
    CImageObj::ReleaseWorkMem(nullptr);
    EXPECT_TRUE(CImageObj::AllocWorkMem(nullptr) == 1 && table.SetWorkTable(nullptr, 1) == 0);
}

// Places so many buffers of so many lines, margin lines and bytes a line; the last fills them with 0xFF.
static int Place(T_BaseBuf_tag& r, const std::array<int, 4>& buffers, int nFill = 0)
{
    r.nBufCnt = buffers[0];
    std::fill_n(r.nBufLines, MM_BASE_BUFFERS, buffers[1]);
    std::fill_n(r.nBufMargin, MM_BASE_BUFFERS, buffers[2]);
    std::fill_n(r.nBufPitch, MM_BASE_BUFFERS, buffers[3]);
    return BaseMallocMain(&r, nFill, 0x1FF);
}

TEST(BaseBuffers, LieBehindTheirMarginsOrAreRefusedWithoutABlock)
{
    T_BaseBuf_tag r{};
    EXPECT_TRUE(BaseMallocInit(&r) == 0 && r.nMemSize == 2097152);
    const unsigned char* p = r.pMem;
    EXPECT_TRUE(Place(r, {2, 10, 2, 100}) == 0 && r.pBuf[0] == p + 208 && r.pBuf[1] == p + 1408 + 208);
    EXPECT_TRUE(Place(r, {96, 1, 0, 1}, 1) == 0 && r.pBuf[95] == p + 95 * 16);
    EXPECT_EQ(65536, std::count(p, p + 2097152, 0xFF)) << "no more than the buffers take";
    EXPECT_TRUE(Place(r, {1, 2097152, 0, 1}, 2) == 0 && r.nBufCnt == 1 && p[65536] == 0 && !r.pBuf[1]);
    EXPECT_TRUE(Place(r, {3, 1024, 0, 1024}) == 0 && r.nMemSize == 3145728 && r.nBufCnt == 0);
    EXPECT_EQ(r.pMem + 2097152, r.pBuf[2]) << "placed by what the record held before";
    BaseMallocFree(&r);

    // clang-format off
    const std::array<int, 4> refused[] = {
        {0, 1, 0, 1}, {97, 1, 0, 1}, {2, 0, 0, 1}, {1, 1, -1, 1}, {96, 1, 0, 0}, {1, 65536, 0, 65536},
        {5, 1722007169, 0, 2142470067}, {1, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}, {1, 1, 65536, 65536}, {96, 22369, 0, 1000}};
    // clang-format on
    for (const auto& c : refused) {
        r.nMemSize = 70000;
        EXPECT_TRUE(BaseMallocInit(&r) == 0 && r.nMemSize == 131072 && Place(r, {1, 9, 2, 9}) == 0);
        EXPECT_TRUE(Place(r, c) == 18 && !r.pMem && r.nMemSize == 0 && !r.pBuf[0]) << c[1];
    }
    for (const int nSize : {-1, 0x7FFFFFFF, 0x7FFF0001}) {
        r.nMemSize = nSize;
        EXPECT_TRUE(BaseMallocInit(&r) == 1 && !r.pMem && r.nMemSize == 0) << nSize;
    }
}
