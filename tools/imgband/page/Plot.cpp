// The frame of a chart.

#include "page/Plot.h"

#include "page/Scale.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr int kStepsHeight = 22;
constexpr int kTicksUp = 5;

} // namespace

Markup Drawing(const Canvas& canvas, std::string_view szTitle, std::string_view szDescription,
               const Markup& inside)
{
    return Tag("svg",
               {{"class", "chart"},
                {"viewBox", fmt::format("0 0 {} {}", canvas.nWidth, canvas.nHeight)},
                {"font-size", fmt::format("{}", canvas.nText)},
                {"role", "img"}},
               Tag("title", szTitle) + Tag("desc", szDescription) + inside);
}

double TextWidth(std::string_view szText, int nText)
{
    double fWidth = 0;
    for (const char c : szText) {
        const auto nCode = static_cast<unsigned char>(c);
        fWidth += nCode < 0x80    ? 0.66
                  : nCode >= 0xC0 ? 1.0
                                  : 0.0; // letters of a wide font; one square a character
    }
    return fWidth * nText;
}

Markup Label(double x, double y, std::string_view szAnchor, std::string_view szClass, const Markup& text)
{
    return Tag("text",
               {{"x", Pixels(x)},
                {"y", Pixels(y)},
                {"text-anchor", std::string(szAnchor)},
                {"class", std::string(szClass)}},
               text);
}

Markup Rectangle(double x, double y, double fWidth, double fHeight, std::string_view szClass)
{
    return Tag("rect", {{"x", Pixels(x)},
                        {"y", Pixels(y)},
                        {"width", Pixels(fWidth)},
                        {"height", Pixels(fHeight)},
                        {"class", std::string(szClass)}});
}

Markup Line(double x1, double y1, double x2, double y2, std::string_view szClass)
{
    return Tag("line", {{"x1", Pixels(x1)},
                        {"y1", Pixels(y1)},
                        {"x2", Pixels(x2)},
                        {"y2", Pixels(y2)},
                        {"class", std::string(szClass)}});
}

Plot::Plot(const Canvas& canvas, double fMostSeconds, double fMostBytes, int nRight)
    : m_canvas(canvas), m_fMostSeconds(fMostSeconds), m_fMostBytes(fMostBytes),
      m_fLeft(TextWidth("1,000", canvas.nText) + 6), m_fRight(canvas.nWidth - nRight),
      m_fTop(kStepsHeight + 10), m_fBottom(canvas.nHeight - 3.2 * canvas.nText)
{
}

double Plot::X(double fSeconds) const
{
    return m_fLeft + (m_fRight - m_fLeft) * fSeconds / m_fMostSeconds;
}

double Plot::Y(double fBytes) const
{
    return m_fBottom - (m_fBottom - m_fTop) * fBytes / m_fMostBytes;
}

Markup Plot::Axes() const
{
    return BytesAxis() + SecondsAxis();
}

Markup Plot::BytesAxis() const
{
    const Unit unit = ByteUnit(m_fMostBytes);
    Markup axis = Label(m_fLeft - 8, kStepsHeight - 6, "end", "unit", Text(unit.pszName));
    for (const Tick& tick : RoundTicks(m_fMostBytes, unit, kTicksUp)) {
        const double y = Y(tick.fValue);
        axis += Line(m_fLeft, y, m_fRight, y, tick.fValue > 0 ? "grid" : "axis");
        axis += Label(m_fLeft - 8, y + 0.35 * m_canvas.nText, "end", "tick", Text(tick.szLabel));
    }
    return axis;
}

Markup Plot::SecondsAxis() const
{
    const Unit unit = TimeUnit(m_fMostSeconds);
    Markup axis =
        Label(m_fRight, m_canvas.nHeight - 4, "end", "unit", Text(fmt::format("time, {}", unit.pszName)));
    for (const Tick& tick : RoundTicks(m_fMostSeconds, unit, m_canvas.nTicksAcross)) {
        const double x = X(tick.fValue), fHalf = TextWidth(tick.szLabel, m_canvas.nText) / 2;
        axis += Line(x, m_fBottom, x, m_fBottom + 5, "axis");
        axis += Label(std::min(x, m_canvas.nWidth - fHalf), m_fBottom + 6 + m_canvas.nText, "middle", "tick",
                      Text(tick.szLabel));
    }
    return axis;
}

Markup Plot::Steps(const std::vector<StepSpan>& spans) const
{
    Markup row;
    for (const StepSpan& span : spans) {
        const double x = X(span.fBegin), fWidth = std::max(1.5, X(span.fEnd) - x - 1);
        row += Rectangle(x, 2, fWidth, kStepsHeight - 4, "step");
        if (TextWidth(span.szStep, m_canvas.nText) < fWidth)
            row += Label(x + fWidth / 2, kStepsHeight - 7, "middle", "tick", Text(span.szStep));
    }
    return row;
}

Markup Plot::Ceiling(const Node& budget) const
{
    if (!budget.IsNumber())
        return {};
    const double y = Y(budget.Number());
    return Line(m_fLeft, y, m_fRight, y, "ceiling") +
           Label(m_fRight - 4, y - 6, "end", "strong", Text("budget ") + Bytes(budget, "tspan"));
}
