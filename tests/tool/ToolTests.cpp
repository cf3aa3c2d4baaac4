// The program as a user meets it: what it makes, refuses, says, takes and leaves behind.

#include "ToolFixture.h"

namespace {

Picture Expected(const Picture& in, const Layout& to, bool bTurn, bool bFullRange, bool bKeepAlpha)
{
    Picture out{to, in.nWidth, in.nHeight, {}};
    for (int i = 0, nPixels = in.nWidth * in.nHeight; i < nPixels; ++i)
        for (int k = 0; k < to.nSamples; ++k) {
            const int nFrom = (bTurn ? nPixels - 1 - i : i) * in.layout.nSamples + k;
            unsigned n = in.samples[static_cast<std::size_t>(nFrom) % in.samples.size()];
            if (in.layout.nBytes < to.nBytes)
                n = bFullRange ? n * 257 : n;
            else if (in.layout.nBytes > to.nBytes)
                n = bFullRange ? (n + 128) / 257 : std::min(n, 255u);
            const bool bOpaque = k == 3 && (in.layout.nSamples == 3 || !bKeepAlpha);
            out.samples.push_back(bOpaque ? (1u << 8 * to.nBytes) - 1 : n);
        }
    return out;
}

TEST_F(Tool, ConvertsEveryFormatInEveryWay)
{
    const std::pair<int, int> sizes[] = {{1, 1}, {3, 5}, {2, 7}, {33, 19}, {16, 4}};
    const char* accesses[] = {"file", "memory", "mmap"};
    for (std::size_t i = 0; i < 4 * 4 * 8 * 4; i += Pace(9)) {
        // A few cases do not fit the budget.
        const auto [nWidth, nHeight] = i % 101 == 34 ? std::pair(1501, 1103) : sizes[i % 5];
        const bool bTurn = i / 4 % 2 == 1, bFullRange = i / 8 % 2 == 1, bKeepAlpha = i / 16 % 2 == 1;
        const Picture in = RandomPicture(kLayouts[i % 4], nWidth, nHeight);
        const Layout& to = kLayouts[i / 32 % 4];
        const string szArguments =
            fmt::format("convert in out --quiet --budget 12M --from {} --size {}x{} --to {} {} --range {} "
                        "--alpha {} --access {} --scheme {}",
                        in.layout.pszName, nWidth, nHeight, to.pszName, bTurn ? "--turn" : "",
                        bFullRange ? "full" : "keep", bKeepAlpha ? "keep" : "opaque", accesses[i / 128 % 3],
                        i < 384 ? "unit" : "whole");
        SCOPED_TRACE(szArguments);
        Save("in", Encode(in, nWidth % 2 == 1));
        EXPECT_EQ("0", Shell("$IMGBAND " + szArguments + " 2>&1; echo -n $?").szOut);
        EXPECT_TRUE(Load("out") == Encode(Expected(in, to, bTurn, bFullRange, bKeepAlpha))) << "other bytes";
    }
}

TEST_F(ToolOnPosix, ConvertsInPlaceAndThroughALink)
{
    const Picture picture = RandomPicture(kLayouts[0], 5, 4);
    Save("a.bmp", Encode(picture));
    EXPECT_EQ("640",
              Shell("chmod 640 a.bmp; ln -s a.bmp b.bmp; $IMGBAND convert a.bmp a.bmp --turn && $IMGBAND "
                    "convert b.bmp b.bmp --to raw48 --access mmap && test -L b.bmp && stat -Lc %a b.bmp")
                  .szOut.substr(0, 3));
    EXPECT_TRUE(Load("a.bmp") == Encode(Expected(picture, kLayouts[2], true, true, true)));
}

TEST_F(Tool, ExchangesPicturesWithAnIndependentProgram)
{
    if (access("/usr/bin/convert", X_OK) != 0)
        GTEST_SKIP() << "ImageMagick is not installed";
    string szPpm = "P6\n33 19\n255\n";
    for (const unsigned nSample : RandomPicture(kLayouts[0], 33, 19).samples)
        Put(szPpm, nSample, 1);
    Save("in.ppm", szPpm);
    const Outcome outcome = Shell(
        "convert in.ppm BMP3:a.bmp && $IMGBAND convert a.bmp b.raw && $IMGBAND convert b.raw c.bmp --from "
        "raw48 "
        "--size 33x19 --to bgra32 && convert -size 33x19 -depth 16 -endian LSB bgr:b.raw -depth 8 b.ppm && "
        "convert c.bmp -alpha off c.ppm && cmp in.ppm b.ppm && cmp in.ppm c.ppm");
    EXPECT_EQ(0, outcome.nStatus) << outcome.szOut << outcome.szErr;
}

TEST_F(Tool, MakesTheSamePictureAgainAndTellsWhatItIs)
{
    for (const string szPattern : {"photo", "gradient", "noise"}) {
        const Outcome outcome =
            Shell("make=\"$IMGBAND make --size 61x47 --pattern " + szPattern +
                  "\"; $make a.bmp && "
                  "$make b.raw --access mmap && $make c.bmp --seed 2 --access memory && $IMGBAND convert "
                  "b.raw b.bmp "
                  "--from raw48 --size 61x47 --to bgr24 && cmp a.bmp b.bmp && ! cmp a.bmp c.bmp");
        EXPECT_EQ(0, outcome.nStatus) << szPattern;
    }
    EXPECT_EQ("bgr24", nlohmann::json::parse(Run("info a.bmp --json").szOut).at("format"));
}

TEST_F(Tool, RefusesBadBitmaps)
{
    // clang-format off
    const struct { const char* pszWords; std::size_t nAt; unsigned nValue; int nBytes; } cases[] = {
        {"is not a bitmap", 0, 'X', 1},   {"OS/2", 14, 12, 4},              {"unknown bitmap header", 14, 41, 4},
        {"inside the header", 10, 53, 4}, {"promises", 10, 0xFFFFFFFF, 4},  {"promises", 10, 55, 4},
        {"impossible size", 18, 0, 4},    {"impossible", 18, 1u << 31, 4},  {"promises", 18, 0x7FFFFFFF, 4},
        {"impossible size", 22, 0, 4},    {"impossible", 22, 1u << 31, 4},  {"promises", 22, 0xFFFFFFFB, 4},
        {"2 planes", 26, 2, 2},           {"palette", 28, 8, 2},            {"16-bit", 28, 16, 2},
        {"48 bits", 28, 48, 2},           {"run-length", 30, 1, 4},         {"bit-field", 30, 3, 4},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.pszWords << ": " << c.nValue << " at " << c.nAt);
        string szBytes = Encode(RandomPicture(kLayouts[0], 5, 4)), szPatch;
        Put(szPatch, c.nValue, c.nBytes);
        Save("bad.bmp", szBytes.replace(c.nAt, szPatch.size(), szPatch));
        const Outcome outcome = Run("convert bad.bmp out.bmp");
        EXPECT_EQ(3, outcome.nStatus);
        EXPECT_THAT(outcome.szErr, AllOf(HasSubstr("imgband: bad.bmp: "), HasSubstr(c.pszWords)));
    }
    EXPECT_EQ("./bad.bmp ", Files());
}

TEST_F(Tool, RefusesWrongCommandLinesAndFiles)
{
    // clang-format off
    const struct { int nStatus; const char* pszArguments; const char* pszWords; } cases[] = {
        {2, "", "subcommand"},                                 {2, "convert a.bmp", "OUT"},
        {2, "convert a.bmp b.bmp --to bgr8", "bgr8"},          {2, "convert a.bmp b.bmp --budget 2G", "2G"},
        {2, "convert a.bmp b.bmp --band-cap 1500K", "MiB"},    {2, "info a.bmp --quiet --verbose", "verbose"},
        {2, "convert a.bmp b", "--to"},                        {2, "convert - b.bmp", "not supported"},
        {2, "convert a.raw b.bmp --from raw48", "--size"},     {2, "make b.bmp --size 30000x30000", "2 GiB"},
        {3, "info a.raw --from raw48 --size 5x3", "take 90"},  {3, "info a.raw --from raw64 --size 5x5", "take 200"},
        {3, "convert /none.bmp b.bmp", "No such file"},        {3, "convert a.bmp b.bmp --from bgra32", "bgr24"},
        {4, "convert a.bmp none/b.bmp", "none/b.bmp"},         {4, "convert a.bmp tmp --to bgr24", "not a regular"},
        {4, kWindowsProgram ? "convert a.bmp NUL --to bgr24" : "convert a.bmp /dev/null --to bgr24", "file; try another"},  {4, "make b.bmp --size 2x2 --temp-dir none", "--temp"},
    };
    // clang-format on
    Save("a.bmp", Encode(RandomPicture(kLayouts[0], 5, 4)));
    Save("a.raw", Encode(RandomPicture(kLayouts[2], 5, 4)));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pszArguments);
        const Outcome outcome = Run(c.pszArguments + string(" --json"));
        EXPECT_EQ(c.nStatus, outcome.nStatus);
        EXPECT_THAT(outcome.szErr, HasSubstr(c.pszWords));
        const auto report = nlohmann::json::parse(outcome.szOut);
        EXPECT_EQ(outcome.szErr, "imgband: " + report.at("error").at("message").get<string>() + "\n");
        EXPECT_EQ(c.nStatus, report.at("exit_status"));
    }
    EXPECT_EQ("./a.bmp ./a.raw ", Files());
}

// The output has 10 MB, the temporary file 14 MB: the second limit lets only the output through.
TEST_F(ToolOnPosix, EndsWithASentenceWhereThereIsNoRoom)
{
    for (const auto& [nBlocks, pszWords] : {std::pair(1000, "big.bmp: "), {22000, "system error 223"}}) {
        const Outcome outcome =
            Shell(fmt::format("ulimit -f {}; $IMGBAND make big.bmp --size 1501x2303 --budget 12M", nBlocks));
        EXPECT_EQ(4, outcome.nStatus);
        EXPECT_THAT(outcome.szErr, AllOf(HasSubstr(pszWords), HasSubstr("ulimit -f"), HasSubstr("; try "),
                                         HasSubstr(fmt::format("available {}", 512 * nBlocks))));
        EXPECT_EQ("", Files());
    }
}

TEST_F(Tool, LeavesNothingAfterASignal)
{
    // To a Windows program the second is Ctrl-C, and it knows no others.
    for (const auto& [nSignal, nStatus] : {std::pair(SIGTERM, 143), {SIGINT, 130}, {SIGKILL, -SIGKILL}}) {
        if (kWindowsProgram && nSignal != SIGINT)
            continue;
        bool bSent = false;
        const auto fnSend = [&, nNumber = nSignal](pid_t nChild) {
            // The output's file is older. Not every file: a sanitizer's start puts one of its own there.
            for (const auto& entry : std::filesystem::directory_iterator(At("tmp")))
                if (!bSent && entry.path().filename().string().starts_with("LRG"))
                    bSent = kill(nChild, nNumber) == 0;
        };
        const Outcome ended =
            Watch("exec $IMGBAND make a.bmp --size 9000x9000 --budget 12M --temp-dir tmp --json", fnSend);
        EXPECT_EQ(nStatus, ended.nStatus);
        EXPECT_EQ(nSignal != SIGKILL,
                  ended.szErr == fmt::format("imgband: interrupted by signal {}\n", nSignal));
        EXPECT_EQ(nSignal != SIGKILL, ended.szOut.find(fmt::format(": {},", nStatus)) != string::npos);
        EXPECT_EQ("", Shell("find tmp -type f -size +0").szOut) << "bytes are left in the temporary folder";
        EXPECT_EQ("", nSignal == SIGKILL ? "" : Files());
    }
    EXPECT_EQ("", Shell("$IMGBAND make a.bmp --size 2x2 --temp-dir tmp; ls tmp").szOut)
        << "the next run does not clean up";
}

} // namespace
