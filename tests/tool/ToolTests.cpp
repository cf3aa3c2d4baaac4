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
            fmt::format("convert in out --quiet --budget {}M --from {} --size {}x{} --to {} {} --range {} "
                        "--alpha {} --access {} --scheme {}",
                        i / 128 % 3 == 1 ? 32 : 12, in.layout.pszName, nWidth, nHeight, to.pszName,
                        bTurn ? "--turn" : "", bFullRange ? "full" : "keep", bKeepAlpha ? "keep" : "opaque",
                        accesses[i / 128 % 3], i < 384 ? "unit" : "whole");
        SCOPED_TRACE(szArguments);
        Save("in", Encode(in, nWidth % 2 == 1));
        EXPECT_EQ(kQuietly, Run(szArguments));
        EXPECT_TRUE(SameBytes(Encode(Expected(in, to, bTurn, bFullRange, bKeepAlpha)), Load("out")));
    }
}

TEST_F(ToolOnPosix, ConvertsInPlaceAndThroughALink)
{
    const Picture picture = RandomPicture(kLayouts[0], 5, 4);
    Save("a.bmp", Encode(picture));
    const auto mode = fs::perms(0640);
    fs::permissions(At("a.bmp"), mode);
    fs::create_symlink("a.bmp", At("b.bmp"));
    for (const char* pszArguments : {"a.bmp a.bmp --turn", "b.bmp b.bmp --to raw48 --access mmap"})
        EXPECT_EQ(0, Run(string("convert ") + pszArguments).nStatus) << pszArguments;
    EXPECT_TRUE(fs::is_symlink(At("b.bmp"))) << "the link is replaced by the picture";
    EXPECT_EQ(mode, fs::status(At("a.bmp")).permissions());
    EXPECT_TRUE(SameBytes(Encode(Expected(picture, kLayouts[2], true, true, true)), Load("a.bmp")));
}

TEST_F(Tool, ExchangesPicturesWithAnIndependentProgram)
{
    if (access("/usr/bin/convert", X_OK) != 0)
        GTEST_SKIP() << "ImageMagick is not installed";
    string szPpm = "P6\n33 19\n255\n";
    for (const unsigned nSample : RandomPicture(kLayouts[0], 33, 19).samples)
        Put(szPpm, nSample, 1);
    Save("in.ppm", szPpm);
    const Names steps[] = {Words("convert in.ppm BMP3:a.bmp"), Program("convert a.bmp b.raw"),
                           Program("convert b.raw c.bmp --from raw48 --size 33x19 --to bgra32"),
                           Words("convert -size 33x19 -depth 16 -endian LSB bgr:b.raw -depth 8 b.ppm"),
                           Words("convert c.bmp -alpha off c.ppm")};
    for (const Names& words : steps)
        EXPECT_EQ(0, Start(words).nStatus) << testing::PrintToString(words);
    for (const char* pszName : {"b.ppm", "c.ppm"})
        EXPECT_TRUE(SameBytes(szPpm, Load(pszName))) << pszName;
}

TEST_F(Tool, MakesTheSamePictureAgainAndTellsWhatItIs)
{
    for (const string szPattern : {"photo", "gradient", "noise"}) {
        const string szMake = "make --size 61x47 --pattern " + szPattern;
        for (const string& szJob :
             {szMake + " a.bmp", szMake + " b.raw --access mmap", szMake + " c.bmp --seed 2 --access memory",
              string("convert b.raw b.bmp --from raw48 --size 61x47 --to bgr24")})
            EXPECT_EQ(0, Run(szJob).nStatus) << szJob;
        EXPECT_TRUE(SameBytes(Load("a.bmp"), Load("b.bmp"))) << szPattern;
        EXPECT_FALSE(SameBytes(Load("a.bmp"), Load("c.bmp"))) << szPattern << ": the seed changes nothing";
    }
    EXPECT_EQ("bgr24", RunJson("info a.bmp")["format"]);
}

TEST_F(Tool, RefusesBadBitmaps)
{
    for (const Names& row : Table("bitmaps.txt")) {
        SCOPED_TRACE(testing::PrintToString(row));
        string szBytes = Encode(RandomPicture(kLayouts[0], 5, 4)), szPatch;
        Put(szPatch, static_cast<unsigned>(std::stoul(row[1], nullptr, 0)), std::stoi(row[2]));
        Save("bad.bmp", szBytes.replace(std::stoul(row[0]), szPatch.size(), szPatch));
        EXPECT_THAT(Run("convert bad.bmp out.bmp"), Ends(3, "imgband: bad.bmp: ", row.at(3)));
    }
    EXPECT_EQ(Names{"bad.bmp"}, Files());
}

TEST_F(Tool, RefusesInWords)
{
    Save("a.bmp", Encode(RandomPicture(kLayouts[0], 5, 4)));
    Save("a.raw", Encode(RandomPicture(kLayouts[2], 5, 4)));
    SaveSparse("large.bmp", 40000, 36700);
    SaveSparse("medium.bmp", 20000, 40000);
    SaveSparse("small.bmp", 4000, 3670);
    const Names before = Files();
    ExpectMessages("refusals.txt");
    EXPECT_EQ(before, Files());
}

TEST_F(Tool, DoesTheJobWhereItsReportCannotBeWritten)
{
    Save("a.json", Encode(RandomPicture(kLayouts[0], 5, 4)));
    ExpectMessages("reports.txt");
    EXPECT_EQ((Names{"1.bmp", "2.bmp", "3.bmp", "4.bmp", "a.json"}), Files());
}

// The output has 10 MB, the temporary file 14 MB: the second limit lets only the output through.
TEST_F(ToolOnPosix, EndsWithASentenceWhereThereIsNoRoom)
{
    for (const auto& [nBytes, pszWords] : {std::pair(512000u, "big.bmp: "), {11264000, "system error 223"}}) {
        EXPECT_THAT(Run("make big.bmp --size 1501x2303 --budget 12M", nullptr, nBytes),
                    Ends(4, pszWords, "ulimit -f", "; try ", fmt::format("available {}", nBytes)));
        EXPECT_EQ(Names{}, Files());
    }
    EXPECT_THAT(Run("make a.bmp --size 2x2 --report r.html", nullptr, 512),
                Ends(0, "r.html: cannot be written: File too large"));
    EXPECT_EQ(Names{"a.bmp"}, Files()) << "half a report is left";
}

// Pictures of both objects, and a run that does not notice them.
TEST_F(Tool, DumpsItsObjectsAndDoesTheSame)
{
    const Names dumps = {"input.bmp",  "input_1201x1403.bmp",  "input_1201x1403.raw",
                         "output.bmp", "output_1201x1403.bmp", "output_1201x1403.raw"};
    for (const Layout& layout : {kLayouts[0], kLayouts[2]}) { // in memory and in files
        Picture in = RandomPicture(layout, 1201, 1403);
        const bool bBitmap = layout.nBytes == 1;
        Save("in", Encode(in));
        const string szJob = fmt::format("filter in out --op box --from {} --size 1201x1403 "
                                         "--temp-dir tmp --budget 12M --scheme whole --verbose ",
                                         layout.pszName);
        ASSERT_EQ(0, Run(szJob).nStatus);
        const string szPlain = Load("out");
        EXPECT_THAT(Run(szJob + "--dump d").szErr, HasSubstr("leak check: nothing left"));
        EXPECT_TRUE(SameBytes(szPlain, Load("out")));
        EXPECT_EQ(dumps, Files("d"));
        EXPECT_EQ(dumps.size() + 2, Files().size()) << "more than the pictures and their dumps";
        string szRaw;
        for (std::size_t i = 0, nLine = 3603; i < in.samples.size(); i += 3)
            for (const std::size_t k : {i + 2, i + 1, i})
                Put(szRaw, in.samples[bBitmap ? (1402 - k / nLine) * nLine + k % nLine : k], layout.nBytes);
        EXPECT_TRUE(SameBytes(szRaw, Load("d/input_1201x1403.raw")));
        for (unsigned& nSample : in.samples)
            nSample >>= bBitmap ? 0 : 8;
        in.layout = kLayouts[0];
        EXPECT_TRUE(SameBytes(Encode(in, bBitmap).substr(54), Load("d/input_1201x1403.bmp").substr(54)));
        Remove("d");
        Remove("out");
        const string szRefused = Run(szJob + "--dump in").szErr;
        EXPECT_EQ(szRefused.find("in: no dump"), szRefused.rfind("no dump") - 4)
            << "not told once: " << szRefused;
        EXPECT_EQ((Names{"in", "out"}), Files()) << "the job is not done";

        Remove("out");
        const Look fnInterrupt = Signal(SIGINT, [this] { return Exists("d/input.bmp"); });
        EXPECT_EQ(130, Run(szJob + "--dump d", fnInterrupt).nStatus);
        EXPECT_THAT(dumps, testing::IsSupersetOf(Files("d"))) << "half a dump is left";
        Remove("d");
        EXPECT_EQ(Names{"in"}, Files()) << "left by the interrupted run";
    }
}

TEST_F(Tool, LeavesNothingAfterASignal)
{
    // To a Windows program the second is Ctrl-C, and it knows no others.
    for (const auto& [nSignal, nStatus] : {std::pair(SIGTERM, 143), {SIGINT, 130}, {SIGKILL, -SIGKILL}}) {
        if (kWindowsProgram && nSignal != SIGINT)
            continue;
        const Outcome ended =
            Run("make a.bmp --size 9000x9000 --budget 12M --temp-dir tmp --json",
                Signal(nSignal, [this] { return HasTemporaryFile(); })); // the output's file is older
        EXPECT_EQ(nStatus, ended.nStatus);
        for (const string& szName : Files("tmp"))
            EXPECT_EQ(0u, fs::file_size(At("tmp/" + szName))) << "bytes are left in " << szName;
        if (nSignal != SIGKILL) {
            EXPECT_EQ(fmt::format("imgband: interrupted by signal {}\n", nSignal), ended.szErr);
            EXPECT_THAT(ended.szOut, HasSubstr(fmt::format(": {},", nStatus)));
            EXPECT_EQ(Names{}, Files());
        }
    }
    EXPECT_EQ(0, Run("clean --all --temp-dir tmp").nStatus);
    EXPECT_EQ(Names{}, Files("tmp"));
}

} // namespace
