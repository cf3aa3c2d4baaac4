// What the sizing pass gives to steps of all sizes, as digests compared with expected/plans.txt: every target
// must round alike. MM_WRITE_DIGESTS=FILE writes what is found here, for a table that was changed on purpose.

#include "ReportFiles.h"
#include "TestImages.h"

constexpr int kFormats[] = {MM_FORMAT_BGR24, MM_FORMAT_BGRA32, MM_FORMAT_RAW48, MM_FORMAT_RAW64};

/// The FNV-1a digest of 64 bits of steps with images of all sizes up to 2 GiB.
static std::uint64_t PlansWithin(int nMiB)
{
    std::uint64_t nHash = 0xCBF29CE484222325;
    const auto add = [&](std::int64_t nNumber) {
        for (int i = 0; i < 64; i += 8)
            nHash = (nHash ^ (static_cast<std::uint64_t>(nNumber) >> i & 0xFF)) * 0x100000001B3;
    };
    std::mt19937 random{unsigned(nMiB)};
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int i = 0; i < 3000; ++i) {
        CImageObj::ms_nOnMemory = i / 2 % 2 * 12 * kMiB;
        CImageObj::ms_MinBand = 16 + i % 40;
        CImageObj::InitBaseMemory(nMiB * kMiB, 32 * kMiB);
        std::list<TestImage> images;
        std::vector<CImageObj*> list;
        for (int n = 2 + pick(3); n > 0; --n) {
            // Every other step has round numbers, whose quotients are whole but for the rounding.
            const bool bRound = i % 2 == 0;
            const int shape[] = {bRound ? 256 << pick(5) : 1 + pick(12000), 1 + pick(20000),
                                 bRound ? 0 : pick(17), bRound ? 1 : pick(4), pick(3)}; // in this order
            const auto& [nWidth, nHeight, nMargin, nType, nAlign] = shape;
            list.push_back(&images.emplace_back(Geometry(nWidth, nHeight, nMargin, kFormats[nType], nAlign)));
            list.back()->SetFsize(pick(nMargin + 1));
            list.back()->SetRatio(bRound ? 50 * (1 + pick(4)) : 1 + pick(400));
        }
        tag_MemAlloc request{int(list.size()) - 1, 1, 0, 1 + i % 3};
        add(CImageObj::MemoryCalculation(&request, list.data(), &list.back()));
        for (CImageObj* pImage : list)
            for (const int n : {pImage->m_ImgInfo.nBandLines, int{pImage->m_nAreaSize}, pImage->IsOnMemory()})
                add(n);
        add(CImageObj::AskFreeMemory());
    }
    return nHash;
}

using Plans = BudgetTest;

TEST_F(Plans, AreTheSameOnEveryTarget)
{
    std::ostringstream found;
    for (const int nMiB : {12, 20, 64, 100, 400, 1024})
        found << std::dec << nMiB << " MiB " << std::hex << PlansWithin(nMiB) << '\n';
    if (const char* pszFile = std::getenv("MM_WRITE_DIGESTS"))
        std::ofstream(pszFile, std::ios::binary) << found.str();
    EXPECT_EQ(FileBytes(kExpectedFiles / "plans.txt"), found.str());
}
