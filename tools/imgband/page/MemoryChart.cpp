// Private and mapped memory over time.

#include "page/Charts.h"
#include "page/Plot.h"
#include "page/Scale.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr double kCurvePixels = 1; // that are drawn as one
constexpr double kLetters = 7.5;   // room of a name beside its curve, in letters

struct Curve
{
    const char* pszName;
    std::vector<MemorySample> samples;
    double LastBytes() const { return samples.back().fBytes; }
};

Markup DrawCurve(const Plot& plot, const Curve& curve)
{
    std::string szPath;
    for (const MemorySample& sample : Thinned(curve.samples, kCurvePixels * plot.Pixel()))
        szPath += fmt::format("{}{} {}", szPath.empty() ? 'M' : 'L', Pixels(plot.X(sample.fSeconds)),
                              Pixels(plot.Y(sample.fBytes)));
    const MemorySample& end = curve.samples.back();
    return Tag("path", {{"d", szPath}, {"class", fmt::format("curve {}", curve.pszName)}}) +
           Tag("circle", {{"cx", Pixels(plot.X(end.fSeconds))},
                          {"cy", Pixels(plot.Y(end.fBytes))},
                          {"r", "3.5"},
                          {"class", fmt::format("end {}", curve.pszName)}});
}

/// The names at the ends of their curves, the lower one moved down when they would touch.
Markup Names(const Plot& plot, const std::vector<Curve>& curves, int nText)
{
    std::vector<std::pair<double, const Curve*>> ends;
    const double fLowest = plot.Y(0) - 4;
    for (const Curve& curve : curves)
        ends.emplace_back(std::min(plot.Y(curve.LastBytes()) + 0.35 * nText, fLowest), &curve);
    std::sort(ends.begin(), ends.end());
    if (ends.size() == 2 && ends[1].first < ends[0].first + nText + 2) {
        const double fMiddle = (ends[0].first + ends[1].first) / 2;
        ends[1].first = std::min(fMiddle + nText / 2.0 + 1, fLowest);
        ends[0].first = ends[1].first - nText - 2;
    }
    Markup names;
    for (const auto& [y, pCurve] : ends)
        names +=
            Label(plot.X(pCurve->samples.back().fSeconds) + 8, y, "start", "strong", Text(pCurve->pszName));
    return names;
}

Markup DrawMemory(const Node& report, const std::vector<Curve>& curves, const Canvas& canvas)
{
    const Node budget = report["settings"]["budget_bytes"];
    const double fEnd = EndOfRun(report);
    double fMost = std::max(1.0, budget.Number());
    for (const Curve& curve : curves)
        for (const MemorySample& sample : curve.samples)
            fMost = std::max(fMost, sample.fBytes);
    const Plot plot(canvas, fEnd, kHeadroom * fMost, static_cast<int>(kLetters * canvas.nText * 0.66) + 8);
    Markup drawn = plot.Axes() + plot.Steps(StepSpans(report));
    for (const Curve& curve : curves)
        drawn += DrawCurve(plot, curve);
    const std::string szDescription =
        fmt::format("Curves over {} seconds: private memory of the process up to {}, views of files up to "
                    "{}, and the budget of {}.",
                    SecondsText(fEnd), BytesText(report["peak_private_bytes"].Number()),
                    BytesText(report["peak_mapped_bytes"].Number()), BytesText(budget.Number()));
    return Drawing(canvas, "Private and mapped memory over time", szDescription,
                   drawn + plot.Ceiling(budget) + Names(plot, curves, canvas.nText));
}

} // namespace

Markup MemoryChart(const Node& report)
{
    std::vector<Curve> curves;
    for (const auto& [pszName, pszKey] :
         {std::pair{"private", "private_bytes"}, std::pair{"mapped", "mapped_bytes"}})
        if (Curve curve{pszName, MemoryOverTime(report, pszKey)}; !curve.samples.empty())
            curves.push_back(std::move(curve));
    if (curves.empty())
        return {};
    return AtBothWidths([&](const Canvas& canvas) { return DrawMemory(report, curves, canvas); });
}
