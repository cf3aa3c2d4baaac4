// Filling the library's tables, and taking them apart again.

#include "report/LibraryTables.h"

#include "report/Glossary.h"
#include "system/Folders.h"
#include "system/Paths.h"
#include "system/Process.h"
#include "system/Text.h"

#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

namespace fs = std::filesystem;
using glossary::English;
using nlohmann::ordered_json;

namespace {

/// An object that only looks like one of the step's images: it has neither bytes nor a share of the budget.
class StandIn final : public CImageObj
{
public:
    explicit StandIn(const ImagePlan& plan)
    {
        m_ImgInfo = plan.info;
        m_ImgInfo.nBandLines = plan.nBandLines;
        m_nAreaSize = static_cast<LONG>(plan.nCharged);
        m_pImageCtrl = &m_store;
        if (plan.bFile)
            m_store.SetFileHandle(this); // whatever is not "none": it is never used
    }
    // Nothing is there for the base class to give back.
    ~StandIn()
    {
        m_nAreaSize = 0;
        m_pImageCtrl = nullptr;
    }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

private:
    CImageCtrl m_store;
};

/// The step's images of one role, for the library to look at.
class StandIns
{
public:
    StandIns(const StepPlan& step, ImageRole eRole)
    {
        for (const ImagePlan& plan : step.images)
            if (plan.eRole == eRole)
                m_pointers.push_back(m_images.emplace_back(std::make_unique<StandIn>(plan)).get());
    }
    CImageObj** Pointers() { return m_pointers.data(); }
    int Count() const { return static_cast<int>(m_pointers.size()); }

private:
    std::vector<std::unique_ptr<StandIn>> m_images;
    std::vector<CImageObj*> m_pointers;
};

/// What the library writes a table as; empty when that was not possible.
std::string Flushed(CWorkTableList& table, const std::string& szFolder)
{
    // Named like what other runs clear away when this one is killed right now.
    const std::string szName = os::UnusedName(fmt::format("/imgband-{}-", os::ProcessNumber()));
    const auto szPlace = os::LibraryFolder(szFolder);
    const bool bWritten = szPlace && table.FlushData((*szPlace + szName).c_str()) == 1;
    const fs::path path = os::PathOf(szFolder + szName);
    std::ifstream file(path, std::ios::binary);
    const std::string szBytes(std::istreambuf_iterator<char>(file), {});
    file.close(); // on Windows only a closed file can be removed
    std::error_code ignored;
    fs::remove(path, ignored);
    return bWritten ? os::Utf8FromCp932(szBytes) : "";
}

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

ordered_json ThreadEntries(const ordered_json& sections)
{
    ordered_json entries = ordered_json::array();
    for (const ordered_json& section : sections)
        for (const ordered_json& key : section["keys"])
            if (const auto values = glossary::FilledIn(glossary::kTextThreadKey, key["key"]))
                entries.push_back({{"entry", std::stoi(values->at(0))},
                                   {"thread", std::stoi(values->at(1))},
                                   {"step", values->at(2)},
                                   {"step_english", English(values->at(2))},
                                   {"work", values->at(3)},
                                   {"event", key["value"]}});
    return entries;
}

ordered_json MappingEntries(const ordered_json& sections)
{
    ordered_json entries = ordered_json::array();
    for (const ordered_json& section : sections)
        for (const ordered_json& key : section["keys"])
            if (const auto values = glossary::FilledIn(glossary::kTextMapKey, key["key"]))
                entries.push_back({{"entry", std::stoi(values->at(0))},
                                   {"name", values->at(1)},
                                   {"remainder", std::stoi(key["value"].get<std::string>())}});
    return entries;
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

LibraryTables::LibraryTables(const std::string& szFolder) : m_szFolder(szFolder)
{
    CImageObj::ms_WorkList = &m_memory;
    CImageObj::DbgCImgLogInit();
}

// Lists without sections make no files when the library writes them.
LibraryTables::~LibraryTables()
{
    CImageObj::ms_WorkList = nullptr;
    for (CWorkTableList* pList : {CImageObj::ms_ThreadList, CImageObj::ms_MapList})
        if (pList)
            pList->Destroy();
    CImageObj::DbgCImgLogEnd();
}

void LibraryTables::Enter(int nIpNo, const std::string& szWork)
{
    CImageObj::ThreadList(nIpNo, 0, os::Cp932FromUtf8(szWork).c_str());
}

void LibraryTables::Leave(int nIpNo, const std::string& szWork)
{
    CImageObj::ThreadList(nIpNo, 1, os::Cp932FromUtf8(szWork).c_str());
}

void LibraryTables::NoteMapping(const void* pAddress, const std::string& szName)
{
    CImageObj::MapList(const_cast<void*>(pAddress), os::Cp932FromUtf8(szName).c_str());
}

void LibraryTables::NoteStep(const StepPlan& step)
{
    StandIns in(step, ImageRole::Input), out(step, ImageRole::Output), tmp(step, ImageRole::Temporary);
    tag_MemAlloc request;
    request.nInCnt = in.Count();
    request.nOutCnt = out.Count();
    request.nTmpCnt = tmp.Count();
    request.nIpNo = step.nIpNo;
    CImageObj::UseMemoryListImg(&request, in.Pointers(), out.Pointers(), tmp.Pointers());
}

void LibraryTables::AddTo(ordered_json& report)
{
    const ordered_json threads = Sections(CImageObj::ms_ThreadList);
    const ordered_json mappings = Sections(CImageObj::ms_MapList);
    report["threads"] = ThreadEntries(threads);
    report["mappings"] = MappingEntries(mappings);
    report["tables"] = {{"memory", Sections(&m_memory)}, {"threads", threads}, {"mappings", mappings}};
    const std::string szMaximum = os::Cp932FromUtf8(glossary::kTextMaximum);
    if (const int nMaximum = m_memory.KeyReadInt(szMaximum.c_str(), szMaximum.c_str(), -1); nMaximum >= 0)
        report["tables"]["maximum_bytes"] = nMaximum;
}

ordered_json LibraryTables::Sections(CWorkTableList* pTable) const
{
    return SectionsOf(pTable ? Flushed(*pTable, m_szFolder) : "");
}

std::string ProcessName(int nIpNo)
{
    return os::Utf8FromCp932(CImageObj::GetIpName(nIpNo));
}

std::string ProcessEnglish(int nIpNo)
{
    return English(ProcessName(nIpNo));
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
    if (szText.empty()) // the run used no images, or failed before
        szText = ValuesText(report) + ValuesText(report.value("error", ordered_json::object()));
    return szText;
}
