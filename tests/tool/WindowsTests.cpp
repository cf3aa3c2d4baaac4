// What is different for a Windows program: names, files that are open or write-protected, leftovers.

#include "ToolFixture.h"

#include <regex>

namespace {

using nlohmann::ordered_json;

// Neither name is in the program's code page; the folder is told to the library by its short name.
TEST_F(ToolOnWindows, DoesWhatThisBuildDoesUnderNamesInUnicode)
{
    Save("日本語.bmp", Encode(RandomPicture(kLayouts[0], 2401, 1403)));
    std::filesystem::create_directory(At("一時 é"));
    const string szJob =
        " filter 日本語.bmp 'ぼけ é.bmp' --op box --budget 12M --scheme whole --verbose --json "
        "--temp-dir '一時 é' --report 報告.json --report 報告.html --report 報告.txt";
    const Outcome native =
        Shell("'" IMGBAND_PROGRAM "'" + szJob + " && mkdir ../native && mv *ぼけ* *報告* ../native");
    const Outcome outcome = Run(szJob);
    ASSERT_EQ(0, native.nStatus + outcome.nStatus) << outcome.szErr;
    EXPECT_THAT(outcome.szErr, AllOf(HasSubstr("temporary files in 一時 é,"), HasSubstr("ぼけ é.bmp: bgr24"),
                                     testing::EndsWith("leak check: nothing left\n")));
    EXPECT_TRUE(Load("../native/ぼけ é.bmp") == Load("ぼけ é.bmp")) << "other bytes";
    const ordered_json expected = ordered_json::parse(Load("../native/報告.json")),
                       report = ordered_json::parse(Load("報告.json")),
                       printed = ordered_json::parse(outcome.szOut);
    for (const char* pszKey : {"file", "settings", "scheme", "temporary_bytes", "peak_budget_bytes"}) {
        EXPECT_EQ(expected.at(pszKey), printed.at(pszKey));
        EXPECT_EQ(expected.at(pszKey), report.at(pszKey));
    }
    EXPECT_GT(printed["temporary_bytes"], 0) << "the folder was not used";
    EXPECT_EQ(expected["tables"]["memory"], report["tables"]["memory"]);
    EXPECT_GT(report["peak_private_bytes"], 6 << 20) << "the bands were not seen";
    EXPECT_GT(report["peak_mapped_bytes"], 1 << 20);
    const string szTables = Load("報告.txt");
    EXPECT_THAT(szTables, HasSubstr("[" + string(expected["tables"]["memory"][1]["section"]) + "]"));
    EXPECT_THAT(Load("報告.html"), AllOf(HasSubstr("ぼけ é.bmp"), HasSubstr("一時 é")));
    for (const string& szText :
         {outcome.szOut, outcome.szErr, szTables, Load("報告.html"), Load("報告.json")})
        EXPECT_EQ(string::npos, szText.find('\r'));
    EXPECT_EQ("", Shell("ls '一時 é' tmp | grep LRG").szOut);
}

TEST_F(ToolOnWindows, ShowsEveryCharacterOnAConsole)
{
    if (access("/usr/bin/script", X_OK) != 0)
        GTEST_SKIP() << "bsdutils is not installed";
    const string szScreen =
        Shell("script -qec \"$IMGBAND make 日本語.bmp --size 20x20 --json\" /dev/null </dev/null").szOut;
    const string szText = std::regex_replace(szScreen, std::regex("\033\\[[0-9;?]*[A-Za-z]"), "");
    EXPECT_THAT(szText, AllOf(HasSubstr("\"イメージ書込み\","), HasSubstr("日本語.bmp:"))) << szScreen;
}

TEST_F(ToolOnWindows, ReplacesFilesAndNothingElse)
{
    // clang-format off
    const struct { int nStatus; const char *pszArguments, *pszWords; } cases[] = {
        {0, "a.bmp old.bmp", "old.bmp: bgr24"},            {0, "a.bmp a.bmp", "a.bmp: bgr24"},
        {0, "a.bmp 'sub\\b.bmp'", "sub\\b.bmp: bgr24"},     {0, "z:$PWD/a.bmp \"$(echo \"z:$PWD/c.bmp\" | tr / '\\\\')\"", "c.bmp: bgr24"},
        {4, "a.bmp kept.bmp", "is write-protected"},       {4, "a.bmp NUL --to bgr24", "is no name for a file"},
        {4, "a.bmp 'x|y.bmp'", "is no name for a file"},   {4, "a.bmp sub --to bgr24", "is not a regular file"},
        {4, "a.bmp kept.bmp/b.bmp", "cannot be "},         {3, "sub b.bmp --to bgr24", "is not a regular file"},
        {2, "a.bmp New.json --to raw48 --report new.json", "replace"}, {3, "NUL b.bmp", "is not a regular file"},         {3, "'no?.bmp' b.bmp", "No such file or directory"},
    };
    // clang-format on
    const string szPicture = Encode(RandomPicture(kLayouts[0], 5, 4));
    Save("a.bmp", szPicture);
    Shell("echo old >old.bmp; echo kept >kept.bmp; chmod 444 kept.bmp; mkdir sub");
    for (const auto& c : cases) {
        const Outcome outcome = Run("convert " + string(c.pszArguments));
        EXPECT_EQ(c.nStatus, outcome.nStatus) << c.pszArguments;
        EXPECT_THAT(outcome.szErr, HasSubstr(c.pszWords));
    }
    EXPECT_EQ("./a.bmp ./c.bmp ./kept.bmp ./old.bmp ./sub/b.bmp ", Files());
    EXPECT_TRUE(Load("old.bmp") == szPicture && Load("a.bmp") == szPicture && Load("kept.bmp") == "kept\n");
}

TEST_F(ToolOnWindows, RemovesWhatNobodyHolds)
{
    const Outcome outcome = Shell(
        ":; $IMGBAND make a.bmp --size 9000x9000 --budget 12M --temp-dir tmp & until ls tmp/LRG* >../live; "
        "do sleep .01; done;"
        "cd tmp; printf 12345 >LRG1.tmp; printf 123 >lrg1a2b.TMP; printf 1 >LRGF0.tmp; chmod 444 LRGF0.tmp;"
        "touch LRG.tmp LRGx.tmp XLRG1.tmp LRG123456789.tmp; mkdir LRG2.tmp; ls >../../before; cd ..;"
        "$IMGBAND clean --temp-dir tmp --dry-run; ls tmp | cmp - ../before; $IMGBAND clean --temp-dir tmp "
        "--json; echo $? >../status;"
        "ls $(cat ../live); ls tmp | diff ../before - | sed -n 's/^< //p' >../gone; kill -9 $!");
    const string szGone = Load("../gone"), szJson = outcome.szOut.substr(outcome.szOut.find('{'));
    EXPECT_THAT(outcome.szOut, HasSubstr("LRG1.tmp  5 bytes, "));
    EXPECT_TRUE(szGone == "LRG1.tmp\nlrg1a2b.TMP\n") << szGone;
    const ordered_json clean = ordered_json::parse(szJson.substr(0, szJson.rfind('}') + 1));
    EXPECT_TRUE(clean["total_files"] == 3 && clean["total_bytes"] == 9) << clean;
    EXPECT_EQ("4\n", Load("../status"));
    EXPECT_THAT(outcome.szErr, HasSubstr("1 of 3 leftovers cannot be removed"));
    EXPECT_THAT(outcome.szOut, testing::EndsWith(Load("../live"))) << "a run lost its file";
}

} // namespace
