// What the planner gives each image of a step, and what the budget holds afterwards.

#include "HostFile.h"
#include "TestImages.h"

using Planner = BudgetTest;

static T_ImageLrg_tag Lines(int nLineBytes, int nHeight, int nMargin = 0)
{
    return Geometry(nLineBytes, nHeight, nMargin, 0x101);
}

TEST_F(Planner, KeepsSmallImagesWhole)
{
    TestImage in(Lines(8192, 1024)), out(Lines(8192, 1024));
    Step step({&in}, {&out});
    step.request.nMinBand = 64;
    ASSERT_OK(step.Alloc());
    EXPECT_EQ(84 * kMiB, CImageObj::AskFreeMemory());
    EXPECT_EQ(1024, in.m_ImgInfo.nBandLines);
    EXPECT_EQ(ACS_MEMORY, out.m_pImageCtrl->GetAcsType());
    EXPECT_EQ(64, CImageObj::ms_MinBand);
    step.request.nMinBand = 8;
    ASSERT_OK(step.Alloc()) << "an image that is still held is not charged twice";
    EXPECT_EQ(84 * kMiB, CImageObj::AskFreeMemory());
    EXPECT_EQ(16, CImageObj::ms_MinBand);
}

TEST_F(Planner, SharesWhatIsLeft)
{
    using Images = std::vector<std::array<int, 3>>; // bytes of a line, lines, ratio
    const Images one{{1000, 20000, 100}}, two(2, one[0]), small{{2000, 10000, 100}};
    // inputs and outputs, the budget, and the lines of all their bands
    const std::tuple<const char*, Images, Images, int, std::vector<int>> cases[] = {
        {"equal ratios", one, one, 1000000, {500, 500}},
        {"input at twice the ratio", {{1000, 20000, 200}}, one, 1000000, {667, 333}},
        {"two inputs: one half, then half of the rest", two, {}, 1000000, {500, 250}},
        {"one input alone", one, {}, 1000000, {1000}},
        {"output capped: inputs are whole", small, {{10000, 20000, 100}}, 100 * kMiB, {10000, 2516}},
        {"a tenth of the ratio, of the lines", small, {{10000, 20000, 10}}, 100 * kMiB, {10000, 1000}}};
    for (const auto& [pszCase, inputs, outputs, nBudget, bands] : cases) {
        SCOPED_TRACE(pszCase);
        nBudget < kMiB ? Shrink(nBudget) : Reset();
        std::list<TestImage> images;
        const auto list = [&](const Images& shapes) {
            std::vector<CImageObj*> added;
            for (const auto& [nLineBytes, nHeight, nRatio] : shapes) {
                added.push_back(&images.emplace_back(Lines(nLineBytes, nHeight)));
                added.back()->SetRatio(nRatio);
            }
            return added;
        };
        const auto in = list(inputs), out = list(outputs);
        ASSERT_OK(Step(in, out).Alloc());
        LONG nLeft = nBudget;
        auto pBand = bands.begin();
        for (TestImage& image : images) {
            const auto& info = image.m_ImgInfo;
            const LONG nCharge = *pBand * info.nLineBytes;
            const auto eAccess = *pBand < info.nHeight ? ACS_MMF : ACS_MEMORY;
            EXPECT_EQ(std::tuple(*pBand++, nCharge, eAccess),
                      std::tuple(info.nBandLines, image.m_nAreaSize, image.m_pImageCtrl->GetAcsType()));
            nLeft -= nCharge;
        }
        EXPECT_EQ(nLeft, CImageObj::AskFreeMemory());
    }
}

TEST_F(Planner, BandsWhatIsLargerThanOneMapping)
{
    CImageObj::InitBaseMemory(400 * kMiB, 64 * kMiB);
    TestImage in(Geometry(20480, 10240, 8, 0x101), 8);
    Step step({&in}, {});
    step.request.nMapCnt = 2;
    ASSERT_OK(step.Alloc());
    const int nBuffer = 32 * kMiB / in.m_ImgInfo.nLineBytes;
    EXPECT_EQ(nBuffer - 16, in.m_ImgInfo.nBandLines) << "the frame is part of the band buffer";
    EXPECT_EQ(nBuffer * in.m_ImgInfo.nLineBytes * 2, in.m_nAreaSize);

    // In memory if told so, whatever the size.
    TestImage held(Lines(20480, 2048));
    held.SetOnMemory();
    ASSERT_OK(Step({&held}, {}).Alloc());
    EXPECT_EQ(1, held.IsOnMemory());
}

TEST_F(Planner, RefusesBadRequestsWithoutACharge)
{
    TestImage in(Lines(1000, 20000)), out(Lines(1000, 20000));
    CImageObj bare;
    const auto refuse = [&](Step step, DWORD nResult, const char* pszCase) {
        EXPECT_CODE(nResult, step.Alloc()) << pszCase;
        EXPECT_EQ(100 * kMiB, CImageObj::AskFreeMemory()) << pszCase;
        EXPECT_EQ(0, in.m_nAreaSize) << pszCase;
    };
    refuse(Step({nullptr}, {&out}), MM_BAD_ARGUMENT, "no object");
    refuse(Step({&in}, {&bare}), MM_BAD_ARGUMENT, "no store");
    CImageObj shapeless(&bare);
    refuse(Step({&in}, {&shapeless}), MM_BAD_ARGUMENT, "no geometry");
    CImageObj tooLarge(&in, 1 << 30, 1 << 30, 4);
    refuse(Step({&tooLarge}, {}), MM_BAD_ARGUMENT, "a size without a layout");
    TestImage lines(Lines(1000, 20000));
    lines.m_ImgInfo.nBufSize = 16000;
    refuse(Step({&lines}, {}), MM_BAD_ARGUMENT, "lines that do not fit their buffer, as a unit band's");
    lines.SetImageInfo(&lines.m_ImgInfo);
    lines.m_ImgInfo.nRatio = -1;
    refuse(Step({&lines}, {}), MM_BAD_ARGUMENT, "a negative ratio");
    Step slots({&in}, {&out});
    slots.request.nMapCnt = 11;
    refuse(slots, MM_BAD_ARGUMENT, "more slots than a store has");
    Step negative({}, {&out});
    negative.request.nInCnt = -1;
    refuse(negative, MM_BAD_ARGUMENT, "negative count");
    refuse(Step({}, {&out, &out}), MM_TOO_MANY_OUTPUTS, "two outputs, no input to withhold the reserve for");
}

TEST_F(Planner, WithholdsTheReserveOnceUntilTheFirstInputGoes)
{
    {
        TestImage in(Lines(1000, 20000)), out(Lines(1000, 20000));
        Step step({&in}, {&out, &out});
        EXPECT_CODE(MM_TOO_MANY_OUTPUTS, step.Alloc());
        EXPECT_EQ(1, in.m_nReserveTaken);
        EXPECT_EQ(0, CImageObj::AskFreeMemory());
        EXPECT_CODE(MM_TOO_MANY_OUTPUTS, step.Alloc());
        EXPECT_EQ(0, CImageObj::AskFreeMemory()) << "withheld a second time";

        step.request.nOutCnt = 1;
        EXPECT_OK(step.Alloc());
        EXPECT_EQ(std::pair(16, 16), std::pair(in.m_ImgInfo.nBandLines, out.m_ImgInfo.nBandLines))
            << "smallest bands while the reserve is withheld";
    }
    EXPECT_EQ(100 * kMiB, CImageObj::AskFreeMemory());

    Shrink(kMiB);
    TestImage zero(Lines(1000, 20000));
    zero.SetRatio(0);
    EXPECT_CODE(MM_RATIO_ZERO, Step({&zero}, {}).Alloc());
    EXPECT_EQ(0, CImageObj::AskFreeMemory());
}

namespace {

struct FailingImage : CImageObj
{
    int nFailures;
    FailingImage(T_ImageLrg_tag info, int nTimes) : nFailures(nTimes) { EXPECT_OK(SetImageInfo(&info)); }
    DWORD Create(LONG nSize, LONG nAllotted, int nSlots) override
    {
        return nFailures-- > 0 ? DWORD{MM_FILE_ACCESS} : CImageObj::Create(nSize, nAllotted, nSlots);
    }
};

} // namespace

TEST_F(Planner, PlansAfreshWhatAFailedAttemptChargedForAndDidNotReach)
{
    Shrink(4 * kMiB);
    FailingImage first(Lines(1000, 1000), 1);
    TestImage second(Lines(1000, 1000)), work(Lines(1000, 1000));
    ASSERT_OK(Step({&first, &second}, {}, {&work}).Alloc());
    EXPECT_EQ(std::pair(16, 16), std::pair(second.m_ImgInfo.nBandLines, work.m_ImgInfo.nBandLines))
        << "the first attempt held them whole";
    Reset(); // what the failed store was charged is lost
}

TEST_F(Planner, HoldsAnImageWholeThatFitsTheBudgetExactly)
{
    for (const int nLess : {0, 1}) {
        TestImage image(Lines(1000, 5000));
        Shrink(image.GetAreaSize() - nLess);
        Step step({&image}, {});
        step.request.nMapCnt = 2; // of its bands; a whole image is there once
        ASSERT_OK(step.Alloc());
        EXPECT_EQ(nLess == 0, image.GetBandHeight() == 5000) << image.GetBandHeight();
        EXPECT_EQ(nLess == 0, CImageObj::AskFreeMemory() == 0);
    }
}

TEST_F(Planner, MakesWhatAFailedStepChargedForAndDidNotReach)
{
    T_ImageLrg_tag info = Lines(1000, 500), band{};
    FailingImage first(info, 2);
    TestImage second(Lines(1000, 500));
    Step step({&first, &second}, {});
    EXPECT_CODE(MM_FILE_ACCESS, step.Alloc());
    ASSERT_OK(step.Alloc());
    EXPECT_OK(second.MapBand(0, &band, MM_BAND_DOWNWARD, 0));

    TestImage third(Lines(1000, 500));
    third.SetBandInfo(0, 1); // as a failed step leaves it
    first.Destroy();
    ASSERT_OK(first.SetImageInfo(&info));
    first.nFailures = 1;
    EXPECT_CODE(MM_FILE_ACCESS, Step({}, {&first}, {&third}).Alloc());
    EXPECT_EQ(500000, third.m_nAreaSize) << "a charge that this step did not make";
    Reset(); // a failed step's charges are not given back
}

TEST_F(Planner, GivesNothingThatStoreOrChargeDoesNotHold)
{
    T_ImageLrg_tag same = Lines(1000, 3000), larger = Lines(1000, 4000);
    for (const LONG nBudget : {4 * kMiB, kMiB}) { // held whole, and banded
        SCOPED_TRACE(nBudget);
        Shrink(nBudget);
        TestImage image(same);
        Step step({}, {&image});
        ASSERT_OK(step.Alloc());
        const std::pair before(image.GetBandHeight(), CImageObj::AskFreeMemory());
        ASSERT_OK(image.SetImageInfo(&same)); // clears the band height
        ASSERT_OK(step.Alloc());
        EXPECT_EQ(before, std::pair(image.GetBandHeight(), CImageObj::AskFreeMemory()));
        ASSERT_OK(image.SetImageInfo(&larger));
        EXPECT_CODE(MM_BAD_ARGUMENT, step.Alloc()) << "the store is shorter";
        EXPECT_CODE(MM_BAD_ARGUMENT, image.Create(image.GetAreaSize(), image.m_nAreaSize, 1));
        EXPECT_EQ(before.second, CImageObj::AskFreeMemory());
    }
}

TEST_F(Planner, CarriesAnInputFromStepToStep)
{
    Shrink(4 * kMiB);
    TestImage first(Lines(1000, 8000)), second(Lines(1000, 8000)), work(Lines(1000, 6000));
    Step step({&first}, {&second}, {&work});
    ASSERT_OK(step.Alloc());
    std::array<int, 8> state{}; // in memory, in files: inputs, outputs, temporaries each; lines of the bands
    auto& [in, out, tmp, inFile, outFile, tmpFile, inBand, outBand] = state;
    GetImageObjMemState(&step.request, step.in.data(), step.out.data(), step.tmp.data(), in, out, tmp, inFile,
                        outFile, tmpFile, inBand, outBand);
    EXPECT_EQ((std::array{0, 0, 0, 1, 1, 1, first.m_ImgInfo.nBandLines, second.m_ImgInfo.nBandLines}), state);

    EXPECT_OK(CImageObj::MemoryRelease(&step.request, step.tmp.data()));
    EXPECT_EQ(nullptr, work.m_pImageCtrl);
    first.Destroy();
    CImageObj::InitBaseMemory(100 * kMiB, 32 * kMiB);
    CImageObj::UpdateUseMemory(-second.m_nAreaSize);
    ASSERT_OK(Step({&second}, {}).Alloc());
    EXPECT_EQ(8000, second.m_ImgInfo.nBandLines) << "a file that fits now is mapped whole";
    EXPECT_EQ(100 * kMiB - 8000000, CImageObj::AskFreeMemory());
    EXPECT_EQ(1, second.m_pImageCtrl->GetAllMapFlg());
}

// Any step: charges and free budget add up to the reserve, every image can be walked line by line in its
// bands, and the last release leaves the budget as it was.
TEST_F(Planner, BalancesTheBudgetForAnyStep)
{
    std::mt19937 random(20);
    const auto upTo = [&](int nMost) { return int(random() % unsigned(nMost + 1)); };
    for (int nRound = 0; nRound < 60; ++nRound) {
        SCOPED_TRACE(nRound);
        Shrink(LONG(1 + upTo(8)) * kMiB / 4);
        CImageObj::ms_nOnMemory = upTo(2) * 100000;
        std::list<TestImage> images;
        Step step({}, {});
        const auto add = [&](std::vector<CImageObj*>& list) {
            const int nMargin = upTo(6);
            const int nFormat = upTo(1) ? MM_FORMAT_RAW48 : MM_FORMAT_BGRA32;
            auto& image =
                images.emplace_back(Geometry(1 + upTo(400), 1 + upTo(1500), nMargin, nFormat, upTo(2)));
            image.SetFsize(upTo(nMargin));
            image.SetRatio(50 + upTo(200));
            list.push_back(&image);
        };
        for (int i = 1 + upTo(2); i > 0; --i)
            add(step.in);
        if (upTo(3) != 0)
            add(step.out);
        for (int i = upTo(2); i > 0; --i)
            add(step.tmp);
        step.request = {int(step.in.size()), int(step.out.size()), int(step.tmp.size()), 1 + upTo(2), 0,
                        1 + upTo(40)};
        ASSERT_OK(step.Alloc());

        LONG nCharged = 0;
        for (TestImage& image : images) {
            nCharged += image.m_nAreaSize;
            ASSERT_GT(image.m_nAreaSize, 0);
            int nLines = 0;
            ForEachBand(image, [&](const auto& band) {
                nLines += band.nBandLines;
                ASSERT_LE(band.nBandLines, std::max(image.m_ImgInfo.nBandLines, 1));
            });
            EXPECT_EQ(image.m_ImgInfo.nHeight, nLines);
        }
        EXPECT_EQ(CImageObj::ms_ReserveMemory - nCharged, CImageObj::AskFreeMemory());
        images.clear();
        EXPECT_EQ(CImageObj::ms_ReserveMemory, CImageObj::AskFreeMemory());
    }
}

// The band buffer of a host's file is not the image: it must not be charged whole when it is planned again.
TEST_F(Planner, PlansAHostsFileAgainWithBands)
{
    const HostFile file("");
    std::fseek(file.pFile, 6 * 1000 * 20000 - 1, SEEK_SET);
    std::fputc(0, file.pFile);
    HostImage input({1, ACS_FILEIO, file.Handle(), 0, 1000, 20000, 0x1322, 0x0422, 6000}, IMG_INPUT);
    for (int i = 0; i < 2; ++i) {
        ASSERT_OK(Step({&input}, {}).Alloc());
        EXPECT_LE(input.m_nAreaSize, 32 * kMiB) << "plan " << i;
        EXPECT_EQ(100 * kMiB - input.m_nAreaSize, CImageObj::AskFreeMemory());
    }
}
