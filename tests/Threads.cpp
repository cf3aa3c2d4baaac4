// Steps of several host threads at once: the budget, the temporary folder and the files keep apart.

#include "TestImages.h"

#include <thread>

using Threads = BudgetTest;

TEST_F(Threads, PlanAndWorkSideBySide)
{
    Shrink(2 * kMiB);
    const auto work = [](int nSeed) {
        for (int nRound = 0; nRound < 15; ++nRound) {
            TestImage in(Geometry(300, 700)), out(Geometry(200, 50 + 20 * nRound));
            ASSERT_OK(Step({&in}, {&out}).Alloc());
            for (bool bWrite : {true, false}) {
                T_ImageLrg_tag band{};
                for (int nLine = 0; nLine < 700; nLine = band.nBandBottom + 1) {
                    ASSERT_OK(in.MapBand(nLine, &band, MM_BAND_DOWNWARD, 0));
                    for (int k = 0; k < band.nBandLines; ++k) {
                        auto& nPixel = band.pImage[k * band.nLineBytes + k % 1000];
                        const auto nValue = static_cast<unsigned char>(nSeed * 50 + nLine + k);
                        if (bWrite)
                            nPixel = nValue;
                        ASSERT_EQ(nValue, nPixel) << "another thread's pixel";
                    }
                    ASSERT_OK(in.UnmapBand(0));
                }
            }
            if (nRound % 3 == 0)
                in.CnvFileImg();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work, i);
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(2 * kMiB, CImageObj::AskFreeMemory());
}
