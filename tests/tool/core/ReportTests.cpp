// What a report is made of, over random runs and random reports.

#include "library/Glossary.h"
#include "page/Page.h"
#include "page/Scale.h"
#include "report/BoundedSeries.h"
#include "report/Document.h"
#include "system/Text.h"

#include <cmath>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <random>
#include <regex>

namespace {

using nlohmann::ordered_json;
using std::string;

class Random
{
public:
    explicit Random(unsigned nSeed) : m_engine(nSeed) {}
    int operator()(int nFirst, int nLast) { return std::uniform_int_distribution(nFirst, nLast)(m_engine); }
    double Fraction() { return std::uniform_real_distribution<double>()(m_engine); }

private:
    std::mt19937 m_engine;
};

template <class Test> void ForRandom(unsigned nRuns, Test fnTest)
{
    for (unsigned nSeed = 1; nSeed <= nRuns && !testing::Test::HasFailure(); ++nSeed) {
        SCOPED_TRACE(testing::Message() << "seed " << nSeed);
        Random random(nSeed);
        fnTest(random);
    }
}

struct Peak
{
    int nTime, nMost;
    void Merge(const Peak& later) { nMost = std::max(nMost, later.nMost); }
};

TEST(ReportCore, ALongSeriesKeepsThePeakOfEveryMoment)
{
    ForRandom(60, [](Random& random) {
        constexpr std::size_t kMost = 8;
        BoundedSeries<Peak, kMost> series;
        std::vector<int> samples;
        for (int nLeft = random(1, 100); nLeft > 0; --nLeft) {
            samples.push_back(random(0, 1000));
            series.Add({static_cast<int>(samples.size()) - 1, samples.back()});
        }
        const auto& points = series.Points();
        ASSERT_LE(points.size(), kMost);
        ASSERT_GE(points.size(), std::min(samples.size(), kMost / 2));
        EXPECT_EQ(0, points[0].nTime);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const auto nEnd = i + 1 < points.size() ? points[i + 1].nTime : static_cast<int>(samples.size());
            EXPECT_EQ(*std::max_element(samples.begin() + points[i].nTime, samples.begin() + nEnd),
                      points[i].nMost);
        }
    });
}

TEST(ReportCore, TicksAreRoundAndReachAsFarAsTheAmount)
{
    ForRandom(400, [](Random& random) {
        const double fMost = std::exp2(random.Fraction() * 45);
        const Unit unit = ByteUnit(fMost);
        const int nWanted = random(3, 8);
        const auto ticks = RoundTicks(fMost, unit, nWanted);
        const auto nMost = static_cast<std::size_t>(nWanted);
        ASSERT_GE(ticks.size(), fMost < 3 ? 2 : nMost / 3) << fMost;
        ASSERT_LE(ticks.size(), nMost + 1);
        const double fStep = ticks[1].fValue;
        EXPECT_LE(ticks.back().fValue, fMost * 1.000001);
        EXPECT_GT(ticks.back().fValue + fStep, fMost);
        for (std::size_t i = 0; i < ticks.size(); ++i) {
            EXPECT_NEAR(static_cast<double>(i) * fStep, ticks[i].fValue, fStep * 1e-9);
            const string szPlain = std::regex_replace(ticks[i].szLabel, std::regex(","), "");
            EXPECT_NEAR(ticks[i].fValue, std::stod(szPlain) * unit.fSize, fStep * 1e-6) << szPlain;
        }
    });
    EXPECT_EQ("-1,234,567", Grouped(-1234567));
    EXPECT_EQ("999", Grouped(999));
    EXPECT_EQ("1,000.50", Grouped(1000.5, 2));
}

TEST(ReportCore, AHistoryTellsFirstAndLastBandAndAddsUpToTheBudget)
{
    ForRandom(40, [](Random& random) {
        constexpr LONG kBudget = 1000000;
        const auto begin = std::chrono::steady_clock::now();
        std::vector<StepRecord> steps(1);
        steps[0].plan.images = {{"in", ImageRole::Input, {}, ""}, {"out", ImageRole::Output, {}, ""}};
        StepHistory& history = steps[0].history.emplace(begin);
        const int nBands = random(1, 400);
        history.ExpectBands(nBands);
        LONG nMost = 0;
        for (int i = 0; i < nBands; ++i) {
            T_ImageLrg_tag band = {};
            band.nBandTop = 10 * i;
            band.nBandBottom = 10 * i + 9;
            const Charges charges{.nInput = random(0, 1000), .nOutput = random(0, 1000)};
            const LONG nTaken = charges.nInput + charges.nOutput + random(0, 1);
            nMost = std::max(nMost, nTaken);
            history.NoteCharges(charges, {begin + std::chrono::milliseconds(i), kBudget - nTaken});
            history.NoteBand(ImageRole::Output, band);
            history.BandDone();
        }
        const ordered_json report = HistoryJson(steps, kBudget, 0);
        const auto& bands = report["bands"];
        EXPECT_EQ(bands.size(), static_cast<std::size_t>(std::min(nBands, 8)));
        EXPECT_EQ(1, bands.front().at("image"));
        EXPECT_EQ(0, bands.front().at("top"));
        EXPECT_EQ(10 * nBands - 1, bands.back().at("bottom"));
        LONG nPeak = 0;
        for (const auto& sample : report["budget_over_time"]) {
            LONG nSum = sample.at("free_bytes");
            nPeak = std::max(nPeak, kBudget - nSum);
            for (const auto& charge : sample.at("charged"))
                nSum += charge.at("bytes").get<LONG>();
            EXPECT_EQ(kBudget, nSum);
        }
        EXPECT_EQ(nMost, nPeak) << "the peak is thinned out";
        EXPECT_LE(report["budget_over_time"].size(), 258u);
    });
}

/// A pattern with a number for every %d and a text for every %s.
string Filled(string szPattern, const string& szText)
{
    int nNumber = -7;
    for (std::size_t nAt; (nAt = szPattern.find('%')) != string::npos; ++nNumber)
        szPattern.replace(nAt, 2, szPattern[nAt + 1] == 'd' ? std::to_string(nNumber) : szText);
    return szPattern;
}

TEST(ReportCore, EveryTextOfTheLibraryIsTranslatedAndNothingElse)
{
#define ADD_TEXT(key, text, english) {reinterpret_cast<const char*>(text), english},
    const std::pair<string, string> texts[] = {MM_REPORT_TEXTS(ADD_TEXT) MM_FUNCTION_NAMES(ADD_TEXT)
                                                   MM_CATEGORY_NAMES(ADD_TEXT) MM_STEP_NAMES(ADD_TEXT)};
#undef ADD_TEXT
    for (const auto& [szText, szEnglish] : texts) {
        const string szFilled = Filled(szText, reinterpret_cast<const char*>(u8"回転(微小)"));
        EXPECT_EQ(Filled(szEnglish, "fine rotation"), glossary::English(szFilled));
        EXPECT_EQ(szFilled, os::Utf8FromCp932(os::Cp932FromUtf8(szFilled)));
        EXPECT_EQ(szFilled + "x", glossary::English(szFilled + "x"));
    }
    ForRandom(300, [](Random& random) {
        string szBytes;
        for (int nLeft = random(0, 40); nLeft > 0; --nLeft)
            szBytes.push_back(static_cast<char>(random(0, 1) ? random(1, 255) : random(0x20, 0x7E)));
        const string szUtf8 = os::Utf8FromCp932(szBytes);
        EXPECT_NO_THROW(ordered_json(szUtf8).dump()) << "no valid UTF-8";
        EXPECT_EQ(szUtf8, glossary::English(szUtf8));
    });
}

/// Takes away, repeats or replaces random values of a report.
void Damage(ordered_json& value, Random& random)
{
    static const ordered_json kOthers[] = {nullptr,
                                           true,
                                           -1,
                                           0,
                                           INT64_MAX,
                                           1e300,
                                           "</svg><script>x()</script>",
                                           "\x01\"&'",
                                           ordered_json::array(),
                                           ordered_json::object()};
    if (random(0, 30) == 0)
        value = kOthers[random(0, static_cast<int>(std::size(kOthers)) - 1)];
    else if (value.is_structured())
        for (auto item = value.begin(); item != value.end();) {
            Damage(*item, random);
            if (random(0, 40) == 0)
                item = value.erase(item);
            else
                ++item;
        }
}

TEST(ReportCore, ADamagedReportIsStillAPage)
{
    const auto sample =
        ordered_json::parse(R"({"program":"imgband","version":"1","command":"filter","ok":true,
        "exit_status":0,"file":"写真.bmp","format":"bgr24","width":9,"height":7,"file_bytes":250,"seconds":1.5,
        "settings":{"budget_bytes":1000,"one_mapping_bytes":500,"band_cap_bytes":9,"temporary_folder":"/t","threads":2},
        "steps":[{"step":"filter","process_id":32768,"process_name":"読","process_english":"read","begin_seconds":0.5,
        "seconds":1,"peak_private_bytes":7,"budget_used_bytes":900,"budget_free_bytes":100,"images":[{"image":"object",
        "role":"input","place":"memory","state":"banded","width":9,"height":7,"frame":1,"ratio":100,"bytes":252,
        "band_lines":2,"bands":4,"charged_bytes":900,"temporary_bytes":3}]}],"peak_private_bytes":7,"temporary_bytes":3,
        "peak_mapped_bytes":8,"peak_budget_bytes":900,"scheme":"unit","error":{"message":"m","file":"f",
        "wanted_bytes":5},"traffic":{"read_bytes":1,"written_bytes":2,"spilled_bytes":3},"budget_over_time":
        [{"seconds":0,"free_bytes":1000,"charged":[]},{"seconds":1,"free_bytes":100,"charged":
        [{"image":"object","bytes":900}]}],"memory_over_time":
        [{"seconds":0.1,"private_bytes":5,"mapped_bytes":4},{"seconds":0.9,"private_bytes":7,"mapped_bytes":8}],
        "bands":[{"step":0,"image":0,"seconds":0.6,"top":2,"bottom":3,"frame":1}],"threads":[{"entry":0,"thread":9,
        "step":"読","step_english":"read","work":"w","event":"Enter"}],"mappings":[{"entry":0,"name":"n","remainder":8}],
        "tables":{"memory":[{"section":"読","english":"read","keys":[{"key":"k","english":"k","value":"1",
        "value_english":"1"}]}],"threads":[],"mappings":[],"maximum_bytes":900}})");
    ForRandom(100, [&](Random& random) {
        ordered_json report = sample;
        if (random(0, 9) > 0) // one in ten stays as it is
            Damage(report, random);
        string szPage;
        ASSERT_NO_THROW(szPage = ReportPage(report)) << report;
        for (const char* pszText : {"<script", "\x01", "\"&amp;", "&'"})
            EXPECT_THAT(szPage, Not(testing::HasSubstr(pszText))) << "a text of the report became markup";
        static const std::regex kKey("data-key=\"([^\"]*)\"");
        for (std::sregex_iterator key(szPage.begin(), szPage.end(), kKey), end; key != end; ++key)
            EXPECT_TRUE(report.contains(ordered_json::json_pointer(key->str(1)))) << key->str(1);
    });
}

} // namespace
