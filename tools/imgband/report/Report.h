#pragma once
// What a run tells: text on standard error, data or one JSON object on standard output, and its reports.

#include "report/Document.h"
#include "report/LibraryTables.h"
#include "report/MemoryWatch.h"
#include "report/Progress.h"
#include "report/RunHistory.h"
#include "report/RunPlan.h"
#include "values/Failure.h"
#include "values/ReportSettings.h"

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

/// Collects a run's results. Steps are told as they end, the rest by PrintSuccess or PrintFailure.
class Report
{
public:
    /// @param settings   used as long as the report lives
    /// @param szCommand  empty when the command line told none
    /// @param bPlan      steps are planned only
    Report(const ReportSettings& settings, const std::string& szCommand, bool bPlan);

    const ReportSettings& Settings() const { return m_settings; }

    /// Tells the settings that the library works with.
    void TellSettings(std::int64_t nBudget, std::int64_t nOneMapping, std::int64_t nBandCap,
                      const std::string& szTemporaryFolder, int nThreads);

    /// Tells how pictures go through the library.
    void TellScheme(const std::string& szScheme) { m_plan.SetScheme(szScheme); }

    /// Marks the beginning of a step.
    /// @param nIpNo  its process identifier
    void BeginStep(const std::string& szStep, int nIpNo);

    /// Tells how the step's images are planned; again when more of them has shown.
    void PlanStep(const StepPlan& step) { m_step->plan = step; }

    /// Tells the bands that the step will take, and the bytes that come out of all of them; then each one
    /// that is done.
    void ExpectBands(int nBands, std::int64_t nBytes);
    void BandDone();

    /// A band of the planned step's image of this number is mapped.
    void NoteBand(int nImage, const T_ImageLrg_tag& band);

    /// What else happens in the course of the step.
    RunHistory& History() { return m_history; }

    /// Ends the step: its time and peak memory go with its plan.
    void EndStep();

    /// Results of the command for the JSON object.
    nlohmann::ordered_json& Json() { return m_json; }

    /// Data for standard output, in place of JSON.
    void SetData(const std::string& szText) { m_szData = szText; }

    /// One line about what was done, for standard error.
    void SetSummary(const std::string& szText) { m_szSummary = szText; }

    void PrintSuccess();
    void PrintFailure(const Failure& failure);

    /// Tells something on standard error, clear of the progress line.
    void Say(const std::string& szText);

    /// Writes the reports that are wanted, after one of both. One that cannot be written is a line on
    /// standard error.
    void WriteFiles();

private:
    nlohmann::ordered_json Document(const Failure* pFailure) const;
    void CloseStep(bool bFinished);
    void TellStep(const StepRecord& step);
    void TellTotal();
    void TellTables(const StepPlan& plan);
    void WarnAboutBudget(const StepPlan& step);

    const ReportSettings& m_settings;
    std::string m_szCommand;
    bool m_bPlan;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::unique_ptr<MemoryWatch> m_pWatch;    ///< only where its figures are told
    std::unique_ptr<LibraryTables> m_pTables; ///< only for reports
    RunHistory m_history;
    nlohmann::ordered_json m_json = nlohmann::ordered_json::object();
    nlohmann::ordered_json m_librarySettings;
    LONG m_nBudget = 0;
    std::optional<StepRecord> m_step; ///< the one that runs
    nlohmann::ordered_json m_steps = nlohmann::ordered_json::array();
    os::ResidentMemory m_peak; ///< of all steps
    nlohmann::ordered_json m_document;
    RunPlan m_plan;
    Progress m_progress;
    std::string m_szData;
    std::string m_szSummary;
};

/// The object that a run prints which a signal ended.
void PrintInterrupted(int nStatus, bool bJson);
