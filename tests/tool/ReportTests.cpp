// Reports of runs: their numbers against the planner's, against each other, when something fails, and on a
// page in a browser.

#include "ToolFixture.h"

namespace {

constexpr int kLine = 5412, kHeight = 1905; // of a bgr24 bitmap 1803 pixels wide

using Reports = Tool;
constexpr const char* kMake = "make in.bmp --size 1803x1905 --pattern gradient --budget 12M";

int Sum(const Json& items, const char* pszKey)
{
    return std::accumulate(items.begin(), items.end(), 0,
                           [&](int nSum, const Json& item) { return nSum + item[pszKey].get<int>(); });
}

TEST_F(Reports, AddUpToWhatThePlannerCharged)
{
    // frame, factor, bytes of an output's line
    const std::tuple<string, int, int, int> cases[] = {
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
    for (const auto& [szJob, nFrame, nFactor, nOutLine] : cases) {
        SCOPED_TRACE(szJob);
        const Json printed = RunJson(szJob + " --report r.json"), report = LoadJson("r.json");
        const Json &steps = report["steps"], &tables = report["tables"];
        EXPECT_EQ(printed["steps"], steps);
        const int nBudget = report["settings"]["budget_bytes"];
        std::vector<int> charged, seen;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const Json& keys = tables["memory"][i]["keys"]; // the last three: images, work, left
            charged.push_back(Sum(steps[i]["images"], "charged_bytes"));
            EXPECT_EQ(charged.back(), steps[i]["budget_used_bytes"]);
            EXPECT_EQ(std::to_string(charged.back()), keys[keys.size() - 3]["value"]);
            EXPECT_EQ(std::to_string(nBudget - charged.back()), keys.back()["value"]);
        }
        for (const Json& sample : report["budget_over_time"]) {
            seen.push_back(Sum(sample["charged"], "bytes"));
            EXPECT_EQ(nBudget - seen.back(), sample["free_bytes"]);
            EXPECT_EQ(string::npos, sample.dump().find("other")) << "nobody's memory";
        }
        EXPECT_THAT(seen, testing::IsSupersetOf(charged));
        EXPECT_EQ(0, seen.back()) << "something is held at the end";
        for (const Json& nPeak : {report["peak_budget_bytes"], tables["maximum_bytes"]})
            EXPECT_EQ(*std::max_element(seen.begin(), seen.end()), nPeak);
        std::map<const Json*, std::set<int>> ends;
        for (const Json& band : report["bands"]) {
            const Json &images = steps.at(band["step"].get<std::size_t>())["images"],
                       &image = images.at(band["image"].get<std::size_t>());
            EXPECT_EQ(image["frame"], band["frame"]);
            ends[&image].insert({band["top"].get<int>(), band["bottom"].get<int>()});
        }
        for (const auto& [pImage, lines] : ends) {
            EXPECT_LE(lines.size(), 16u);
            EXPECT_EQ((*pImage)["height"], *lines.rbegin() - *lines.begin() + 1);
        }
        const bool bUnit = printed.value("scheme", "") == "unit";
        const int nBand = steps[0]["images"].back()["band_lines"], nAll = kHeight * nFactor;
        int nLines = bUnit ? 0 : kHeight; // of the source, which a unit band is made from with its frame
        for (int nTop = 0; bUnit && nTop < nAll; nTop += nBand)
            nLines += std::min((std::min(nTop + nBand, nAll) - 1) / nFactor + nFrame, kHeight - 1) -
                      std::max(nTop / nFactor - nFrame, 0) + 1;
        EXPECT_EQ(printed["command"] == "make" ? 0 : kLine * nLines, report["traffic"]["read_bytes"]);
        EXPECT_EQ(nOutLine * kHeight * nFactor, report["traffic"]["written_bytes"]);
        EXPECT_EQ(report["temporary_bytes"], report["traffic"]["spilled_bytes"]) << "all live together once";
    }
}

TEST_F(Reports, ShowTheSameTablesAsTextAndAsData)
{
    Run(kMake + string(" --report r.json --report r.txt"));
    const Json tables = LoadJson("r.json")["tables"];
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
    Run("enlarge in.bmp out.bmp --factor 2 --scheme whole --budget 12M --report r.json", nullptr,
        88000 * 512);
    const Json report = LoadJson("r.json"), &steps = report["steps"];
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

TEST_F(Reports, ArePagesWithTheNumbersOfTheRunReadable)
{
    if (access("/usr/bin/chromium", X_OK) != 0)
        GTEST_SKIP() << "there is no browser here";
    Run("make in.bmp --size 2100x1700");
    Json runs;
    for (const char* pszRun :
         {kWindowsProgram ? "filter in.bmp 'R&D 写真.bmp' --op gauss --scheme whole --budget 12M"
                          : "filter in.bmp '<b>\"R&D\" 写真.bmp' --op gauss --scheme whole --budget 12M",
          "convert in.bmp unit.raw --turn --budget 12M", "convert in.bmp no/such/out.bmp",
          "plan --in 60000x2000:bgr24+60 --maps 10 --out 6000x4000:bgr24 --min-band 200 --budget 12M"}) {
        Run(pszRun + string(" --report r.html --report r.json --report r.txt"));
        runs.push_back({{"page", Load("r.html")}, {"report", LoadJson("r.json")}, {"tables", Load("r.txt")}});
    }
    Save("frames.html", "<!DOCTYPE html><meta charset='utf-8'><pre></pre><script>const runs = " +
                            runs.dump() + ";" + Load(MEASURE_PAGE) + "</script>");
    const string szDom = Start(Words("chromium --headless=new --no-sandbox --disable-gpu "
                                     "--disable-dev-shm-usage --dump-dom --user-data-dir=" +
                                     m_szFolder + "/browser file://" + At("frames.html")))
                             .szOut;
    EXPECT_THAT(szDom, HasSubstr("<pre>24 looks: no faults</pre>"))
        << "four runs, three widths, light and dark";
}

} // namespace
