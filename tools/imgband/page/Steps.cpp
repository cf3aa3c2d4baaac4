// The images of each step, and what went in and out.

#include "page/Scale.h"
#include "page/Sections.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr double kMostAspect = 4; // longer images are drawn shorter

/// A row with a bar for a part of a whole. A part that is larger than the whole reaches past its end.
/// @param fMost  of all rows beside each other
Markup Row(const Markup& name, const Node& amount, double fWhole, double fMost, const std::string& szLook,
           const Markup& words)
{
    const std::string szLength = "width:" + Percent(amount.Number(), fWhole);
    return Tag("li", Tag("p", name) +
                         Tag("div", {{"class", "meter"}, {"style", "width:" + Percent(fWhole, fMost)}},
                             Tag("i", {{"class", szLook}, {"style", szLength}})) +
                         Tag("p", {{"class", "amount"}}, Tag("strong", Bytes(amount)) + words));
}

Markup HeldWords(const Node& image)
{
    const bool bOne = image["band_lines"].Number() == 1;
    Markup words = Exact(image["width"]) + Text(" × ") + Exact(image["height"]) + Text(" pixels in ") +
                   Exact(image["place"]);
    if (image["place"].String().find(image["state"].String()) == std::string::npos)
        words += Text(", ") + Exact(image["state"]);
    words += Text(": ");
    words +=
        image["bands"].Number() > 1 ? Exact(image["bands"]) + Text(" bands of ") : Text("in one piece, ");
    words += Exact(image["band_lines"]) + Text(bOne ? " line" : " lines");
    if (image["frame"].Number() > 0)
        words += Text(", frame of ") + Exact(image["frame"]);
    return Tag("p", {{"class", "words"}}, words);
}

/// The image in its proportions and the band in it.
Markup Moment(const Node& image, const Node& band, const std::string& szLook)
{
    const double fLines = std::max(1.0, image["height"].Number()), fTop = band["top"].Number();
    const double fAspect = std::clamp(image["width"].Number() / fLines, 1 / kMostAspect, kMostAspect);
    const std::string szPlace = fmt::format("top:min({},100% - 3px);height:{}", Percent(fTop, fLines),
                                            Percent(band["bottom"].Number() - fTop + 1, fLines));
    Markup words;
    if (band["seconds"].IsKnown())
        words += Tag("strong", Seconds(band["seconds"]));
    return Tag("figure",
               Tag("div", {{"class", "image"}, {"style", fmt::format("aspect-ratio:{:.3f}", fAspect)}},
                   Tag("i", {{"class", szLook + (band["frame"].Number() > 0 ? " framed" : "")},
                             {"style", szPlace}})) +
                   Tag("figcaption",
                       words + Text("lines ") + Exact(band["top"]) + Text(" – ") + Exact(band["bottom"])));
}

Markup StepWords(const Node& step)
{
    Markup words = Bytes(step["budget_used_bytes"]) + Text(" of the budget in use");
    if (const Node free = step["budget_free_bytes"]; free.IsKnown() && free.Number() >= 0)
        words += Text(", ") + Bytes(free) + Text(" free");
    if (step["seconds"].IsKnown())
        words += Text("; ") + Seconds(step["seconds"]);
    if (step["peak_private_bytes"].IsKnown())
        words += Text(", peak private memory ") + Bytes(step["peak_private_bytes"]);
    if (step["peak_mapped_bytes"].IsKnown())
        words += Text(", mapped ") + Bytes(step["peak_mapped_bytes"]);
    return Tag("p", words);
}

Markup Step(const Node& step, std::size_t nStep, const Node& report, const Palette& palette)
{
    const std::vector<Node> images = step["images"].Items();
    const double fBudget = std::max(1.0, report["settings"]["budget_bytes"].Number());
    double fMost = fBudget;
    for (const Node& image : images)
        fMost = std::max(fMost, image["charged_bytes"].Number());
    Markup rows;
    for (std::size_t i = 0; i < images.size(); ++i) {
        const Node &image = images[i], charged = image["charged_bytes"];
        const std::string szLook = palette.Look(image["image"].String());
        rows += Row(Tag("strong", Exact(image["image"])) + Text(" ") + Tag("small", Exact(image["role"])),
                    charged, fBudget, fMost, szLook, Text(", " + ShareText(charged.Number(), fBudget)));
        Markup moments;
        for (const Node& band : report["bands"].Items())
            if (band["step"].Number() == static_cast<double>(nStep) &&
                band["image"].Number() == static_cast<double>(i))
                moments += Moment(image, band, szLook);
        rows +=
            Tag("li", {{"class", "held"}}, HeldWords(image) + Tag("div", {{"class", "moments"}}, moments));
    }
    return Tag("h3", Text(fmt::format("{}. ", nStep + 1)) + Exact(step["step"])) + StepWords(step) +
           Tag("ul", {{"class", "bars"}}, rows);
}

} // namespace

Markup Steps(const Node& report, const Palette& palette)
{
    Markup parts;
    const std::vector<Node> steps = report["steps"].Items();
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (!steps[i]["images"].Items().empty())
            parts += Step(steps[i], i, report, palette);
    return parts;
}

Markup TrafficBars(const Node& report)
{
    Markup rows;
    const Node traffic = report["traffic"];
    double fMost = 0;
    for (const Node& bytes : traffic.Items())
        fMost = std::max(fMost, bytes.Number());
    for (const auto& [pszKey, pszName] :
         {std::pair{"read_bytes", "read from the input"}, std::pair{"written_bytes", "written to the output"},
          std::pair{"spilled_bytes", "spilled into temporary files"}})
        rows += Row(Text(pszName), traffic[pszKey], fMost, fMost, "memory", {});
    return fMost > 0 ? Tag("ul", {{"class", "bars"}}, rows) : Markup{};
}
