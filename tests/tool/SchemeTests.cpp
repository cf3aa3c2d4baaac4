// Both schemes as a user meets them: the same bytes, the numbers foretold, disturbances, sizes and memory.

#include "ToolFixture.h"

namespace {

constexpr bool kSanitized = IMGBAND_IS_SANITIZED; // the program, not this one

using Schemes = Tool;
using SchemesOnPosix = Tool;

constexpr const char* kSlowJob = "filter in.bmp out.bmp --op gauss --radius 16 --threads 1 --budget 12M";

/// What a plan tells: everything but times, memory and results.
Json Plan(const Json& whole)
{
    Json plan;
    for (const char* pszKey : {"scheme", "temporary_bytes", "peak_budget_bytes", "settings"})
        plan[pszKey] = whole.at(pszKey);
    for (const Json& step : whole.at("steps"))
        plan["steps"].push_back({step.at("step"), step.at("images")});
    return plan;
}

TEST_F(Schemes, DoWhatTheyPlanWithTheSameBytes)
{
    // Just too large to be held in memory without need.
    const char* cases[][3] = {{"convert --to raw48 --range keep", "bgr24", "1803x1905"},
                              {"convert --to bgr24 --turn", "raw64", "1203x1401"},
                              {"filter --op box --frame #102030", "bgr24", "1803x1905"},
                              {"enlarge --factor 2", "raw64", "1203x1401"}};
    const char* accesses[] = {"file", "memory", "mmap"};
    const int budgets[] = {12, 18, 40, 100};
    string szFirst; // of a job's outputs
    for (int i = 0; i < 24; ++i) {
        const auto [pszJob, pszFrom, pszSize] = cases[i / 6];
        const string szScheme = i % 2 == 1 ? "unit" : "whole";
        const string szArguments =
            fmt::format("{} in out --from {} --size {} --scheme {} --access {} --budget {}M", pszJob, pszFrom,
                        pszSize, szScheme, accesses[i % 3], i % 3 == 1 ? 100 : budgets[(i / 2 + i / 6) % 4]);
        SCOPED_TRACE(szArguments);
        Remove("out");
        Run(fmt::format("make in --size {} --to {} --pattern gradient", pszSize, pszFrom));
        const Json planned = Plan(RunJson(szArguments + " --plan"));
        EXPECT_EQ(Names{"in"}, Files()) << "planning leaves something";
        EXPECT_EQ(planned, Plan(RunJson(szArguments)));
        EXPECT_EQ(szScheme, planned["scheme"]);
        if (szScheme == "unit") {
            EXPECT_LE(planned["peak_budget_bytes"], planned["settings"]["budget_bytes"]);
        }
        szFirst = i % 6 == 0 ? Load("out") : szFirst;
        EXPECT_TRUE(SameBytes(szFirst, Load("out")));
    }
    SaveSparse("tiny.bmp", 200, 2);
    SaveSparse("wide.bmp", 30000, 1500);
    for (const string szJob :
         {"enlarge tiny.bmp out --factor 900", "enlarge tiny.bmp out --factor 900 --op nearest",
          "filter wide.bmp out --op box --radius 16"}) {
        const Json plan = RunJson(szJob + " --plan");
        EXPECT_LE(plan["peak_budget_bytes"], 100 << 20) << szJob;
        EXPECT_GE(plan["steps"][0]["images"][1]["band_lines"], 4) << szJob << ": bands too low to share";
    }
    EXPECT_THAT(Run("filter in out --from raw64 --size 1203x1401 --op box --plan").szOut,
                AllOf(HasSubstr("scheme: unit"), HasSubstr("framed copy"), HasSubstr("peak of the budget")));
}

TEST_F(Schemes, WorkInPlaceWithAnyHeaderAndNumberOfThreads)
{
    string szBitmap = Encode(RandomPicture(kLayouts[0], 37, 41));
    Save("plain.bmp", szBitmap);
    szBitmap.insert(54, "BMBM, which is no header");
    szBitmap[10] = 54 + 24;
    for (const string szJob : {"convert --turn", "filter --op gauss --radius 3", "enlarge --factor 3"})
        for (const int nThreads : {1, 2, 9}) {
            SCOPED_TRACE(testing::Message() << szJob << ", threads: " << nThreads);
            Save("in.bmp", szBitmap);
            const string szThreads = fmt::format("{} --threads {} ", szJob, nThreads);
            ASSERT_EQ(0, Run(szThreads + "plain.bmp out.bmp --scheme whole").nStatus);
            EXPECT_EQ(nThreads, RunJson(szThreads + "in.bmp in.bmp")["settings"]["threads"]);
            EXPECT_TRUE(SameBytes(Load("out.bmp"), Load("in.bmp")));
        }
    EXPECT_EQ((Names{"in.bmp", "out.bmp", "plain.bmp"}), Files());
}

TEST_F(SchemesOnPosix, EndWithASentenceWhenFilesChangeMeanwhile)
{
    const auto fnShorten = [&](pid_t nChild) {
        if (HasOutput(nChild))
            fs::resize_file(At("in.bmp"), 5000);
    };
    const auto fnLose = [&](pid_t nChild) { // in the middle of a band
        if (HasOutput(nChild) && fs::file_size(At("in.bmp")) > 5000) {
            fs::resize_file(At("in.bmp"), 5000);
            kill(nChild, SIGBUS);
        }
    };
    const auto fnLimit = [&](pid_t nChild) {
        const rlimit limit{100000, 100000};
        if (HasOutput(nChild))
            prlimit(nChild, RLIMIT_FSIZE, &limit, nullptr);
    };
    const std::tuple<const char*, Look, testing::Matcher<Outcome>> cases[] = {
        {"file", fnLimit,
         Ends(4, "imgband: out.bmp: ", "ulimit -f", "; try ",
              "wanted 12000054 bytes, available 100000 bytes")},
        {"file", fnShorten, Ends(3, "imgband: in.bmp: became shorter", "12000054 bytes", "5000 are left")},
        {"mmap", fnShorten, Ends(3, "imgband: in.bmp: became shorter", "5000 are left")},
        {"mmap", fnLose, Ends(3, "imgband: in.bmp: became shorter", "5000 are left")}};
    for (const auto& [pszAccess, fnDisturb, ending] : cases) {
        SaveSparse("in.bmp", 2000, 2000);
        EXPECT_THAT(Run(kSlowJob + string(" --access ") + pszAccess, fnDisturb), ending);
        EXPECT_EQ(Names{"in.bmp"}, Files());
    }
}

TEST_F(Schemes, TurnFilesOfAlmostFourGibibytes)
{
    if (kSanitized)
        GTEST_SKIP() << "a sanitizer makes this too slow";
    if (fs::space(At(".")).available >> 30 < 9)
        GTEST_SKIP() << "there are less than 9 GiB in " << At(".");
    for (const bool bRaw : {false, true}) {
        const int nHeight = bRaw ? 17400 : 34800;
        const std::size_t nPixel = bRaw ? 6 : 3;
        const string szHeader = bRaw ? "" : BitmapHeader(kLayouts[0], 40000, nHeight, 0),
                     szFirst = string("\1\2\3\4\5\6").substr(0, nPixel), szLast(nPixel, 'x');
        const std::uintmax_t nEnd = szHeader.size() + std::uintmax_t{40000} * nPixel * unsigned(nHeight);
        Save("in", szHeader + szFirst);
        fs::resize_file(At("in"), nEnd - nPixel);
        std::ofstream(At("in"), std::ios::app) << szLast;
        const Json turned =
            RunJson(fmt::format("convert in out --turn --budget 64M --from {0} --to {0} --size 40000x{1}",
                                bRaw ? "raw48" : "bgr24", nHeight));
        EXPECT_LE(turned["peak_private_bytes"], 88 << 20);
        EXPECT_EQ(nEnd, fs::file_size(At("out")));
        std::ifstream out(At("out"));
        for (const auto& [nAt, szPixel] :
             {std::pair(std::uintmax_t{szHeader.size()}, szLast), {nEnd - nPixel, szFirst}}) {
            string szGot(nPixel, '?');
            out.seekg(static_cast<std::streamoff>(nAt)).read(szGot.data(), std::ssize(szGot));
            EXPECT_EQ(szPixel, szGot) << "at byte " << nAt;
        }
    }
}

// The budget as the plan and the run tell it, and private memory as the kernel sees it. A job that does not
// fit is refused by both in the same words.
TEST_F(Schemes, StayInsideTheBudget)
{
    if (kSanitized)
        GTEST_SKIP() << "a sanitizer's own memory would be counted";
    const char *jobs[] = {"filter --op box --radius 1", "enlarge --factor 2 --op nearest",
                          "convert --to bgra32", "filter --op box --radius 16", "convert --to raw64 --turn"},
               *accesses[] = {"file", "mmap", "memory"};
    const std::pair<int, int> sizes[] = {
        {6000, 3000}, {1700, 1700}, {300, 20000}, {40000, 300}, {400000, 30}};
    int nRefused = 0;
    for (unsigned i = 0; i < 30; i += Pace(7)) {
        const auto [nWidth, nHeight] = i == 0 ? std::pair(12000, 12000) : sizes[i / 2 % 5];
        const int nMiB = i == 0 ? 64 : 12 << i % 3 / 2;
        const string szJob = fmt::format("{} in.bmp out --json --budget {}M --scheme {} --access {}",
                                         jobs[(i / 2 + i / 10 * 2) % 5], nMiB, i % 2 == 0 ? "unit" : "whole",
                                         accesses[i / 3 % 3]);
        SCOPED_TRACE(szJob + fmt::format(", {} x {}", nWidth, nHeight));
        SaveSparse("in.bmp", nWidth, nHeight);
        const Outcome planned = Run(szJob + " --plan");
        int nPeak = 0;
        const Outcome run = Run(szJob, [&nPeak](pid_t nChild) {
            nPeak = std::max(nPeak, static_cast<int>(StatusOf(nChild, "RssAnon:") >> 10));
        });
        EXPECT_LE(nPeak, nMiB + (kWindowsProgram ? 24 : 4));
        ASSERT_EQ(planned.nStatus, run.nStatus) << run.szErr;
        if (run.nStatus == 0) {
            EXPECT_EQ(Plan(Json::parse(planned.szOut)), Plan(Json::parse(run.szOut)));
            EXPECT_LE(Json::parse(run.szOut)["peak_budget_bytes"], nMiB << 20);
        } else {
            ++nRefused;
            EXPECT_EQ(planned.szErr, run.szErr);
            EXPECT_THAT(run.szErr, HasSubstr("budget is too small: wanted "));
        }
        EXPECT_GT(nPeak, i == 0 ? 3 : -1) << "the bands were not seen";
    }
    EXPECT_GE(nRefused, kWindowsProgram ? 0 : 3);
}

TEST_F(SchemesOnPosix, ShowProgressOnATerminalOnly)
{
    if (access("/usr/bin/script", X_OK) != 0)
        GTEST_SKIP() << "bsdutils is not installed";
#if defined(__OPTIMIZE__)
    const int nSize = kSanitized ? 1600 : 3200; // some tenths of a second
#else
    const int nSize = 1600;
#endif
    SaveSparse("in.bmp", nSize, nSize);
    const auto begin = std::chrono::steady_clock::now();
    const string szScreen = Screen(kSlowJob);
    const auto nTenths = (std::chrono::steady_clock::now() - begin) / std::chrono::milliseconds(100);
    EXPECT_THAT(szScreen,
                AllOf(HasSubstr("\r\033[Kfilter: "),
                      testing::ContainsRegex("[1-9][0-9]* of [1-9][0-9]* bands, [0-9]+ MB/s, [0-9]+ s left"),
                      HasSubstr("\r\033[Kout.bmp: bgr24")));
    EXPECT_LE(std::count(szScreen.begin(), szScreen.end(), '\033'), nTenths + 3) << "drawn too often";
    EXPECT_EQ("", Screen(kSlowJob + string(" --quiet")));
    EXPECT_EQ(fmt::format("out.bmp: bgr24, {0} x {0} pixels, {1} bytes\n", nSize, 54 + 3 * nSize * nSize),
              Run(kSlowJob).szErr);
}

} // namespace
