// What is different for a Windows program: names, files that are open or write-protected, leftovers.

#include "ToolFixture.h"

namespace {

// Neither name is in the program's code page; the folder is told to the library by its short name.
TEST_F(ToolOnWindows, DoesWhatThisBuildDoesUnderNamesInUnicode)
{
    Save("日本語.bmp", Encode(RandomPicture(kLayouts[0], 2401, 1403)));
    fs::create_directory(At("一時 é"));
    const string szJob =
        "filter 日本語.bmp 'ぼけ é.bmp' --op box --budget 12M --scheme whole --verbose --json "
        "--temp-dir '一時 é' --report 報告.json --report 報告.html --report 報告.txt";
    const Outcome native = Start(Program(szJob, IMGBAND_PROGRAM));
    ASSERT_EQ(0, native.nStatus) << native.szErr;
    const string szNative = Load("ぼけ é.bmp");
    const Json expected = LoadJson("報告.json");
    for (const char* pszName : {"ぼけ é.bmp", "報告.json", "報告.html", "報告.txt"})
        Remove(pszName);
    const Outcome outcome = Run(szJob);
    ASSERT_EQ(0, outcome.nStatus) << outcome.szErr;
    EXPECT_THAT(outcome.szErr, AllOf(HasSubstr("temporary files in 一時 é,"), HasSubstr("ぼけ é.bmp: bgr24"),
                                     EndsWith("leak check: nothing left\n")));
    EXPECT_TRUE(SameBytes(szNative, Load("ぼけ é.bmp")));
    const Json report = LoadJson("報告.json"), printed = Json::parse(outcome.szOut);
    for (const char* pszKey : {"file", "settings", "scheme", "temporary_bytes", "peak_budget_bytes"}) {
        EXPECT_EQ(expected.at(pszKey), printed.at(pszKey));
        EXPECT_EQ(expected.at(pszKey), report.at(pszKey));
    }
    EXPECT_GT(printed["temporary_bytes"], 0) << "the folder was not used";
    EXPECT_EQ(expected["tables"]["memory"], report["tables"]["memory"]);
    EXPECT_GT(report["peak_private_bytes"], 6 << 20) << "the bands were not seen";
    EXPECT_GT(report["peak_mapped_bytes"], 1 << 20);
    const string szTables = Load("報告.txt"), szPage = Load("報告.html");
    EXPECT_THAT(szTables, HasSubstr("[" + string(expected["tables"]["memory"][1]["section"]) + "]"));
    EXPECT_THAT(szPage, AllOf(HasSubstr("ぼけ é.bmp"), HasSubstr("一時 é")));
    for (const string& szText : {outcome.szOut, outcome.szErr, szTables, szPage, Load("報告.json")})
        EXPECT_EQ(string::npos, szText.find('\r'));
    EXPECT_FALSE(HasTemporaryFile());
    EXPECT_FALSE(HasTemporaryFile("一時 é"));
}

TEST_F(ToolOnWindows, ShowsEveryCharacterOnAConsole)
{
    if (access("/usr/bin/script", X_OK) != 0)
        GTEST_SKIP() << "bsdutils is not installed";
    const string szScreen = Screen("make 日本語.bmp --size 20x20 --json");
    const string szText = std::regex_replace(szScreen, std::regex("\033\\[[0-9;?]*[A-Za-z]"), "");
    EXPECT_THAT(szText, AllOf(HasSubstr("\"イメージ書込み\","), HasSubstr("日本語.bmp:"))) << szScreen;
}

TEST_F(ToolOnWindows, ReplacesFilesAndNothingElse)
{
    const string szPicture = Encode(RandomPicture(kLayouts[0], 5, 4));
    Save("a.bmp", szPicture);
    Save("old.bmp", "old");
    Save("kept.bmp", "kept");
    fs::permissions(At("kept.bmp"), fs::perms(0444));
    fs::create_directory(At("sub"));
    ExpectMessages("windows.txt");
    EXPECT_EQ((Names{"a.bmp", "c.bmp", "kept.bmp", "old.bmp", "sub/b.bmp"}), Files());
    for (const char* pszName : {"a.bmp", "old.bmp"})
        EXPECT_TRUE(SameBytes(szPicture, Load(pszName))) << pszName;
    EXPECT_EQ("kept", Load("kept.bmp"));
}

TEST_F(ToolOnWindows, RemovesWhatNobodyHolds)
{
    bool bLooked = false;
    const auto fnClean = [&](pid_t nChild) {
        if (bLooked || !HasTemporaryFile())
            return;
        bLooked = true;
        const Names live = Files("tmp"), others = {"LRG.tmp", "LRGx.tmp", "XLRG1.tmp", "LRG123456789.tmp"};
        Save("tmp/LRG1.tmp", "12345");
        Save("tmp/lrg1a2b.TMP", "123");
        Save("tmp/LRGF0.tmp", "1");
        fs::permissions(At("tmp/LRGF0.tmp"), fs::perms(0444));
        fs::create_directory(At("tmp/LRG2.tmp"));
        for (const string& szName : others)
            Save("tmp/" + szName, "");
        const Names before = Files("tmp");
        EXPECT_THAT(Run("clean --all --temp-dir tmp --dry-run").szOut, HasSubstr("LRG1.tmp  5 bytes, "));
        EXPECT_EQ(before, Files("tmp")) << "a dry run removes files";
        const Outcome cleaned = Run("clean --all --temp-dir tmp --json");
        const Json clean = Json::parse(cleaned.szOut);
        EXPECT_EQ(3, clean["total_files"]);
        EXPECT_EQ(9, clean["total_bytes"]);
        EXPECT_THAT(cleaned, Ends(4, "1 of 3 leftovers cannot be removed"));
        Names left = Files("tmp");
        EXPECT_EQ(before.size() - 2, left.size()) << testing::PrintToString(left);
        EXPECT_THAT(left, testing::IsSupersetOf(live)) << "a run lost its file";
        EXPECT_THAT(left, testing::Not(testing::Contains(testing::AnyOf("LRG1.tmp", "lrg1a2b.TMP"))));
        EXPECT_TRUE(Exists("tmp/LRG2.tmp")) << "a folder is removed";
        kill(nChild, SIGKILL);
    };
    Run("make a.bmp --size 9000x9000 --budget 12M --temp-dir tmp", fnClean);
    EXPECT_TRUE(bLooked);
}

} // namespace
