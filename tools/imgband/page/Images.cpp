// Bars for the images of each step.

#include "page/Scale.h"
#include "page/Sections.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr double kTrack = 1000; // a bar's units; it is stretched to the page

Markup AmountBar(double fBytes, double fBudget, double fMost)
{
    Markup drawn;
    const auto Piece = [&](double fFrom, double fWidth, const char* pszClass) {
        drawn += Tag(
            "rect", {{"x", Pixels(fFrom)}, {"width", Pixels(fWidth)}, {"height", "14"}, {"class", pszClass}});
    };
    Piece(0, kTrack * fBudget / fMost, "track");
    Piece(0, kTrack * fBytes / fMost, "bar");
    for (const int nQuarter : {1, 2, 3})
        Piece(kTrack * fBudget / fMost * nQuarter / 4, 1, "quarter");
    return Tag(
        "svg",
        {{"class", "meter"}, {"viewBox", "0 0 1000 14"}, {"preserveAspectRatio", "none"}, {"role", "img"}},
        Tag("title", fmt::format("{} of a budget of {}", BytesText(fBytes), BytesText(fBudget))) + drawn);
}

Markup HeldWords(const Node& image)
{
    Markup words = Text("in ") + Exact(image["place"]);
    if (image["place"].String().find(image["state"].String()) == std::string::npos)
        words += Text(", ") + Exact(image["state"]);
    words += Text(": ") + BandWords(image);
    if (image["frame"].Number() > 0)
        words += Text(", frame ") + Exact(image["frame"]);
    return words;
}

Markup ImageRow(const Node& image, double fBudget, double fMost)
{
    const Node charged = image["charged_bytes"];
    Markup amount = Tag("strong", Bytes(charged));
    if (fBudget > 0)
        amount += Text(fmt::format(", {:.1f} %", 100 * charged.Number() / fBudget));
    return Tag("li", Tag("p", {{"class", "name"}},
                         Tag("strong", Exact(image["image"])) + Text(" ") +
                             Tag("span", {{"class", "role"}}, Exact(image["role"]))) +
                         AmountBar(charged.Number(), fBudget, fMost) +
                         Tag("p", {{"class", "amount"}}, amount) +
                         Tag("p", {{"class", "words"}}, HeldWords(image)));
}

Markup StepWords(const Node& step)
{
    Markup words = Bytes(step["budget_used_bytes"]) + Text(" of the budget in use");
    if (step["budget_free_bytes"].IsKnown())
        words += Text(", ") + Bytes(step["budget_free_bytes"]) + Text(" free");
    if (step["seconds"].IsKnown())
        words += Text("; ") + Seconds(step["seconds"]);
    if (step["peak_private_bytes"].IsKnown())
        words += Text(", peak private memory ") + Bytes(step["peak_private_bytes"]);
    if (step["peak_mapped_bytes"].IsKnown())
        words += Text(", mapped ") + Bytes(step["peak_mapped_bytes"]);
    return Tag("p", words);
}

Markup StepBars(const Node& step, std::size_t nStep, const Node& budget)
{
    const Node images = step["images"];
    double fMost = std::max(1.0, budget.Number());
    for (std::size_t i = 0; i < images.Count(); ++i)
        fMost = std::max(fMost, images.Item(i)["charged_bytes"].Number());
    Markup rows;
    for (std::size_t i = 0; i < images.Count(); ++i)
        rows += ImageRow(images.Item(i), budget.Number(), fMost);
    const std::string szPast = fmt::format("width:{:.3f}%", 100 * budget.Number() / fMost);
    rows +=
        Tag("li", {{"class", "scale"}, {"aria-hidden", "true"}},
            Tag("p", {{"style", szPast}}, Tag("span", "0") + Tag("span", Text("budget ") + Bytes(budget))));
    return Tag("h3", Text(fmt::format("{}. ", nStep + 1)) + Exact(step["step"]) + Text(" ") +
                         Tag("small", Exact(step["process_english"]) + Text(" ") +
                                          Tag("span", {{"lang", "ja"}}, Exact(step["process_name"])))) +
           StepWords(step) + Tag("ul", {{"class", "bars"}}, rows);
}

} // namespace

Markup PixelSize(const Node& image)
{
    return Exact(image["width"]) + Text(" × ") + Exact(image["height"]);
}

Markup BandWords(const Node& image)
{
    const Markup lines =
        Exact(image["band_lines"]) + Text(image["band_lines"].Number() == 1 ? " line" : " lines");
    if (image["bands"].Number() <= 1)
        return Text("in one piece, ") + lines;
    return Exact(image["bands"]) + Text(" bands of ") + lines;
}

Markup ImageBars(const Node& report)
{
    Markup bars;
    const Node steps = report["steps"];
    for (std::size_t i = 0; i < steps.Count(); ++i)
        if (steps.Item(i)["images"].Count() > 0)
            bars += StepBars(steps.Item(i), i, report["settings"]["budget_bytes"]);
    return bars;
}
