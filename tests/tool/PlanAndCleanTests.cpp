// What is planned without a run, what killed runs leave, and what a run says that it did not give back.

#include "ToolFixture.h"

#include <fcntl.h>
#include <sys/file.h>

namespace {

using nlohmann::json;
using testing::EndsWith;

using PlanAndClean = Tool;

/// The last line of a verbose run.
string Left(int nBytes, int nStores, int nFiles)
{
    if (nBytes + nStores + nFiles == 0)
        return "check: nothing left\n";
    return fmt::format("back: {} bytes, stores not destroyed: {}, temporary files left: {}\n", nBytes,
                       nStores, nFiles);
}

/// Of an image of a step.
using Given =
    std::tuple<string, int, int, int, int>; // place, lines of a band, bands, bytes charged, bytes on the disk

std::vector<Given> Images(const string& szJson, std::size_t nStep)
{
    const json step = json::parse(szJson).at("steps").at(nStep);
    std::vector<Given> images;
    for (const json& image : step.at("images"))
        images.emplace_back(image.at("place"), image.at("band_lines"), image.at("bands"),
                            image.at("charged_bytes"), image.at("temporary_bytes"));
    return images;
}

// Lines of 256 pixels have 1024 bytes as bgra32, and a buffer has 32 bytes more than its lines. The smallest
// budget is 12582912 bytes. What the planner makes of a step is the library's own tests' subject; here, that
// every part of a command line reaches it.
TEST_F(PlanAndClean, PlansWhatTheImagesOfAStepGet)
{
    const char *kDisk = "temporary file", *kMemory = "memory";
    const struct
    {
        string szArguments;
        int nBudget;
        std::vector<Given> images;
    } cases[] = {
        {"--in 256x20000:bgra32@200 --out 256x20000:bgra32@100 --budget 12M", // a weight
         12582912,
         {{kDisk, 8192, 3, 8388608, 20480032}, {kDisk, 4096, 5, 4194304, 20480032}}},
        {"--in 256x20000:bgra32 --in 256x20000:bgra32 --budget 12M", // the second has half of the rest
         9437184,
         {{kDisk, 6144, 4, 6291456, 20480032}, {kDisk, 3072, 7, 3145728, 20480032}}},
        {"--in 256x20000:bgra32+8 --out 256x20000:bgra32 --budget 12M", // a frame comes on top
         12599680,
         {{kDisk, 5958, 4, 6499712, 21777440}, {kDisk, 5957, 4, 6099968, 20480032}}},
        {"--in 256x20000:bgra32 --maps 3 --budget 12M", 12582912, {{kDisk, 4096, 5, 12582912, 20480032}}},
        {"--in 65536x1000:raw64 --out 65536x1000:raw64 --min-band 20 --budget 12M",
         20971520,
         {{kDisk, 20, 50, 10485760, 524288032}, {kDisk, 20, 50, 10485760, 524288032}}},
        {"--in 512x10000:bgra32 --out 2560x20000:bgra32 --band-cap 10M",
         30965792,
         {{kMemory, 10000, 1, 20480032, 0}, {kDisk, 1024, 20, 10485760, 204800032}}},
        {"--in 256x20000:bgr24 --out 256x20000:raw48 --budget 12M", // three samples
         12582912,
         {{kDisk, 5462, 4, 4194816, 15360032}, {kDisk, 5461, 4, 8388096, 30720032}}},
        {"--in 2048x1024:bgra32@0 --tmp 16x16:raw64 16x16:bgr24", // a weight that is not used
         8391520,
         {{kMemory, 1024, 1, 8388640, 0}, {kMemory, 16, 1, 2080, 0}, {kMemory, 16, 1, 800, 0}}},
    };
    for (const auto& [szArguments, nBudget, images] : cases) {
        const string szPlan = Run("plan --json " + szArguments).szOut;
        EXPECT_EQ(images, Images(szPlan, 0)) << szArguments;
        EXPECT_EQ(nBudget, json::parse(szPlan).at("peak_budget_bytes")) << szArguments;
    }
    EXPECT_THAT(Run("plan --in 9x9:raw48 9x9:bgr24 --out 9x9:raw64").szOut,
                testing::MatchesRegex("step .*\n.*\nstep +input 2 bgr24 +memory +9 +1 +464 +0\n.*\npeak .*"));
}

TEST_F(PlanAndClean, RefusesStepsThatAreNone)
{
    ExpectMessages("steps.txt", "", [](const Outcome&) {});
}

// An import leaves room for a frame of 16 pixels, and objects have four samples. What lies in memory is
// worked on in the output's bands.
TEST_F(PlanAndClean, PlansWhatARunTakes)
{
    Run("make in.bmp --size 1300x2400 --pattern gradient");
    for (const string szBudget : {" --json --budget 12M", " --json --budget 20M", " --json --budget 64M"}) {
        auto run = Images(Run("filter in.bmp o.bmp --op box --radius 16 --scheme whole" + szBudget).szOut, 1);
        auto plan = Images(Run("plan --in 1300x2400:bgra32+16 --out 1300x2400:bgra32" + szBudget).szOut, 0);
        if (std::get<0>(plan[0]) == "memory") {
            std::get<1>(plan[0]) = std::get<1>(plan[1]);
            std::get<2>(plan[0]) = std::get<2>(plan[1]);
        }
        EXPECT_EQ(run, plan) << szBudget;
    }
}

TEST_F(ToolOnPosix, SaysWhatARunDidNotGiveBack)
{
    Run("make in.bmp --size 1300x2500 --pattern gradient");
    const string szFilter = "filter in.bmp out.bmp --op box --verbose --budget 12M",
                 szWhole = szFilter + " --scheme whole";
    // the most bytes of a file; bytes not given back: those of two attempts, whose bands have 1356 and 16
    // lines
    const std::tuple<string, rlim_t, int> cases[] = {
        {szFilter, RLIM_INFINITY, 0},
        {szWhole, RLIM_INFINITY, 0},
        {szFilter + " --plan", RLIM_INFINITY, 0},
        {"plan --in 9000x9000:raw64 --verbose", RLIM_INFINITY, 0},
        {szFilter, 2000 * 512, 0},
        {szWhole, 22000 * 512, 7375872}};
    for (const auto& [szArguments, nMostBytes, nBytes] : cases)
        EXPECT_THAT(Start(Program(szArguments), nullptr, nMostBytes).szErr, EndsWith(Left(nBytes, 0, 0)))
            << szArguments << ", limit " << nMostBytes;

    // A file in the temporary folder that the program has open, with and without a lock, is a store of its
    // own.
    for (const bool bLocked : {false, true}) {
        const int nFile =
            open(At("tmp/LRGAAAA.tmp").c_str(), O_RDWR | O_CREAT, 0600); // the program inherits it
        ASSERT_GE(nFile, 0);
        ASSERT_EQ(0, bLocked ? flock(nFile, LOCK_EX) : 0);
        EXPECT_THAT(Run(szFilter).szErr, EndsWith(Left(0, 1, bLocked ? 1 : 0)));
        close(nFile);
        Remove("tmp/LRGAAAA.tmp");
    }
    const Outcome watched =
        Start(Program("filter in.bmp new.bmp --op gauss --radius 16 --threads 1 --verbose"), [this](pid_t) {
            if (!Exists("tmp/LRGBBBB.tmp") && !Exists("new.bmp") &&
                Files().size() > 1) // it has begun to write
                Save("tmp/LRGBBBB.tmp", "left");
        });
    EXPECT_THAT(watched.szErr, EndsWith(Left(0, 0, 1)));
}

} // namespace
