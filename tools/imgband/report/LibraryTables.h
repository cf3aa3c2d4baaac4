#pragma once
// The library's report tables of one run: filled through its exported reports, read back as text.

#include "MemoryManager/MemoryManager.h"
#include "report/RunPlan.h"

#include <nlohmann/json.hpp>
#include <string>

/// Switches the library's reports on for its life. Reads the tables back through private files, so that
/// nothing appears in the folders where the library writes them by itself. One at a time, used by one thread.
class LibraryTables
{
public:
    /// @param szFolder  where a private file can be made for a moment; without room there the tables are
    /// empty
    explicit LibraryTables(const std::string& szFolder);
    ~LibraryTables();
    LibraryTables(const LibraryTables&) = delete;
    LibraryTables& operator=(const LibraryTables&) = delete;

    /// Tells the thread list that this thread enters or leaves a step.
    void Enter(int nIpNo, const std::string& szWork);
    void Leave(int nIpNo, const std::string& szWork);

    /// Tells the mapping list of a band's first pixel.
    void NoteMapping(const void* pAddress, const std::string& szName);

    /// Tells the memory table of a planned step. The library takes the budget that is left at this moment.
    void NoteStep(const StepPlan& step);

    /// Adds "tables", "threads" and "mappings" to a report.
    void AddTo(nlohmann::ordered_json& report);

private:
    nlohmann::ordered_json Sections(CWorkTableList* pTable) const;

    std::string m_szFolder;
    CWorkTableList m_memory; ///< the library's ms_WorkList
};

/// The library's name of a process identifier, and what it says in English.
std::string ProcessName(int nIpNo);
std::string ProcessEnglish(int nIpNo);

/// The tables of a report as text: every section and key with its English beside it.
std::string TablesText(const nlohmann::ordered_json& report);
