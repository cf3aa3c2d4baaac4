// The budget over time.

#include "page/Charts.h"
#include "page/Plot.h"
#include "page/Scale.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr double kColumnPixels = 3; // that are drawn as one
constexpr std::size_t kColours = 6;
constexpr std::size_t kHatches = 5;

/// Lines drawn over a colour, in a square of 8 pixels: colour is never all that tells two images apart.
constexpr const char* kHatch[kHatches] = {"", "M-1 9L9 -1M-5 5L5 -5M3 13L13 3", "M2 2h2v2h-2zM6 6h2v2h-2z",
                                          "M-1 -1L9 9M-5 3L5 13M3 -5L13 5", "M0 2H8M0 6H8"};

/// One image's area in the stack, drawn as steps.
struct Layer
{
    std::string szName;
    std::string szFill;
    const char* pszInk;           ///< class of its name
    std::vector<double> from, to; ///< bytes, for each sample
};

std::string ImageFill(std::size_t nImage)
{
    return fmt::format("url(#image{})", nImage);
}

Markup Swatch(const std::string& szFill, const Markup& name)
{
    return Tag("li", Tag("svg", {{"class", "swatch"}, {"viewBox", "0 0 22 14"}, {"aria-hidden", "true"}},
                         Tag("rect", {{"width", "22"}, {"height", "14"}, {"fill", szFill}})) +
                         Tag("span", name));
}

Markup Legend(const BudgetHistory& history)
{
    Markup items = Swatch("var(--free)", Text("free"));
    for (std::size_t i = history.images.size(); i-- > 0;) // as they lie on each other
        items += Swatch(ImageFill(i), Text(history.images[i]));
    return Tag("ul", {{"class", "legend"}}, items);
}

std::vector<Layer> Stack(const std::vector<BudgetHistory::Sample>& samples,
                         const std::vector<std::string>& images)
{
    std::vector<Layer> layers;
    std::vector<double> top(samples.size(), 0.0);
    for (std::size_t i = 0; i <= images.size(); ++i) {
        const bool bFree = i == images.size();
        Layer layer{bFree ? "free" : images[i],
                    bFree ? "var(--free)" : ImageFill(i),
                    bFree ? "strong" : "on",
                    top,
                    {}};
        for (std::size_t k = 0; k < samples.size(); ++k)
            top[k] += bFree ? std::max(0.0, samples[k].fFree) : samples[k].charged[i];
        layer.to = top;
        layers.push_back(std::move(layer));
    }
    return layers;
}

/// Draws samples that hold until the next one as areas and labels.
class StepArea
{
public:
    StepArea(const Plot& plot, const std::vector<BudgetHistory::Sample>& samples, double fEnd) : m_plot(plot)
    {
        for (const auto& sample : samples)
            m_times.push_back(sample.fSeconds);
        m_times.push_back(std::max(fEnd, m_times.back()));
    }

    Markup Area(const Layer& layer) const
    {
        std::string szPath;
        for (std::size_t i = 0; i < layer.to.size(); ++i)
            if (layer.to[i] > layer.from[i]) {
                const std::size_t nFirst = i;
                while (i < layer.to.size() && layer.to[i] > layer.from[i])
                    ++i;
                szPath += Outline(layer, nFirst, i);
            }
        return szPath.empty() ? Markup{} : Tag("path", {{"d", szPath}, {"fill", layer.szFill}});
    }

    /// The layer's name where it lies still for the longest time, if there is room.
    Markup Name(const Layer& layer, int nText) const
    {
        double fWidest = TextWidth(layer.szName, nText) + 8;
        Markup name;
        for (std::size_t i = 0; i < layer.to.size();) {
            const std::size_t nFirst = i;
            while (i < layer.to.size() && layer.to[i] == layer.to[nFirst] &&
                   layer.from[i] == layer.from[nFirst])
                ++i;
            const double x = m_plot.X(m_times[nFirst]), fWidth = m_plot.X(m_times[i]) - x;
            const double y = m_plot.Y(layer.to[nFirst]), fHeight = m_plot.Y(layer.from[nFirst]) - y;
            if (fWidth < fWidest || fHeight < nText + 4)
                continue;
            fWidest = fWidth;
            name = Label(x + fWidth / 2, y + fHeight / 2 + 0.35 * nText, "middle", layer.pszInk,
                         Text(layer.szName));
        }
        return name;
    }

private:
    /// The samples nFirst .. nEnd - 1 as one closed line: along the top and back along the bottom.
    std::string Outline(const Layer& layer, std::size_t nFirst, std::size_t nEnd) const
    {
        std::string szPath = fmt::format("M{} {}", X(nFirst), Y(layer.to[nFirst]));
        for (std::size_t i = nFirst + 1; i < nEnd; ++i)
            if (layer.to[i] != layer.to[i - 1])
                szPath += fmt::format("H{}V{}", X(i), Y(layer.to[i]));
        szPath += fmt::format("H{}V{}", X(nEnd), Y(layer.from[nEnd - 1]));
        for (std::size_t i = nEnd - 1; i > nFirst; --i)
            if (layer.from[i] != layer.from[i - 1])
                szPath += fmt::format("H{}V{}", X(i), Y(layer.from[i - 1]));
        return szPath + fmt::format("H{}Z", X(nFirst));
    }

    std::string X(std::size_t nTime) const { return Pixels(m_plot.X(m_times[nTime])); }
    std::string Y(double fBytes) const { return Pixels(m_plot.Y(fBytes)); }

    const Plot& m_plot;
    std::vector<double> m_times; ///< of each sample, and the end
};

double MostBytes(const Node& report, const BudgetHistory& history)
{
    double fMost = std::max(1.0, report["settings"]["budget_bytes"].Number());
    for (const auto& sample : history.samples)
        fMost = std::max(fMost, sample.Charged() + std::max(0.0, sample.fFree));
    return fMost;
}

Markup DrawBudget(const Node& report, const BudgetHistory& history, const Canvas& canvas)
{
    const double fEnd = EndOfRun(report);
    const Plot plot(canvas, fEnd, kHeadroom * MostBytes(report, history), kChartMargin);
    const auto samples = Thinned(history.samples, kColumnPixels * plot.Pixel());
    const StepArea areas(plot, samples, fEnd);
    Markup drawn = plot.Axes() + plot.Steps(StepSpans(report)), names;
    for (const Layer& layer : Stack(samples, history.images)) {
        drawn += areas.Area(layer);
        names += areas.Name(layer, canvas.nText);
    }
    const std::string szDescription = fmt::format(
        "Areas in steps over {} seconds: what each image was charged, stacked, and the free rest up to the "
        "budget of {}. The charges of all steps are in the table of the images.",
        SecondsText(fEnd), BytesText(report["settings"]["budget_bytes"].Number()));
    return Drawing(canvas, "The budget over time", szDescription,
                   drawn + names + plot.Ceiling(report["settings"]["budget_bytes"]));
}

} // namespace

Markup ImagePatterns(const Node& report)
{
    Markup patterns;
    for (std::size_t i = 0; i < BudgetOverTime(report).images.size(); ++i) {
        const std::string szColour = fmt::format("var(--c{})", i % kColours);
        patterns += Tag("pattern",
                        {{"id", fmt::format("image{}", i)},
                         {"width", "8"},
                         {"height", "8"},
                         {"patternUnits", "userSpaceOnUse"}},
                        Tag("rect", {{"width", "8"}, {"height", "8"}, {"fill", szColour}}) +
                            Tag("path", {{"d", kHatch[i % kHatches]}, {"class", "hatch"}}));
    }
    return Tag("svg", {{"class", "patterns"}, {"aria-hidden", "true"}}, patterns);
}

Markup BudgetChart(const Node& report)
{
    const BudgetHistory history = BudgetOverTime(report);
    if (history.samples.empty())
        return {};
    return AtBothWidths([&](const Canvas& canvas) { return DrawBudget(report, history, canvas); }) +
           Legend(history);
}
