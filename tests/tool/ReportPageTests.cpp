// The page of a report, opened in a browser: what a person sees there against the data of the same run.

#include "ToolFixture.h"

#include <cmath>
#include <regex>
#include <set>

using nlohmann::ordered_json;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::size_t kLooks = 6; // three widths, each light and dark

/// What the page may say of a value, to as many places as it says.
string Said(const ordered_json& value, const string& szUnit, const string& szText)
{
    if (!value.is_number() || (value.is_number_integer() && szUnit.empty()))
        return value.is_boolean()  ? value ? "yes" : "no"
               : value.is_string() ? value.get<string>()
                                   : value.dump();
    const double fSize = std::exp2(10.0 * static_cast<double>(string("?KMGTPE").find(szUnit[0])));
    const std::size_t nPlaces = szText.size() - std::min(szText.size(), szText.find('.') + 1);
    return fmt::format("{:.{}f}", value.get<double>() / (szUnit.empty() ? 1 : fSize),
                       std::max<std::size_t>(nPlaces, szUnit.empty() ? 3 : 1));
}

/// The values that the page shows otherwise than the report has them, and those that it never shows in full.
std::vector<string> Differences(const ordered_json& page, const ordered_json& report)
{
    std::vector<string> differences;
    std::set<string> inFull;
    for (const auto& shown : page["shown"]) {
        const string szKey = shown[0], szUnit = shown[1], szText = shown[2];
        const ordered_json& value = report.at(ordered_json::json_pointer(szKey));
        const string szPlain = value.is_string() ? szText : std::regex_replace(szText, std::regex(","), "");
        if (szPlain != Said(value, szUnit, szPlain))
            differences.push_back(fmt::format("{}: {}, not {} {}", szKey, value.dump(), szText, szUnit));
        if (szUnit.empty())
            inFull.insert(szKey);
    }
    const ordered_json values = report.flatten();
    const std::regex drawn("/(budget_over_time|memory_over_time|bands)/.*");
    for (const auto& value : values.items())
        if (value.value().is_primitive() && !value.value().is_null() && !inFull.contains(value.key()) &&
            !std::regex_match(value.key(), drawn))
            differences.push_back(value.key() + " is not shown");
    return differences;
}

/// How many charts the report's page must have: none that would be empty.
std::ptrdiff_t Charts(const ordered_json& report)
{
    const auto budget = report.value("budget_over_time", ordered_json::array());
    const bool bCharged =
        std::any_of(budget.begin(), budget.end(), [](auto& at) { return !at["charged"].empty(); });
    return (report.value("memory_over_time", ordered_json::array()).size() > 1 ? 2 : 0) + bCharged;
}

string OutcomeOf(const ordered_json& report)
{
    if (report["exit_status"] != 0)
        return "✗ failed, exit status " + report["exit_status"].dump();
    return report["peak_budget_bytes"] > report["settings"]["budget_bytes"] ? "✗ above its budget" : "✓ done";
}

class ReportPageTest : public Tool
{
protected:
    /// What is seen of each page in each look; one page after the other.
    ordered_json Browse(const std::vector<string>& pages) const
    {
        ordered_json texts, reports;
        for (const string& szPage : pages) {
            texts.push_back(Load(szPage));
            reports.push_back(ordered_json::parse(Load(szPage + ".json")));
        }
        Save("frames.html",
             "<!DOCTYPE html><meta charset='utf-8'><pre></pre><script>const pages = " + texts.dump() +
                 ", reports = " + reports.dump() + ";" + Load(MEASURE_PAGE) + "</script>");
        const string szDom = Start(Words("chromium --headless=new --no-sandbox --disable-gpu "
                                         "--disable-dev-shm-usage --user-data-dir=" +
                                         m_szFolder + "/browser --dump-dom file://" + At("frames.html")))
                                 .szOut;
        const std::size_t nFirst = szDom.rfind("<pre>") + 5;
        return ordered_json::parse(szDom.substr(nFirst, szDom.find("</pre>", nFirst) - nFirst));
    }
};

TEST_F(ReportPageTest, ShowsTheNumbersOfTheRunReadably)
{
    if (access("/usr/bin/chromium", X_OK) != 0)
        GTEST_SKIP() << "there is no browser here";
    Run("make in.bmp --size 2100x1700");
    std::vector<string> pages;
    for (const char* pszRun :
         {kWindowsProgram ? "filter in.bmp 'R&D 写真.bmp' --op gauss --scheme whole --budget 12M"
                          : "filter in.bmp '<b>\"R&D\" 写真.bmp' --op gauss --scheme whole --budget 12M",
          "convert in.bmp unit.raw --turn --budget 12M", "convert in.bmp no/such/out.bmp",
          "plan --in 60000x2000:bgr24+60 --maps 10 --out 6000x4000:bgr24 --min-band 200 --budget 12M"}) {
        pages.push_back(fmt::format("{}.html", pages.size()));
        Run(fmt::format("{0} --report {1} --report {1}.json --report {1}.txt", pszRun, pages.back()));
    }
    const ordered_json seen = Browse(pages);
    ASSERT_THAT(seen, SizeIs(pages.size() * kLooks));
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const string szPage = pages[i / kLooks], szTables = Load(szPage + ".txt");
        SCOPED_TRACE(szPage + string(seen[i]["look"]));
        ordered_json report = ordered_json::parse(Load(szPage + ".json"));
        EXPECT_EQ(OutcomeOf(report), seen[i]["outcome"]);
        EXPECT_THAT(Differences(seen[i], report), IsEmpty());
        EXPECT_THAT(seen[i]["faults"], IsEmpty());
        EXPECT_EQ(Charts(report), seen[i]["charts"]);
        std::size_t nBar = 0;
        for (const ordered_json& step : report["steps"])
            for (const ordered_json& image : step["images"]) {
                const int nCharged = image["charged_bytes"], nBudget = report["settings"]["budget_bytes"];
                const double fShare = 1.0 * nCharged / nBudget;
                EXPECT_THAT(szTables, HasSubstr(std::to_string(nCharged)));
                EXPECT_NEAR(fShare, seen[i]["bars"].at(nBar++), 0.002 * std::max(1.0, fShare));
            }
        report["exit_status"] = 99;
        EXPECT_THAT(Differences(seen[i], report), Not(IsEmpty())) << "a wrong number stays unnoticed";
    }
}

} // namespace
