#pragma once
// Starting the library, and turning its results into failures.

#include "MemoryManager/MemoryManager.h"
#include "library/ErrorLog.h"
#include "values/Failure.h"
#include "values/RunSettings.h"

/// What the library works with.
struct LibraryFacts
{
    LONG nBudget;     ///< bytes
    LONG nOneMapping; ///< most bytes that are mapped as one piece
    LONG nBandCap;    ///< bytes of an output's band in the whole scheme, of a step's bands in the unit scheme
    std::string szTemporaryFolder;
};

/// The library as one run uses it: budget, temporary folder and error log are set, and what earlier runs left
/// in the temporary folder is removed. Throws Failure (NoRoom) when there is no temporary folder.
class Library
{
public:
    /// @param bJson  an interrupted run prints a JSON object too
    Library(const LibrarySettings& settings, bool bJson);

    LibraryFacts Facts(Scheme eScheme) const;

    /// Bytes of the budget that are allotted now.
    LONG Taken() const;

    /// Each throws a Failure unless nCode, a code of the library, is 0. A shortage of memory or addresses
    /// that outlasted the library's waiting is told as one, whatever failed for it: JobFailed.
    /// nTemporaryBytes is the size of the temporary file that may have been the reason; room is what the
    /// output needs and has.
    /// @param bMapped  the external image is reached through views
    void CheckImport(DWORD nCode, const std::string& szInput, std::int64_t nTemporaryBytes,
                     bool bMapped) const;
    void CheckRead(DWORD nCode, const std::string& szInput) const;
    void CheckStep(DWORD nCode, const std::string& szStep, std::int64_t nTemporaryBytes) const;
    void CheckExport(DWORD nCode, const std::string& szOutput, Room room) const;

    /// Throws Failure (WrongCommandLine) when a step would take more than the budget.
    /// @param nBytes  of all that it holds at a time
    void CheckBudget(const std::string& szStep, std::int64_t nBytes,
                     const char* pszTry = "a larger --budget") const;

    /// Whether the library recorded a failure in this run. It does not return all that it records.
    bool HasRecordedError() const { return m_log.LastError().has_value(); }

private:
    void RemoveLeftovers() const;
    bool IsShortOfMemory(DWORD nCode) const;
    [[noreturn]] void Fail(Failure failure, DWORD nCode) const;
    [[noreturn]] void FailForMemory(DWORD nCode, const std::string& szInput) const;
    [[noreturn]] void FailTemporary(DWORD nCode, std::int64_t nTemporaryBytes) const;

    std::string m_szTemporaryFolder;
    ErrorLog m_log;
    LONG m_nBudget;
};

/// Sizes the library's budget, mappings and bands. Nothing may be allotted yet.
void SizeBudget(const LibrarySettings& settings);

/// Raises the cap of a step's bands in the unit scheme to nBytes, or to the free budget if that is less. A
/// higher cap stays.
void RaiseUnitBandCap(std::int64_t nBytes);

/// Removes what an interrupted run left in the temporary folder and its error log's folder.
void CleanUpInterruptedRun(const std::string& szLogFolder);

/// The first argument of the program when an interrupted run starts it to clean up. Status, log folder and
/// --json follow; where bytes of the input were gone, also the input's path and its picture's end.
inline constexpr const char* kInterruptedCommand = "--interrupted-run";
