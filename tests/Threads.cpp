// Steps of several host threads at once: the budget, the temporary folder and the files keep apart.

#include "TestImages.h"

using Threads = BudgetTest;

TEST_F(Threads, PlanAndWorkSideBySide)
{
    Shrink(2 * kMiB);
    const auto work = [](int nSeed) {
        for (int nRound = 0; nRound < 15; ++nRound) {
            TestImage in(Geometry(300, 700)), out(Geometry(200, 50 + 20 * nRound));
            ASSERT_OK(Step({&in}, {&out}).Alloc());
            for (bool bWrite : {true, false})
                ForEachBand(in, [&](const auto& band) {
                    for (int k = 0; k < band.nBandLines; ++k) {
                        auto& nPixel = band.pImage[k * band.nLineBytes + k % 1000];
                        const auto nValue = static_cast<unsigned char>(nSeed * 50 + band.nBandTop + k);
                        if (bWrite)
                            nPixel = nValue;
                        ASSERT_EQ(nValue, nPixel) << "another thread's pixel";
                    }
                });
            if (nRound % 3 == 0)
                in.CnvFileImg();
        }
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work, i);
}

// The thread sanitizer watches what the transfers share.
TEST_F(Threads, ImportAndExportBlocks)
{
    const auto work = [](char chFill) {
        std::string sIn(40 * 240, chFill), sOut(sIn.size(), '.');
        T_ImgInf in{MM_FILE_RAW, ACS_MEMORY, sIn.data(), 0, 40, 40, 0x1322, 0x1322, 240}, out = in;
        out.hData = sOut.data();
        for (int i = 0; i < 50; ++i) {
            CImageObj image;
            ASSERT_OK(ImportImg(&image, &in, 0, nullptr));
            ASSERT_OK(ExportImg(&image, &out, 0, nullptr, 0));
        }
        EXPECT_EQ(sIn, sOut);
    };
    std::jthread other(work, 'a');
    work('b');
}
