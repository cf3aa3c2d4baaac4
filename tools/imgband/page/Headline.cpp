// The head of a report's page.

#include "page/Scale.h"
#include "page/Sections.h"

#include <fmt/format.h>

namespace {

Markup Fact(std::string_view szName, const Markup& value)
{
    return value.sz.empty() ? Markup{} : Tag("div", Tag("dt", szName) + Tag("dd", value));
}

/// The first image of a role that the steps work on, from the run's beginning or its end.
Node ImageOf(const Node& report, std::string_view szRole, bool bFromEnd)
{
    const Node steps = report["steps"];
    for (std::size_t i = 0; i < steps.Count(); ++i) {
        const Node images = steps.Item(bFromEnd ? steps.Count() - 1 - i : i)["images"];
        for (std::size_t k = 0; k < images.Count(); ++k)
            if (images.Item(k)["role"].String() == szRole)
                return images.Item(k);
    }
    return steps.Item(steps.Count());
}

Markup PictureText(const Node& name, const Node& picture, const Node& bytes)
{
    Markup words = Exact(name);
    if (picture["width"].IsKnown())
        words += Text(", ") + PixelSize(picture) + Text(" pixels");
    if (bytes.IsKnown())
        words += Text(", ") + Exact(bytes) + Text(" bytes");
    return words;
}

Markup Facts(const Node& report)
{
    const Node input = ImageOf(report, "input", false), output = ImageOf(report, "output", true);
    Markup facts = Fact("Input", PictureText(input["image"], input, input["bytes"]));
    if (report["file"].IsKnown()) {
        Markup picture = PictureText(report["file"], report, report["file_bytes"]);
        if (report["format"].IsKnown())
            picture += Text(", ") + Exact(report["format"]);
        facts += Fact(report["command"].String() == "info" ? "Picture" : "Output", picture);
    } else {
        facts += Fact("Output", PictureText(output["image"], output, output["bytes"]));
    }
    facts += Fact("Scheme", Exact(report["scheme"]));
    facts += Fact("Threads", Exact(report["settings"]["threads"]));
    facts += Fact("Time", Seconds(report["seconds"]));
    return Tag("dl", {{"class", "facts"}}, facts);
}

Markup Badge(const Node& report)
{
    if (!report["ok"].IsTrue())
        return Tag("p", {{"class", "badge failed"}},
                   Text("✗ failed, exit status ") + Exact(report["exit_status"]));
    return Tag("p", {{"class", "badge"}},
               Text(report["plan"].IsTrue() ? "✓ planned, nothing done" : "✓ done"));
}

Markup Error(const Node& error)
{
    if (!error.IsKnown())
        return {};
    Markup details;
    for (const auto& member : error.Value()->items())
        if (member.key() != "message")
            details += Fact(member.key() == "wanted_bytes"      ? "wanted, bytes"
                            : member.key() == "available_bytes" ? "available, bytes"
                            : member.key() == "library_code"    ? "library code"
                            : member.key() == "library_meaning" ? "which means"
                            : member.key() == "system_error"    ? "system error"
                                                                : member.key(),
                            Exact(error[member.key()]));
    return Tag("section", {{"class", "error"}},
               Tag("h2", "Error") + Tag("p", Exact(error["message"])) +
                   Tag("dl", {{"class", "facts"}}, details));
}

Markup Figure(std::string_view szName, const Node& bytes, const Node& budget)
{
    if (!bytes.IsNumber())
        return {};
    Markup figure = Tag("dt", szName) + Tag("dd", {{"class", "large"}}, Bytes(bytes)) +
                    Tag("dd", Exact(bytes) + Text(" bytes"));
    if (budget.Number() > 0)
        figure += Tag("dd", fmt::format("{:.1f} % of the budget", 100 * bytes.Number() / budget.Number()));
    return Tag("div", figure);
}

} // namespace

Markup Headline(const Node& report)
{
    Markup title = Exact(report["command"].IsKnown() ? report["command"] : report["program"]);
    if (report["file"].IsKnown())
        title += Text(" ") + Exact(report["file"]);
    return Tag("header", Tag("p", {{"class", "program"}},
                             Exact(report["program"]) + Text(" ") + Exact(report["version"]) +
                                 Text(" · where the memory went")) +
                             Tag("h1", title) + Badge(report) + Facts(report) + Error(report["error"]));
}

Markup KeyFigures(const Node& report)
{
    const Node budget = report["settings"]["budget_bytes"], nothing = report["error"]["none"];
    const Markup figures = Figure("Budget", budget, nothing) +
                           Figure("Peak of the budget", report["peak_budget_bytes"], budget) +
                           Figure("Peak private memory", report["peak_private_bytes"], nothing) +
                           Figure("Peak mapped memory", report["peak_mapped_bytes"], nothing) +
                           Figure("Temporary files, at most", report["temporary_bytes"], nothing);
    return figures.sz.empty() ? Markup{} : Tag("dl", {{"class", "figures"}}, figures);
}
