// All values of a report.

#include "page/Scale.h"
#include "page/Sections.h"

#include <algorithm>
#include <set>

namespace {

constexpr std::size_t kMostColumns = 7; // of a table; records with more stand below each other

/// A value in an element szTag. The library writes Japanese; beside it stands the same in English.
Markup Cell(std::string_view szTag, const Node& item, const std::string& szKey)
{
    const bool bJapanese =
        !szKey.ends_with("english") &&
        (item["english"].IsKnown() || item[szKey + "_english"].IsKnown() || szKey == "process_name");
    return Tag(szTag, {{"data-label", Words(szKey)}, {"lang", bJapanese ? "ja" : "en"}}, Exact(item[szKey]));
}

/// The single values of an object.
Markup Values(const Node& object)
{
    Markup values;
    for (const Node& member : object.Items())
        if (!member.IsStructured())
            values += Tag("div", Tag("dt", Words(member.Name())) + Cell("dd", object, member.Name()));
    return values.sz.empty() ? values : Tag("dl", {{"class", "values"}}, values);
}

Markup Table(const std::vector<Node>& items, const std::vector<std::string>& keys)
{
    Markup titles, rows;
    for (const std::string& szKey : keys)
        titles += Tag("th", Words(szKey));
    for (const Node& item : items) {
        Markup cells;
        for (const std::string& szKey : keys)
            cells += Cell("td", item, szKey);
        rows += Tag("tr", cells);
    }
    return Tag("table", Tag("thead", Tag("tr", titles)) + Tag("tbody", rows));
}

/// All of an object or a list: small records as a table, others below each other.
Markup Everything(const Node& node)
{
    const std::vector<Node> items = node.Items();
    if (node.IsObject()) {
        Markup all = Values(node);
        for (const Node& member : items)
            if (!member.Items().empty())
                all += Tag("h4", Words(member.Name())) + Everything(member);
        return all;
    }
    std::vector<std::string> keys;
    bool bNested = false;
    for (const Node& item : items)
        for (const Node& member : item.Items()) {
            bNested = bNested || member.IsStructured();
            if (std::find(keys.begin(), keys.end(), member.Name()) == keys.end())
                keys.push_back(member.Name());
        }
    if (!bNested && keys.size() <= kMostColumns)
        return keys.empty() ? Markup{} : Table(items, keys);
    Markup all;
    for (const Node& item : items)
        all += Tag("div", {{"class", "record"}}, Everything(item));
    return all;
}

Markup Folded(std::string_view szTitle, const Markup& inside)
{
    return inside.sz.empty() ? inside : Tag("details", Tag("summary", szTitle) + inside);
}

} // namespace

Markup AllNumbers(const Node& report)
{
    static const std::set<std::string> kElsewhere{"error", "budget_over_time", "memory_over_time", "bands"};
    Markup all = Folded("run", Values(report));
    for (const Node& member : report.Items())
        if (member.IsStructured() && !kElsewhere.contains(member.Name()))
            all += Folded(member.Name() == "tables" ? "the library's own tables" : Words(member.Name()),
                          Everything(member));
    return all;
}
