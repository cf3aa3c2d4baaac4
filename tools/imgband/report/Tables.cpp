// Taking the library's reports apart, and telling them.

#include "report/Tables.h"

#include "library/Glossary.h"

#include <algorithm>
#include <fmt/format.h>
#include <sstream>

using glossary::English;
using nlohmann::ordered_json;

namespace {

ordered_json SectionJson(const std::string& szHeading)
{
    const std::string szName = szHeading.substr(1, szHeading.rfind(']') - 1);
    return {{"section", szName}, {"english", English(szName)}, {"keys", ordered_json::array()}};
}

ordered_json KeyJson(const std::string& szLine)
{
    static constexpr std::string_view kBetween = "\t=\t";
    const std::size_t nBetween = std::min(szLine.find(kBetween), szLine.size());
    const std::string szKey = szLine.substr(0, nBetween);
    const std::string szValue = szLine.substr(std::min(nBetween + kBetween.size(), szLine.size()));
    return {
        {"key", szKey}, {"english", English(szKey)}, {"value", szValue}, {"value_english", English(szValue)}};
}

/// The sections of a table's text: a heading, a line for each key, and an empty line.
ordered_json SectionsOf(const std::string& szText)
{
    ordered_json sections = ordered_json::array();
    bool bInside = false;
    std::istringstream lines(szText);
    for (std::string szLine; std::getline(lines, szLine);) {
        if (szLine.ends_with('\r'))
            szLine.pop_back();
        if (bInside && !szLine.empty())
            sections.back()["keys"].push_back(KeyJson(szLine));
        else if (!bInside)
            sections.push_back(SectionJson(szLine));
        bInside = !szLine.empty();
    }
    return sections;
}

/// Every key that was made from the pattern becomes an entry: fnEntry makes it from what was filled into the
/// pattern and from the key's value.
template <class Entry>
ordered_json Entries(const ordered_json& sections, const std::string& szPattern, Entry fnEntry)
{
    ordered_json entries = ordered_json::array();
    for (const ordered_json& section : sections)
        for (const ordered_json& key : section["keys"])
            if (const auto values = glossary::FilledIn(szPattern, key["key"]))
                entries.push_back(fnEntry(*values, key["value"].get<std::string>()));
    return entries;
}

ordered_json ThreadEntry(const std::vector<std::string>& values, const std::string& szEvent)
{
    return {{"entry", std::stoi(values.at(0))},
            {"thread", std::stoi(values.at(1))},
            {"step", values.at(2)},
            {"step_english", English(values.at(2))},
            {"work", values.at(3)},
            {"event", szEvent}};
}

ordered_json MappingEntry(const std::vector<std::string>& values, const std::string& szRemainder)
{
    return {
        {"entry", std::stoi(values.at(0))}, {"name", values.at(1)}, {"remainder", std::stoi(szRemainder)}};
}

std::string KeyText(const std::string& szKey, const std::string& szEnglish, const std::string& szValue,
                    const std::string& szValueEnglish)
{
    return szKey + "\t=\t" + szValue + "\t" + szEnglish + " = " + szValueEnglish + "\n";
}

/// The single values of an object, a line each.
std::string ValuesText(const ordered_json& object)
{
    std::string szText;
    for (const auto& [szKey, value] : object.items())
        if (value.is_primitive())
            szText += fmt::format("{}\t=\t{}\n", szKey,
                                  value.is_string() ? value.get<std::string>() : value.dump());
    return szText;
}

} // namespace

void AddTables(LibraryReports& reports, ordered_json& report)
{
    const ordered_json threads = SectionsOf(reports.ThreadList());
    const ordered_json mappings = SectionsOf(reports.MappingList());
    report["threads"] = Entries(threads, glossary::kTextThreadKey, ThreadEntry);
    report["mappings"] = Entries(mappings, glossary::kTextMapKey, MappingEntry);
    report["tables"] = {
        {"memory", SectionsOf(reports.MemoryTable())}, {"threads", threads}, {"mappings", mappings}};
    if (const auto nMaximum = reports.MaximumBytes())
        report["tables"]["maximum_bytes"] = *nMaximum;
}

std::string TablesText(const ordered_json& report)
{
    const ordered_json& tables = report.at("tables");
    std::string szText;
    for (const char* pszTable : {"memory", "threads", "mappings"})
        for (const ordered_json& section : tables[pszTable]) {
            szText += fmt::format("[{}]\t{}\n", section["section"].get<std::string>(),
                                  section["english"].get<std::string>());
            for (const ordered_json& key : section["keys"])
                szText += KeyText(key["key"], key["english"], key["value"], key["value_english"]);
            szText += "\n";
        }
    if (tables.contains("maximum_bytes")) {
        const std::string szMaximum = std::to_string(tables["maximum_bytes"].get<int>());
        szText += KeyText(glossary::kTextMaximum, English(glossary::kTextMaximum), szMaximum, szMaximum);
    }
    if (szText.empty())
        szText = ValuesText(report) + ValuesText(report.value("error", ordered_json::object()));
    return szText;
}
