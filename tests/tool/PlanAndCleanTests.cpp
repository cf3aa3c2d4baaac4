// What is planned without a run, what killed runs leave, and what a run says that it did not give back.

#include "ToolFixture.h"

namespace {

using nlohmann::json;

using PlanAndClean = Tool;

/// Of each image of a step: place, lines of a band, bands, bytes charged, bytes on the disk.
json Images(const string& szJson, std::size_t nStep)
{
    json images, given = json::parse(szJson).at("steps").at(nStep).at("images");
    for (std::size_t i = 0; i < given.size(); ++i)
        for (const char* pszKey : {"place", "band_lines", "bands", "charged_bytes", "temporary_bytes"})
            images[i].push_back(given[i].at(pszKey));
    return images;
}

// Lines of 256 pixels have 1024 bytes as bgra32, and a buffer has 32 bytes more than its lines. The smallest
// budget is 12582912 bytes.
TEST_F(PlanAndClean, PlansWhatTheImagesOfAStepGet)
{
    // clang-format off
    const struct { const char* pszCase; string szArguments; int nBudget; string szImages; } cases[] = {
        {"small images are in memory", "--in 2048x1024:bgra32 --out 2048x1024:bgra32", 16777280, R"(["memory",1024,1,8388640,0],["memory",1024,1,8388640,0])"},
        {"equal images share", "--in 256x20000:bgra32 --out 256x20000:bgra32 --budget 12M", 12582912, R"(["temporary file",6144,4,6291456,20480032],["temporary file",6144,4,6291456,20480032])"},
        {"a weight", "--in 256x20000:bgra32@200 --out 256x20000:bgra32@100 --budget 12M", 12582912, R"(["temporary file",8192,3,8388608,20480032],["temporary file",4096,5,4194304,20480032])"},
        {"the second has half of the rest", "--in 256x20000:bgra32 --in 256x20000:bgra32 --budget 12M", 9437184, R"(["temporary file",6144,4,6291456,20480032],["temporary file",3072,7,3145728,20480032])"},
        {"a frame comes on top", "--in 256x20000:bgra32+8 --out 256x20000:bgra32 --budget 12M", 12599680, R"(["temporary file",5958,4,6499712,21777440],["temporary file",5957,4,6099968,20480032])"},
        {"several buffers", "--in 256x20000:bgra32 --maps 3 --budget 12M", 12582912, R"(["temporary file",4096,5,12582912,20480032])"},
        {"smallest bands", "--in 65536x1000:raw64 --out 65536x1000:raw64 --min-band 20 --budget 12M", 20971520, R"(["temporary file",20,50,10485760,524288032],["temporary file",20,50,10485760,524288032])"},
        {"the band cap", "--in 512x10000:bgra32 --out 2560x20000:bgra32 --band-cap 10M", 30965792, R"(["memory",10000,1,20480032,0],["temporary file",1024,20,10485760,204800032])"},
        {"three samples", "--in 256x20000:bgr24 --out 256x20000:raw48 --budget 12M", 12582912, R"(["temporary file",5462,4,4194816,15360032],["temporary file",5461,4,8388096,30720032])"},
        {"temporaries, a weight that is not used", "--in 2048x1024:bgra32@0 --tmp 16x16:raw64 16x16:bgr24", 8391520, R"(["memory",1024,1,8388640,0],["memory",16,1,2080,0],["memory",16,1,800,0])"},
    };
    // clang-format on
    for (const auto& c : cases) {
        const string szPlan = Run("plan --json " + c.szArguments).szOut;
        EXPECT_EQ(json::parse("[" + c.szImages + "]"), Images(szPlan, 0)) << c.pszCase;
        EXPECT_EQ(c.nBudget, json::parse(szPlan).at("peak_budget_bytes")) << c.pszCase;
    }
    EXPECT_THAT(Run("plan --in 9x9:raw48 9x9:bgr24 --out 9x9:raw64").szOut,
                testing::MatchesRegex("step .*\n.*\nstep +input 2 bgr24 +memory +9 +1 +464 +0\n.*\npeak .*"));
}

TEST_F(PlanAndClean, RefusesStepsThatAreNone)
{
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"", "--in"}, {"--in 9x9:bgr24 --out 9x9:bgr24 9x9:bgr24", "one output"}, {"--in 9x9", "an image"}, {"--in 9x9:bgr8", "an image"}, {"--in 9x:bgr24", "an image"}, {"--in 0x9:bgr24", "an image"},
        {"--in 9x9:bgr24@", "an image"}, {"--in 9x9:bgr24+-1", "an image"}, {"--in 9x9:bgr24+2@50", "an image"}, {"--in 9x9:bgr24@1@2", "an image"}, {"--in 9x9:bgr24+3000000000", "an image"},
        {"--in 9x9:bgr24 --maps 11", "to 10"}, {"--in 9x9:bgr24 --min-band 0", "from 1"}, {"--in 9x9:bgr24+2000000000", "2 GiB"}, {"--in 9000x9000:raw64@0", "code 89"},
        {"--in 9x9:bgr24 --tmp 40000x40000:raw48+7", "temporary 1 raw48: 40000 x 40000"}, {"--in 65536x4000:raw64 --maps 2 --min-band 4000", "smaller --min-band"},
    };
    // clang-format on
    for (const auto& [pszArguments, pszWords] : cases)
        EXPECT_THAT(Shell(fmt::format("$IMGBAND plan {}; echo $? >&2", pszArguments)).szErr,
                    AllOf(HasSubstr(pszWords), testing::EndsWith("\n2\n")));
}

// An import leaves room for a frame of 16 pixels, and objects have four samples. What lies in memory is
// worked on in the output's bands.
TEST_F(PlanAndClean, PlansWhatARunTakes)
{
    Run("make in.bmp --size 1300x2400 --pattern gradient");
    for (const string szBudget : {" --json --budget 12M", " --json --budget 20M", " --json --budget 64M"}) {
        json run = Images(Run("filter in.bmp o.bmp --op box --radius 16 --scheme whole" + szBudget).szOut, 1);
        json plan = Images(Run("plan --in 1300x2400:bgra32+16 --out 1300x2400:bgra32" + szBudget).szOut, 0);
        if (plan[0][0] == "memory")
            std::copy_n(plan[1].begin() + 1, 2, plan[0].begin() + 1);
        EXPECT_EQ(run, plan) << szBudget;
    }
}

TEST_F(ToolOnPosix, RemovesWhatKilledRunsLeft)
{
    // clang-format off
    const Outcome outcome = Shell(
        ":; start() { $IMGBAND make a.bmp --size 9000x9000 --budget 12M & until [ $(find tmp -name 'LRG*' | wc -l) = $1 ]; do sleep .01; done; };"
        "start 1; live=$!; file=$(echo tmp/LRG*); start 2; kill -9 $!; wait $!; cd tmp; printf 12345 >LRG1234.tmp; touch -d '3 days ago' LRG1234.tmp;"
        "touch LRG.tmp LRG123.tmp LRGabcd.tmp XLRG1234.tmp LRG1234.tmp.old LRG123456789.tmp LRGDDDD.tmp; chown 1 LRGDDDD.tmp || rm LRGDDDD.tmp;"
        "ln -s LRG.tmp LRGAAAA.tmp; mkdir LRGBBBB.tmp; mkfifo LRGCCCC.tmp; cd ..; ls tmp >before; $IMGBAND clean --dry-run >dry; ls tmp | cmp - before;"
        "chmod 555 tmp; root='setpriv --bounding-set=-dac_override'; $root true || root=; $root $IMGBAND clean; echo $?; chmod 755 tmp;" // without the superuser's right
        "$IMGBAND clean --json >json && $IMGBAND clean; ls tmp | diff before - | sed -n 's/^< //p' >gone; ls $file; kill -9 $live");
    // clang-format on
    EXPECT_THAT(Load("dry"), HasSubstr("LRG1234.tmp  5 bytes, 3 days old\n"));
    EXPECT_THAT(outcome.szErr, testing::ContainsRegex(
                                   ": 2 leftovers of 5 bytes\n(.*\n)*.*: 0 leftovers of 0 bytes removed\n"));
    const json clean = json::parse(Load("json"));
    EXPECT_TRUE(clean.at("total_files") == 2 && clean.at("total_bytes") == 5) << clean;
    string szRemoved;
    for (const json& file : clean.at("files"))
        szRemoved += file.at("removed") ? string(file.at("name")) + "\n" : "";
    EXPECT_EQ(Load("gone"), szRemoved);
    EXPECT_THAT(outcome.szOut,
                testing::MatchesRegex("(LRG.* bytes, .*: Permission denied\n){2}4\ntmp/LRG.*\n"));
}

TEST_F(ToolOnPosix, SaysWhatARunDidNotGiveBack)
{
    Run("make in.bmp --size 1300x2500 --pattern gradient");
    const string szFilter = "exec $IMGBAND filter in.bmp out.bmp --op box --verbose --budget 12M";
    // clang-format off
    const std::pair<string, const char*> cases[] = {
        {szFilter, "check: nothing left\n"}, {szFilter + " --scheme whole", "check: nothing left\n"}, {szFilter + " --plan", "check: nothing left\n"},
        {"$IMGBAND plan --in 9000x9000:raw64 --verbose", "check: nothing left\n"}, {"ulimit -f 2000; " + szFilter, "check: nothing left\n"},
        {"ulimit -f 22000; " + szFilter + " --scheme whole", "back: 7375872 bytes, stores not destroyed: 0, temporary files left: 0\n"}, // bands of two attempts, 1356 and 16 lines
        {"exec 9>tmp/LRGAAAA.tmp; " + szFilter, "back: 0 bytes, stores not destroyed: 1, temporary files left: 0\n"},
        {"exec 9>tmp/LRGAAAA.tmp; flock 9; " + szFilter, "back: 0 bytes, stores not destroyed: 1, temporary files left: 1\n"},
        {":; $IMGBAND filter in.bmp new.bmp --op gauss --radius 16 --threads 1 --verbose & until [ -e .imgband-* ] || [ -e new.bmp ]; do :; done; echo left >tmp/LRGBBBB.tmp; wait",
         "back: 0 bytes, stores not destroyed: 0, temporary files left: 1\n"},
    };
    // clang-format on
    for (const auto& [szCommand, pszEnd] : cases)
        EXPECT_THAT(Shell(szCommand).szErr, testing::EndsWith(pszEnd)) << szCommand;
}

} // namespace
