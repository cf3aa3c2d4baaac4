// Bytes over the time of a run.

#include "page/Scale.h"
#include "page/Sections.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr double kShortestRun = 1e-6; // seconds
constexpr double kThinnest = 0.003;   // of the width: a peak that is over sooner would not be seen
constexpr char kFree[] = "free";      // look of what no image has
constexpr int kTicks = 4;             // of each axis

struct Layer
{
    std::string szName;
    std::string szLook;        ///< class of the page's style
    std::vector<double> bytes; ///< at each time
};

/// Layers on top of each other. What they have at one time holds until the next time.
struct Stack
{
    std::vector<double> times; ///< seconds
    std::vector<Layer> layers; ///< from the lowest up
};

/// The last moment that the report knows.
double EndOfRun(const Node& report)
{
    double fEnd = std::max(report["seconds"].Number(), kShortestRun);
    for (const char* pszTimes : {"steps", "budget_over_time", "memory_over_time"})
        for (const Node& time : report[pszTimes].Items())
            fEnd = std::max(fEnd, time["begin_seconds"].Number() + time["seconds"].Number());
    return fEnd;
}

/// The steps, a row each; the name stands where there is more room for it.
Markup StepRows(const Node& report, double fEnd)
{
    Markup rows;
    for (const Node& step : report["steps"].Items()) {
        if (!step["begin_seconds"].IsNumber())
            continue;
        const double fBegin = step["begin_seconds"].Number(), fTime = step["seconds"].Number();
        const std::string szRoom =
            fBegin < fEnd / 2 ? "padding-left:" + Percent(fBegin, fEnd)
                              : "text-align:right;padding-right:" + Percent(fEnd - fBegin - fTime, fEnd);
        const std::string szSpan =
            fmt::format("left:{};width:{}", Percent(fBegin, fEnd), Percent(fTime, fEnd));
        rows += Tag("li", {{"style", szRoom}},
                    Tag("i", {{"style", szSpan}}) +
                        Tag("span", Exact(step["step"]) + Text(" ") + Seconds(step["seconds"])));
    }
    return Tag("ul", {{"class", "lanes"}}, rows);
}

Markup Axes(double fEnd, double fMost)
{
    const Unit time = TimeUnit(fEnd), size = ByteUnit(fMost);
    Markup axes;
    for (const Tick& tick : RoundTicks(fMost, size, kTicks))
        axes += Tag("div", {{"class", "y"}, {"style", "bottom:" + Percent(tick.fValue, fMost)}},
                    Tag("span", fmt::format("{} {}", tick.szLabel, size.pszName)));
    for (const Tick& tick : RoundTicks(fEnd, time, kTicks))
        axes += Tag("div", {{"class", "x"}, {"style", "left:" + Percent(tick.fValue, fEnd)}},
                    Tag("span", fmt::format("{} {}", tick.szLabel, time.pszName)));
    return axes;
}

/// The area below the tops, as boxes side by side.
Markup Area(const Layer& layer, const std::vector<double>& times, const std::vector<double>& tops,
            double fEnd, double fMost)
{
    std::string szPoints;
    for (std::size_t i = 0, nNext = 0; i < tops.size(); i = nNext) {
        while (nNext < tops.size() && tops[nNext] == tops[i])
            ++nNext;
        const double fFrom = std::min(times[i], (1 - kThinnest) * fEnd),
                     fUntil = std::max(nNext < tops.size() ? times[nNext] : fEnd, fFrom + kThinnest * fEnd);
        szPoints += fmt::format("{3}{0} 100%,{0} {2},{1} {2},{1} 100%", Percent(fFrom, fEnd),
                                Percent(fUntil, fEnd), Percent(fMost - tops[i], fMost), i > 0 ? "," : "");
    }
    return Tag("i", {{"class", layer.szLook},
                     {"title", layer.szName},
                     {"style", fmt::format("clip-path:polygon({})", szPoints)}});
}

/// Nothing when there is nothing to see.
/// @param bLimited  the budget limits the bytes, and is drawn as a line
Markup Chart(const Node& report, Stack stack, bool bLimited)
{
    std::erase_if(stack.layers, [](const Layer& layer) {
        return std::all_of(layer.bytes.begin(), layer.bytes.end(), [](double fBytes) { return fBytes == 0; });
    });
    if (stack.times.size() < 2 || stack.layers.empty() || stack.layers[0].szLook == kFree)
        return {};
    std::vector<double> tops(stack.times.size());
    for (const Layer& layer : stack.layers)
        std::transform(tops.begin(), tops.end(), layer.bytes.begin(), tops.begin(), std::plus<>());
    const Node budget = report["settings"]["budget_bytes"];
    const double fEnd = EndOfRun(report), fLimit = bLimited ? budget.Number() : 0,
                 fMost = std::max({1.0, fLimit, *std::max_element(tops.begin(), tops.end())});
    Markup areas, legend, line;
    for (auto layer = stack.layers.rbegin(); layer != stack.layers.rend(); ++layer) {
        areas += Area(*layer, stack.times, tops, fEnd, fMost); // the next one covers its lower part
        std::transform(tops.begin(), tops.end(), layer->bytes.begin(), tops.begin(), std::minus<>());
        legend += Tag("li", Tag("i", {{"class", layer->szLook}}) + Tag("span", layer->szName));
    }
    if (fLimit > 0)
        line = Tag("div", {{"class", "ceiling"}, {"style", "bottom:" + Percent(fLimit, fMost)}},
                   Tag("span", Text("budget ") + Bytes(budget)));
    return Tag("div", {{"class", "chart"}},
               StepRows(report, fEnd) + Tag("div", {{"class", "plot"}}, Axes(fEnd, fMost) + areas + line) +
                   (stack.layers.size() > 1 ? Tag("ul", {{"class", "legend"}}, legend) : Markup{}));
}

Stack WithTimes(const Node& samples)
{
    Stack stack;
    for (const Node& sample : samples.Items())
        stack.times.push_back(sample["seconds"].Number());
    return stack;
}

} // namespace

Markup BudgetChart(const Node& report, const Palette& palette)
{
    const Node samples = report["budget_over_time"];
    Stack stack = WithTimes(samples);
    for (const std::string& szImage : palette.Images())
        stack.layers.push_back({szImage, palette.Look(szImage), {}});
    stack.layers.push_back({"free", kFree, {}});
    for (const Node& sample : samples.Items()) {
        for (Layer& layer : stack.layers)
            layer.bytes.push_back(0);
        stack.layers.back().bytes.back() = std::max(0.0, sample["free_bytes"].Number());
        for (const Node& charge : sample["charged"].Items())
            stack.layers[palette.Find(charge["image"].String())].bytes.back() += charge["bytes"].Number();
    }
    return Chart(report, std::move(stack), true);
}

Markup MemoryChart(const Node& report, const std::string& szKey, bool bLimited)
{
    const Node samples = report["memory_over_time"];
    Stack stack = WithTimes(samples);
    stack.layers.push_back({Words(szKey), "memory", {}});
    for (const Node& sample : samples.Items())
        stack.layers[0].bytes.push_back(sample[szKey].Number());
    return Chart(report, std::move(stack), bLimited);
}
