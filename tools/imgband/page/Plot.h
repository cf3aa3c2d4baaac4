#pragma once
// The frame of a chart: axes, grid, and where a value lies.

#include "page/History.h"
#include "page/Markup.h"

#include <string_view>
#include <vector>

/// The size of a drawing in pixels. Each chart is drawn twice and the page shows the one that fits, so that
/// the letters keep their size.
struct Canvas
{
    int nWidth;
    int nHeight;
    int nText; ///< size of the letters
    int nTicksAcross;
};
inline constexpr Canvas kWide{1040, 340, 13, 10};
inline constexpr Canvas kNarrow{368, 290, 12, 4};
inline constexpr int kChartMargin = 14;   ///< beside what is drawn, in pixels
inline constexpr double kHeadroom = 1.12; ///< of the scale, for the label of the budget

/// A drawing with its name and description for those who do not see it.
Markup Drawing(const Canvas& canvas, std::string_view szTitle, std::string_view szDescription,
               const Markup& inside);

/// A chart at both widths. fnDraw makes one for a canvas.
template <class Draw> Markup AtBothWidths(Draw fnDraw)
{
    return Tag("div", {{"class", "wide"}}, fnDraw(kWide)) +
           Tag("div", {{"class", "narrow"}}, fnDraw(kNarrow));
}

/// How much room a text takes at most.
double TextWidth(std::string_view szText, int nText);

/// A label in a drawing. szAnchor: start, middle or end.
Markup Label(double x, double y, std::string_view szAnchor, std::string_view szClass, const Markup& text);

Markup Rectangle(double x, double y, double fWidth, double fHeight, std::string_view szClass);
Markup Line(double x1, double y1, double x2, double y2, std::string_view szClass);

/// Bytes over seconds.
class Plot
{
public:
    /// @param nRight  room beside the plot for labels, in pixels
    Plot(const Canvas& canvas, double fMostSeconds, double fMostBytes, int nRight);

    double X(double fSeconds) const;
    double Y(double fBytes) const;
    double Right() const { return m_fRight; }

    /// Seconds of a pixel.
    double Pixel() const { return m_fMostSeconds / (m_fRight - m_fLeft); }

    /// Grid, ticks and units; lies under the data.
    Markup Axes() const;

    /// The steps as a row above the plot, named where there is room.
    Markup Steps(const std::vector<StepSpan>& spans) const;

    /// The budget as a line across the plot, with its amount.
    Markup Ceiling(const Node& budget) const;

private:
    Markup BytesAxis() const;
    Markup SecondsAxis() const;

    Canvas m_canvas;
    double m_fMostSeconds, m_fMostBytes;
    double m_fLeft, m_fRight, m_fTop, m_fBottom;
};
