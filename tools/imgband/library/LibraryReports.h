#pragma once
// The library's own reports of a run: filled through its exported functions, read back as text.

#include "MemoryManager/MemoryManager.h"
#include "library/StepPlan.h"

#include <optional>
#include <string>

/// Switches the library's reports on for its life. Reads them back through private files, so that nothing
/// appears in the folders where the library writes them by itself. One at a time, used by one thread.
class LibraryReports
{
public:
    /// @param szFolder  where a private file can be made for a moment; without room there the reports are
    ///                  empty
    explicit LibraryReports(const std::string& szFolder);
    ~LibraryReports();
    LibraryReports(const LibraryReports&) = delete;
    LibraryReports& operator=(const LibraryReports&) = delete;

    /// Tells the thread list that this thread enters or leaves a step.
    /// @param nIpNo  process identifier, see ProcessIds.h
    void Enter(int nIpNo, const std::string& szWork);
    void Leave(int nIpNo, const std::string& szWork);

    /// Tells the mapping list of a band's first pixel.
    void NoteMapping(const void* pAddress, const std::string& szName);

    /// Tells the memory table of a planned step, with the budget that its plan leaves.
    /// @param nBudget  of the run, in bytes
    void NoteStep(const StepPlan& step, LONG nBudget);

    /// The reports as the library writes them, in UTF-8; empty when there is none.
    std::string MemoryTable();
    std::string ThreadList();
    std::string MappingList();

    /// Bytes of the fullest step of the memory table; none when it was told of none.
    std::optional<int> MaximumBytes();

private:
    std::string Text(CWorkTableList* pTable) const;

    std::string m_szFolder;
    CWorkTableList m_memory; ///< the library's ms_WorkList
};
