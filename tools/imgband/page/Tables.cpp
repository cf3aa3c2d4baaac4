// The tables of a report.

#include "page/Tables.h"

#include "page/Sections.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <vector>

namespace {

constexpr std::size_t kMostRows = 300;    // of a group; a page is not for reading more
constexpr std::size_t kMostRowsOpen = 60; // longer tables begin closed

using Cell = std::function<Markup(const Node&)>;

/// How a column's cells are set: words stay whole, texts wrap wherever they must.
enum class Set
{
    Number,
    Word,
    Text,
};

struct Column
{
    const char* pszTitle;
    Set eSet;
    Cell fnCell;
};

/// Rows under a heading of their own, unless it is empty.
struct Group
{
    Markup heading;
    std::vector<Node> rows;
};

const char* SetName(Set eSet)
{
    return eSet == Set::Number ? "number" : eSet == Set::Word ? "word" : "text";
}

Cell Member(const char* pszKey)
{
    return [pszKey](const Node& row) { return Exact(row[pszKey]); };
}

Cell IdentifierMember(const char* pszKey)
{
    return [pszKey](const Node& row) { return Identifier(row[pszKey]); };
}

Cell Japanese(const char* pszKey)
{
    return [pszKey](const Node& row) { return Tag("span", {{"lang", "ja"}}, Exact(row[pszKey])); };
}

std::vector<Node> Items(const Node& list)
{
    std::vector<Node> items;
    for (std::size_t i = 0; i < list.Count(); ++i)
        items.push_back(list.Item(i));
    return items;
}

Markup Row(const Node& row, const std::vector<Column>& columns)
{
    Markup cells;
    for (const Column& column : columns)
        cells +=
            Tag("td", {{"data-label", column.pszTitle}, {"class", SetName(column.eSet)}}, column.fnCell(row));
    return Tag("tr", cells);
}

Markup GroupRows(const Group& group, const std::vector<Column>& columns)
{
    const std::string szColumns = fmt::format("{}", columns.size());
    Markup rows;
    if (!group.heading.sz.empty())
        rows += Tag("tr", {{"class", "group"}},
                    Tag("th", {{"colspan", szColumns}, {"scope", "rowgroup"}}, group.heading));
    const std::size_t nShown = std::min(group.rows.size(), kMostRows);
    for (std::size_t i = 0; i < nShown; ++i)
        rows += Row(group.rows[i], columns);
    if (nShown < group.rows.size())
        rows += Tag("tr", Tag("td", {{"colspan", szColumns}, {"class", "more"}},
                              Text(fmt::format("and {} more, which are in the report's .json form",
                                               group.rows.size() - nShown))));
    return Tag("tbody", rows);
}

Markup Table(std::string_view szTitle, const std::vector<Column>& columns, const std::vector<Group>& groups)
{
    std::size_t nRows = 0;
    for (const Group& group : groups)
        nRows += group.rows.size();
    if (nRows == 0)
        return {};
    Markup titles, bodies;
    for (const Column& column : columns)
        titles += Tag("th", {{"scope", "col"}, {"class", SetName(column.eSet)}}, Text(column.pszTitle));
    for (const Group& group : groups)
        bodies += GroupRows(group, columns);
    const Markup inside =
        Tag("summary", Tag("h3", szTitle)) +
        Tag("div", {{"class", "scroll"}}, Tag("table", Tag("thead", Tag("tr", titles)) + bodies));
    return nRows > kMostRowsOpen ? Tag("details", inside) : Tag("details", {{"open", ""}}, inside);
}

Markup StepName(const Node& step)
{
    return Exact(step["step"]);
}

/// "peak_private_bytes" becomes "peak private, bytes".
std::string Words(std::string szKey)
{
    for (const std::string szUnit : {"bytes", "seconds"})
        if (szKey.ends_with("_" + szUnit))
            szKey.replace(szKey.size() - szUnit.size() - 1, 1, ", ");
    std::replace(szKey.begin(), szKey.end(), '_', ' ');
    return szKey;
}

Markup SingleValues(const Node& object)
{
    Markup values;
    if (object.IsKnown() && object.Value()->is_object())
        for (const auto& member : object.Value()->items())
            if (!member.value().is_structured())
                values += Tag("div", Tag("dt", Words(member.key())) + Tag("dd", Exact(object[member.key()])));
    return values;
}

} // namespace

Markup RunTable(const Node& report)
{
    return Tag("h3", "Run and settings") +
           Tag("dl", {{"class", "values"}},
               SingleValues(report) + SingleValues(report["settings"]) + SingleValues(report["traffic"]));
}

Markup StepTable(const Node& report)
{
    return Table("Steps",
                 {{"step", Set::Text, StepName},
                  {"process", Set::Number, IdentifierMember("process_id")},
                  {"name", Set::Text, Japanese("process_name")},
                  {"in English", Set::Text, Member("process_english")},
                  {"begin, s", Set::Number, Member("begin_seconds")},
                  {"time, s", Set::Number, Member("seconds")},
                  {"budget used, bytes", Set::Number, Member("budget_used_bytes")},
                  {"budget free, bytes", Set::Number, Member("budget_free_bytes")},
                  {"peak private, bytes", Set::Number, Member("peak_private_bytes")},
                  {"peak mapped, bytes", Set::Number, Member("peak_mapped_bytes")}},
                 {{{}, Items(report["steps"])}});
}

Markup ImageTable(const Node& report)
{
    std::vector<Group> groups;
    for (const Node& step : Items(report["steps"]))
        groups.push_back({StepName(step), Items(step["images"])});
    return Table(
        "Images",
        {{"image", Set::Text, Member("image")},
         {"role", Set::Word, Member("role")},
         {"place", Set::Text, Member("place")},
         {"state", Set::Word, Member("state")},
         {"size, pixels", Set::Number, [](const Node& image) { return Tag("span", PixelSize(image)); }},
         {"frame, pixels", Set::Number, Member("frame")},
         {"weight, %", Set::Number, Member("ratio")},
         {"image, bytes", Set::Number, Member("bytes")},
         {"band, lines", Set::Number, Member("band_lines")},
         {"bands", Set::Number, Member("bands")},
         {"charged, bytes", Set::Number, Member("charged_bytes")},
         {"temporary file, bytes", Set::Number, Member("temporary_bytes")}},
        groups);
}

Markup ThreadTable(const Node& report)
{
    return Table("Threads",
                 {{"entry", Set::Number, Member("entry")},
                  {"thread", Set::Number, IdentifierMember("thread")},
                  {"event", Set::Word, Member("event")},
                  {"step", Set::Text, Japanese("step")},
                  {"in English", Set::Text, Member("step_english")},
                  {"work", Set::Text, Member("work")}},
                 {{{}, Items(report["threads"])}});
}

Markup MappingTable(const Node& report)
{
    return Table("Mappings",
                 {{"entry", Set::Number, Member("entry")},
                  {"address modulo 16", Set::Number, Member("remainder")},
                  {"band", Set::Text, Member("name")}},
                 {{{}, Items(report["mappings"])}});
}

Markup LibraryTable(const Node& report)
{
    Markup tables;
    for (const auto& [pszKey, pszTitle] :
         {std::pair{"memory", "Memory"}, std::pair{"threads", "Thread entries"},
          std::pair{"mappings", "Mapping entries"}}) {
        std::vector<Group> groups;
        for (const Node& section : Items(report["tables"][pszKey]))
            groups.push_back({Tag("span", {{"lang", "ja"}}, Exact(section["section"])) + Text(" ") +
                                  Exact(section["english"]),
                              Items(section["keys"])});
        tables += Table(pszTitle,
                        {{"key", Set::Text, Japanese("key")},
                         {"in English", Set::Text, Member("english")},
                         {"value", Set::Text, Japanese("value")},
                         {"value in English", Set::Text, Member("value_english")}},
                        groups);
    }
    if (const Node most = report["tables"]["maximum_bytes"]; most.IsKnown())
        tables +=
            Tag("p", {{"class", "after"}}, Text("Maximum memory used: ") + Exact(most) + Text(" bytes"));
    return tables;
}
