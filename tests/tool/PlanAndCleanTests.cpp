// What is planned without a run, what killed runs leave, and what a run says that it did not give back.

#include "ToolFixture.h"

#include <fcntl.h>

namespace {

using PlanAndClean = Tool;

constexpr const char* kNothing = "leak check: nothing left\n";

/// The last line of a verbose run that did not give all back.
string Left(int nBytes, int nStores, int nFiles)
{
    return fmt::format("back: {} bytes, stores not destroyed: {}, temporary files left: {}\n", nBytes,
                       nStores, nFiles);
}

// What the planner makes of a step is the library's own tests' subject; here, that every part of a command
// line reaches it. The table has command lines, and the output of each below it.
TEST_F(PlanAndClean, PlansWhatTheImagesOfAStepGet)
{
    std::ifstream file(TABLES "plans.txt");
    string szPlans;
    for (string szLine; std::getline(file, szLine);)
        if (szLine.starts_with("# ") || szLine.starts_with("plan "))
            szPlans += szLine + "\n" + (szLine[0] == '#' ? "" : Run(szLine).szOut);
    EXPECT_EQ(Load(TABLES "plans.txt"), szPlans);
}

/// Of the images of a step: place, lines of a band, bands, bytes charged, bytes on the disk.
std::vector<Json> Images(const Json& step)
{
    std::vector<Json> images;
    for (const Json& image : step["images"])
        images.push_back({image["place"], image["band_lines"], image["bands"], image["charged_bytes"],
                          image["temporary_bytes"]});
    return images;
}

// An import leaves room for a frame of 16 pixels, and objects have four samples. What lies in memory is
// worked on in the output's bands. The lines of a band's frame, 32 of 5328 bytes, are kept from what is
// divided.
TEST_F(PlanAndClean, PlansWhatARunTakes)
{
    Run("make in.bmp --size 1300x2400 --pattern gradient");
    for (const auto& [nBudget, nFrame] : {std::pair(12900000, 170496), {20 << 20, 0}, {64 << 20, 0}}) {
        const Json whole = RunJson("filter in.bmp o.bmp --op box --radius 16 --scheme whole --budget " +
                                   std::to_string(nBudget)),
                   planned = RunJson("plan --in 1300x2400:bgra32+16 --out 1300x2400:bgra32 --budget " +
                                     std::to_string(nBudget - nFrame));
        const std::vector<Json> run = Images(whole["steps"][1]);
        std::vector<Json> plan = Images(planned["steps"][0]);
        if (plan[0][0] == "memory")
            plan[0] = {"memory", plan[1][1], plan[1][2], plan[0][3], plan[0][4]};
        EXPECT_EQ(run, plan) << nBudget;
    }
}

TEST_F(ToolOnPosix, SaysWhatARunDidNotGiveBack)
{
    Run("make in.bmp --size 1300x2500 --pattern gradient");
    const string szFilter = "filter in.bmp out.bmp --op box --verbose --budget 12M",
                 szWhole = szFilter + " --scheme whole";
    const string szPlan = "plan --in 9000x9000:raw64 --verbose";
    // The most bytes of a file. Two attempts do not give back their bytes: their bands have 1356 and 16
    // lines.
    const std::tuple<string, rlim_t, string> cases[] = {{szFilter, RLIM_INFINITY, kNothing},
                                                        {szWhole, RLIM_INFINITY, kNothing},
                                                        {szFilter + " --plan", RLIM_INFINITY, kNothing},
                                                        {szPlan, RLIM_INFINITY, kNothing},
                                                        {szFilter, 2000 * 512, kNothing},
                                                        {szWhole, 22000 * 512, Left(7375872, 0, 0)}};
    for (const auto& [szArguments, nMostBytes, szEnd] : cases)
        EXPECT_THAT(Run(szArguments, nullptr, nMostBytes).szErr, EndsWith(szEnd))
            << szArguments << ", limit " << nMostBytes;

    // A file in the temporary folder that the program has open is a store of its own.
    const int nFile = open(At("tmp/LRGAAAA.tmp").c_str(), O_RDWR | O_CREAT, 0600); // the program inherits it
    ASSERT_GE(nFile, 0);
    EXPECT_THAT(Run(szFilter).szErr, EndsWith(Left(0, 1, 1)));
    close(nFile);
    Remove("tmp/LRGAAAA.tmp");
    const auto fnLeave = [this](pid_t nChild) {
        if (HasOutput(nChild) && !Exists("tmp/LRGBBBB.tmp"))
            Save("tmp/LRGBBBB.tmp", "left");
    };
    const Outcome watched =
        Run("filter in.bmp new.bmp --op gauss --radius 16 --threads 1 --verbose", fnLeave);
    EXPECT_THAT(watched.szErr, EndsWith(Left(0, 0, 1)));
}

} // namespace
