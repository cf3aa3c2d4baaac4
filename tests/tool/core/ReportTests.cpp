// What a report is made of, over random runs and random reports.

#include "../../StandardLibrary.h"
#include "../Choices.h"
#include "library/Glossary.h"
#include "page/Page.h"
#include "page/Scale.h"
#include "report/BoundedSeries.h"
#include "report/Document.h"
#include "system/Text.h"

#include <cmath>

namespace {

using nlohmann::ordered_json;
using std::string;

template <class Test> void ForChoices(unsigned nRuns, Test fnTest)
{
    for (unsigned nSeed = 1; nSeed <= nRuns && !testing::Test::HasFailure(); ++nSeed) {
        SCOPED_TRACE(testing::Message() << "seed " << nSeed);
        Choices choices{std::mt19937(nSeed)};
        fnTest(choices);
    }
}

struct Peak
{
    int nTime, nMost;
    void Merge(const Peak& later) { nMost = std::max(nMost, later.nMost); }
};

TEST(ReportCore, ALongSeriesKeepsThePeakOfEveryMoment)
{
    ForChoices(60, [](Choices& choices) {
        constexpr std::size_t kMost = 8;
        BoundedSeries<Peak, kMost> series;
        std::vector<int> samples;
        for (int nLeft = choices.Number(1, 100); nLeft > 0; --nLeft) {
            samples.push_back(choices.Number(0, 1000));
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
    ForChoices(400, [](Choices& choices) {
        const double fMost = std::exp2(choices.Number(0, 4500) / 100.0);
        const Unit unit = ByteUnit(fMost);
        const int nWanted = choices.Number(3, 8);
        const auto ticks = RoundTicks(fMost, unit, nWanted);
        ASSERT_GE(std::ssize(ticks), fMost < 3 ? 2 : nWanted / 3) << fMost;
        ASSERT_LE(std::ssize(ticks), nWanted + 1);
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
    ForChoices(40, [](Choices& choices) {
        constexpr LONG kBudget = 1000000;
        const auto begin = std::chrono::steady_clock::now();
        std::vector<StepRecord> steps(1);
        steps[0].plan.images = {{"in", ImageRole::Input, {}, ""}, {"out", ImageRole::Output, {}, ""}};
        StepHistory& history = steps[0].history.emplace(begin);
        const int nBands = choices.Number(1, 400);
        LONG nMost = 0;
        for (int i = 0; i < nBands; ++i) {
            T_ImageLrg_tag band = {};
            band.nBandTop = 10 * i;
            band.nBandBottom = 10 * i + 9;
            const Charges charges{.nInput = choices.Number(0, 1000), .nOutput = choices.Number(0, 1000)};
            const LONG nTaken = charges.nInput + charges.nOutput + choices.Number(0, 1);
            nMost = std::max(nMost, nTaken);
            history.NoteCharges(charges, {begin + std::chrono::milliseconds(i), kBudget - nTaken});
            history.NoteBand(ImageRole::Output, band, i, nBands);
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
    ForChoices(300, [](Choices& choices) {
        string szBytes;
        for (int nLeft = choices.Number(0, 40); nLeft > 0; --nLeft)
            szBytes.push_back(static_cast<char>(choices.Number(0, 1) ? choices.Number(1, 255)
                                                                     : choices.Number(0x20, 0x7E)));
        const string szUtf8 = os::Utf8FromCp932(szBytes);
        EXPECT_NO_THROW(ordered_json(szUtf8).dump()) << "no valid UTF-8";
        EXPECT_EQ(szUtf8, glossary::English(szUtf8));
    });
}

/// Takes away, repeats or replaces random values of a report.
void Damage(ordered_json& value, Choices& choices)
{
    static const auto kOthers = ordered_json::parse(
        R"([null, true, -1, 0, 9223372036854775807, 1e300, "</svg><script>x()</script>", "\u0001\"&'", [], {}])");
    if (choices.Number(0, 30) == 0)
        value = choices.Of(kOthers);
    else if (value.is_structured())
        for (auto item = value.begin(); item != value.end();) {
            Damage(*item, choices);
            if (choices.Number(0, 40) == 0)
                item = value.erase(item);
            else
                ++item;
        }
}

TEST(ReportCore, ADamagedReportIsStillAPage)
{
    std::ifstream file(SAMPLE_REPORT);
    const auto sample = ordered_json::parse(file);
    ForChoices(100, [&](Choices& choices) {
        ordered_json report = sample;
        if (choices.Number(0, 9) > 0) // one in ten stays as it is
            Damage(report, choices);
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
