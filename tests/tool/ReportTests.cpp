// Reports of runs: their numbers against the planner's, against each other, and when something fails.

#include "ToolFixture.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kLine = 5412, kHeight = 1905; // of a bgr24 bitmap 1803 pixels wide

using Reports = Tool;
constexpr const char* kMake = "make in.bmp --size 1803x1905 --pattern gradient --budget 12M";

TEST_F(Reports, AddUpToWhatThePlannerCharged)
{
    const struct
    {
        const char* pszJob;
        int nFrame, nFactor, nOutLine;
    } cases[] = {
        {kMake, 0, 1, kLine},
        {"convert in.bmp out.raw --budget 40M", 0, 1, 2 * 5409},
        {"convert in.bmp out.raw --budget 14M --scheme whole", 0, 1, 2 * 5409},
        {"convert in.bmp out.bmp --turn --access mmap", 0, 1, kLine},
        {"convert in.bmp out.bmp --budget 60M --scheme whole", 0, 1, kLine},
        {"filter in.bmp out.bmp --op box --radius 9 --band-cap 1M", 9, 1, kLine},
        {"filter in.bmp out.bmp --op sharpen --budget 15M --scheme whole", 2, 1, kLine},
        {"enlarge in.bmp out.bmp --op nearest --factor 2 --band-cap 1M", 0, 2, 10820},
        {"enlarge in.bmp out.bmp --factor 2 --scheme whole", 0, 2, 10820},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pszJob);
        const Json printed = Json::parse(Run(c.pszJob + string(" --json --report r.json")).szOut);
        const Json report = Json::parse(Load("r.json")), &steps = report["steps"], &tables = report["tables"];
        EXPECT_EQ(printed["steps"], steps);
        const int nBudget = report["settings"]["budget_bytes"];
        std::vector<int> charged, seen;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const Json& keys = tables["memory"][i]["keys"]; // the last three: images, work, left
            charged.push_back(0);
            for (const Json& image : steps[i]["images"])
                charged.back() += image["charged_bytes"].get<int>();
            EXPECT_EQ(charged.back(), steps[i]["budget_used_bytes"]);
            EXPECT_EQ(std::to_string(charged.back()), keys[keys.size() - 3]["value"]);
            EXPECT_EQ(std::to_string(nBudget - charged.back()), keys.back()["value"]);
        }
        for (const Json& sample : report["budget_over_time"]) {
            seen.push_back(0);
            for (const Json& image : sample["charged"])
                seen.back() += image["bytes"].get<int>();
            EXPECT_EQ(nBudget - seen.back(), sample["free_bytes"]);
            EXPECT_EQ(string::npos, sample.dump().find("other")) << "nobody's memory";
        }
        EXPECT_THAT(seen, testing::IsSupersetOf(charged));
        EXPECT_EQ(0, seen.back()) << "something is held at the end";
        for (const Json& nPeak : {report["peak_budget_bytes"], tables["maximum_bytes"]})
            EXPECT_EQ(*std::max_element(seen.begin(), seen.end()), nPeak);
        std::map<const Json*, std::set<int>> ends;
        for (const Json& band : report["bands"]) {
            const Json& image =
                steps[band["step"].get<std::size_t>()]["images"][band["image"].get<std::size_t>()];
            EXPECT_EQ(image["frame"], band["frame"]);
            ends[&image].insert({band["top"].get<int>(), band["bottom"].get<int>()});
        }
        for (const auto& [pImage, lines] : ends) {
            EXPECT_LE(lines.size(), 16u);
            EXPECT_EQ((*pImage)["height"], *lines.rbegin() - *lines.begin() + 1);
        }
        const bool bUnit = printed.value("scheme", "") == "unit";
        const int nBand = steps[0]["images"].back()["band_lines"], nAll = kHeight * c.nFactor;
        int nLines = bUnit ? 0 : kHeight; // of the source, which a unit band is made from with its frame
        for (int nTop = 0; bUnit && nTop < nAll; nTop += nBand)
            nLines += std::min((std::min(nTop + nBand, nAll) - 1) / c.nFactor + c.nFrame, kHeight - 1) -
                      std::max(nTop / c.nFactor - c.nFrame, 0) + 1;
        EXPECT_EQ(printed["command"] == "make" ? 0 : kLine * nLines, report["traffic"]["read_bytes"]);
        EXPECT_EQ(c.nOutLine * kHeight * c.nFactor, report["traffic"]["written_bytes"]);
        EXPECT_EQ(report["temporary_bytes"], report["traffic"]["spilled_bytes"]) << "all live together once";
    }
}

TEST_F(Reports, ShowTheSameTablesAsTextAndAsData)
{
    Run(kMake + string(" --report r.json --report r.txt"));
    const Json tables = Json::parse(Load("r.json"))["tables"];
    string szWanted = "\t=\t" + tables["maximum_bytes"].dump() + "\t", szText = Load("r.txt");
    for (const char* pszTable : {"memory", "threads", "mappings"})
        for (const Json& section : tables[pszTable])
            for (const Json& key : section["keys"]) {
                const string szLine = key["key"].get<string>() + "\t=\t" + key["value"].get<string>() + "\t";
                ASSERT_THAT(szText, HasSubstr(szLine));
                szText.erase(szText.find(szLine), szLine.size());
            }
    EXPECT_EQ(szText.find(szWanted), szText.rfind("\t=\t")) << "more lines than keys and the maximum";
}

TEST_F(ToolOnPosix, TellsInAReportHowFarAFailedJobCame)
{
    Run(kMake);
    // The output and the first temporary file fit below the limit; the larger one does not.
    Start(Program("enlarge in.bmp out.bmp --factor 2 --scheme whole --budget 12M --report r.json"), nullptr,
          88000 * 512);
    const Json report = Json::parse(Load("r.json")), &steps = report["steps"];
    EXPECT_THAT(report["error"]["message"], HasSubstr("ulimit -f"));
    EXPECT_FALSE(report.contains("file"));
    EXPECT_FALSE(steps[0].contains("unfinished"));
    EXPECT_EQ(true, steps[1]["unfinished"]);
    EXPECT_EQ(Json::array(), steps[1]["images"]);
    EXPECT_EQ(kLine * kHeight, report["traffic"]["read_bytes"]);
    const Json lost = report["budget_over_time"].back()["charged"];
    ASSERT_EQ(1u, lost.size()) << lost;
    EXPECT_EQ("other", lost[0]["image"]) << "charges of a failed planning are hidden";
}

TEST_F(Reports, NeverDecideHowAJobEnds)
{
    Save("a.json", Encode(RandomPicture(kLayouts[0], 5, 4)));
    ExpectMessages("reports.txt", "", [this](const Outcome& outcome) {
        EXPECT_EQ((outcome.nStatus == 0 ? Names{"a.json", "out.bmp"} : Names{"a.json"}), Files());
        Remove("out.bmp");
    });
}

TEST_F(ToolOnPosix, WritesAReportWholeOrNotAtAll)
{
    const Outcome outcome = Start(Program("make a.bmp --size 2x2 --report r.html"), nullptr, 512);
    EXPECT_EQ(0, outcome.nStatus);
    EXPECT_THAT(outcome.szErr, HasSubstr("r.html: cannot be written: File too large"));
    EXPECT_EQ(Names{"a.bmp"}, Files());
}

} // namespace
