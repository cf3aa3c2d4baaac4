#pragma once
// The library's own reports of a run: filled through its exported functions, read back as text.

#include "MemoryManager/MemoryManager.h"
#include "library/StepPlan.h"

#include <optional>
#include <string>

/// The library's reports are on as long as this object lives. It reads them back through private files, so
/// that nothing appears in the folders where the library would write them. One at a time, used by one thread.
class LibraryReports
{
public:
    /// @param szFolder  takes a private file for a moment; the reports are empty when it has no room
    explicit LibraryReports(const std::string& szFolder);
    ~LibraryReports();
    LibraryReports(const LibraryReports&) = delete;
    LibraryReports& operator=(const LibraryReports&) = delete;

    /// Enters into the thread list that this thread begins or ends a step.
    /// @param nIpNo  process identifier, see ProcessIds.h
    void Enter(int nIpNo, const std::string& szWork);
    void Leave(int nIpNo, const std::string& szWork);

    /// Enters the address of a band's first pixel into the mapping list.
    void NoteMapping(const void* pAddress, const std::string& szName);

    /// Enters a planned step into the memory table, with the budget that its plan leaves.
    /// @param nBudget  the run's, in bytes
    void NoteStep(const StepPlan& step, LONG nBudget);

    /// The reports as the library writes them, but in UTF-8; empty when nothing was entered.
    std::string MemoryTable();
    std::string ThreadList();
    std::string MappingList();

    /// Most bytes that a step of the memory table took; none when it has no step.
    std::optional<int> MaximumBytes();

private:
    std::string Text(CWorkTableList* pTable) const;

    std::string m_szFolder;
    CWorkTableList m_memory; ///< the library's ms_WorkList
};
