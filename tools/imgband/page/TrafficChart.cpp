// Bytes read, written and spilled.

#include "page/Charts.h"
#include "page/Plot.h"
#include "page/Scale.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

namespace {

constexpr int kRow = 48;
constexpr int kBar = 18;

struct Bar
{
    const char* pszName;
    Node bytes;
};

std::vector<Bar> Bars(const Node& report)
{
    const Node traffic = report["traffic"];
    std::vector<Bar> bars{{"read from the input", traffic["read_bytes"]},
                          {"written to the output", traffic["written_bytes"]},
                          {"spilled into temporary files", traffic["spilled_bytes"]}};
    std::erase_if(bars, [](const Bar& bar) { return !bar.bytes.IsNumber(); });
    return bars;
}

Markup DrawBars(const std::vector<Bar>& bars, Canvas canvas)
{
    double fMost = 1;
    std::string szDescription = "Bars:";
    for (const Bar& bar : bars) {
        fMost = std::max(fMost, bar.bytes.Number());
        szDescription += fmt::format(" {} {};", BytesText(bar.bytes.Number()), bar.pszName);
    }
    const Unit unit = ByteUnit(fMost);
    const double fScale = (canvas.nWidth - 2 * kChartMargin) / fMost,
                 fBottom = kRow * static_cast<double>(bars.size()) + 4;
    canvas.nHeight = static_cast<int>(fBottom) + 38;

    Markup drawn;
    for (const Tick& tick : RoundTicks(fMost, unit, canvas.nTicksAcross / 2 + 2)) {
        const double x = kChartMargin + tick.fValue * fScale,
                     fHalf = TextWidth(tick.szLabel, canvas.nText) / 2;
        drawn += Line(x, 0, x, fBottom + 4, tick.fValue > 0 ? "grid" : "axis");
        drawn += Label(std::min(x, canvas.nWidth - fHalf), fBottom + 4 + canvas.nText, "middle", "tick",
                       Text(tick.szLabel));
    }
    drawn += Label(canvas.nWidth - kChartMargin, canvas.nHeight - 4, "end", "unit", Text(unit.pszName));
    double y = 0;
    for (const Bar& bar : bars) {
        if (bar.bytes.Number() > 0)
            drawn += Rectangle(kChartMargin, y + 22, std::max(1.0, bar.bytes.Number() * fScale), kBar, "bar");
        drawn += Label(kChartMargin + 4, y + 16, "start", "strong",
                       Bytes(bar.bytes, "tspan") + Text(fmt::format(" {}", bar.pszName)));
        y += kRow;
    }
    return Drawing(canvas, "Bytes read, written and spilled", szDescription, drawn);
}

} // namespace

Markup TrafficChart(const Node& report)
{
    const std::vector<Bar> bars = Bars(report);
    if (bars.empty())
        return {};
    return AtBothWidths([&](const Canvas& canvas) { return DrawBars(bars, canvas); });
}
