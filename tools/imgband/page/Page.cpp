// A report as one page of HTML.

#include "page/Page.h"

#include "page/Sections.h"
#include "page/Style.h"

namespace {

/// A part of the page; nothing when there is nothing to show.
Markup Section(std::string_view szTitle, std::string_view szWords, const Markup& inside)
{
    if (inside.sz.empty())
        return {};
    return Tag("section", Tag("h2", szTitle) + Tag("p", szWords) + inside);
}

Markup Body(const Node& report)
{
    const Palette palette(report);
    return Tag(
        "main",
        Headline(report) +
            Section("The budget over time",
                    "What the images of each step are charged, one on the other, and what is left of "
                    "the budget.",
                    BudgetChart(report, palette)) +
            Section("Private memory over time",
                    "What the whole process has for itself: images in memory, which the budget counts, "
                    "and the program's own data.",
                    MemoryChart(report, "private_bytes", true)) +
            Section("Mapped memory over time",
                    "Pages of files: temporary files in use, and the program's own code. The system "
                    "can take them back at any time, so they may be more than the budget.",
                    MemoryChart(report, "mapped_bytes", false)) +
            Section("The images of each step",
                    "What each is charged, against the whole budget, and the band in reach at some "
                    "moments. Thin bands are drawn thicker and long images shorter than they are.",
                    Steps(report, palette)) +
            Section("Read, written, spilled", "Bytes of pixels, and the temporary files.",
                    TrafficBars(report)) +
            Section("All numbers", "Bytes and seconds to the last digit.", AllNumbers(report)));
}

} // namespace

std::string ReportPage(const nlohmann::ordered_json& report)
{
    using Json = nlohmann::ordered_json;
    // Names of files may hold any bytes; a page holds characters.
    const Json clean = Json::parse(report.dump(-1, ' ', false, Json::error_handler_t::replace));
    const Node root(clean);
    const std::string szTitle = root["command"].String() + " " + root["file"].String() + " – imgband report";
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none';style-src "
           "'unsafe-inline'\">\n" +
           Tag("title", szTitle).sz + "\n<style>" + kPageStyle + "</style>\n</head>\n" +
           Tag("body", Body(root)).sz + "\n</html>\n";
}
