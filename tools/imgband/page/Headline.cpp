// The head of a report's page.

#include "page/Scale.h"
#include "page/Sections.h"

#include <fmt/format.h>

namespace {

Markup Fact(std::string_view szName, const Markup& value)
{
    return value.sz.empty() ? Markup{} : Tag("div", Tag("dt", szName) + Tag("dd", value));
}

bool IsOverBudget(const Node& report)
{
    const Node budget = report["settings"]["budget_bytes"];
    return budget.IsNumber() && report["peak_budget_bytes"].Number() > budget.Number();
}

Markup Badge(const Node& report)
{
    if (!report["ok"].IsTrue())
        return Tag("p", {{"class", "badge alarm"}},
                   Text("✗ failed, exit status ") + Exact(report["exit_status"]));
    if (IsOverBudget(report))
        return Tag("p", {{"class", "badge alarm"}}, Text("✗ above its budget"));
    return Tag("p", {{"class", "badge good"}},
               Text(report["plan"].IsTrue() ? "✓ planned, nothing done" : "✓ done"));
}

Markup Facts(const Node& report)
{
    Markup picture = Exact(report["file"]);
    if (report["width"].IsKnown())
        picture += Text(", ") + Exact(report["width"]) + Text(" × ") + Exact(report["height"]) +
                   Text(" pixels, ") + Exact(report["format"]) + Text(", ") + Bytes(report["file_bytes"]);
    return Tag("dl", {{"class", "facts"}},
               Fact(report["command"].String() == "info" ? "Picture" : "Output", picture) +
                   Fact("Scheme", Exact(report["scheme"])) +
                   Fact("Threads", Exact(report["settings"]["threads"])) +
                   Fact("Time", Seconds(report["seconds"])));
}

Markup Error(const Node& error)
{
    Markup details;
    for (const Node& member : error.Items())
        if (member.Name() != "message")
            details += Fact(Words(member.Name()), Exact(member));
    return error.IsKnown() ? Tag("section", {{"class", "error"}},
                                 Tag("h2", "Error") + Tag("p", Exact(error["message"])) +
                                     Tag("dl", {{"class", "facts"}}, details))
                           : Markup{};
}

Markup Figures(const Node& report)
{
    const Node budget = report["settings"]["budget_bytes"], peak = report["peak_budget_bytes"];
    Markup used = IsOverBudget(report) ? Tag("span", {{"class", "alarm"}}, Bytes(peak)) : Bytes(peak);
    if (peak.IsNumber() && budget.Number() > 0)
        used += Text(" ") + Tag("small", ShareText(peak.Number(), budget.Number()));
    return Tag("dl", {{"class", "figures"}},
               Fact("Budget", Bytes(budget)) + Fact("Peak of the budget", used) +
                   Fact("Peak private memory", Bytes(report["peak_private_bytes"])) +
                   Fact("Peak mapped memory", Bytes(report["peak_mapped_bytes"])) +
                   Fact("Temporary files, at most", Bytes(report["temporary_bytes"])));
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
                             Tag("h1", title) + Badge(report) + Facts(report) + Error(report["error"]) +
                             Figures(report));
}
