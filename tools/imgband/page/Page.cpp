// A report as one page of HTML.

#include "page/Page.h"

#include "page/Charts.h"
#include "page/Node.h"
#include "page/Sections.h"
#include "page/Style.h"
#include "page/Tables.h"

namespace {

/// A part of the page; nothing when there is nothing to show.
Markup Section(std::string_view szTitle, std::string_view szWords, const Markup& inside)
{
    if (inside.sz.empty())
        return {};
    return Tag("section", Tag("h2", szTitle) + (szWords.empty() ? Markup{} : Tag("p", szWords)) + inside);
}

Markup Body(const Node& report)
{
    return ImagePatterns(report) +
           Tag("main", Headline(report) + KeyFigures(report) +
                           Section("The budget over time",
                                   "What the images of each step are charged, one on the other, and what is "
                                   "left of the budget. Where that changes faster than the drawing can show, "
                                   "it shows the most that was charged.",
                                   BudgetChart(report)) +
                           Section("Memory beside the budget",
                                   "Private memory of the whole process, and views of files, which the "
                                   "system can take back.",
                                   MemoryChart(report)) +
                           Section("The images of each step",
                                   "What each is charged, against the whole budget.", ImageBars(report)) +
                           Section("Read, written, spilled", "", TrafficChart(report)) +
                           Section("The band now and then",
                                   "Images in their proportions, with the lines in reach at some moments. "
                                   "Very long images are drawn shorter, thin bands and frames thicker than "
                                   "they are.",
                                   BandDrawings(report)) +
                           Section("All numbers", "",
                                   RunTable(report) + StepTable(report) + ImageTable(report) +
                                       ThreadTable(report) + MappingTable(report)) +
                           Section("The library's own tables",
                                   "As the library wrote them, with English beside.", LibraryTable(report)));
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
