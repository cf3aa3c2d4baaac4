#pragma once
// What a run tells: text on standard error, data or one JSON object on standard output, and its reports.

#include "library/Library.h"
#include "library/LibraryReports.h"
#include "report/MemoryWatch.h"
#include "report/Progress.h"
#include "report/StepRecord.h"
#include "values/Failure.h"
#include "values/Picture.h"
#include "values/ReportSettings.h"

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

class Report;

/// The way by which steps come to a report. A report that has one knows what the library works with.
class Steps
{
    friend class Report;
    friend class Step;
    explicit Steps(Report& report) : m_report(report) {}

    Report& m_report;
};

/// Collects what a run does, and tells it once: by Succeed or by Fail. Used by one thread.
class Report
{
public:
    /// @param settings   outlives the report
    /// @param szCommand  empty when the command line named none
    /// @param bPlan      steps are planned only
    Report(const ReportSettings& settings, const std::string& szCommand, bool bPlan);

    const ReportSettings& Settings() const { return m_settings; }

    /// Tells what the library works with. The run may have steps from here on.
    Steps BeginSteps(const LibraryFacts& library, int nThreads);

    /// Tells how pictures go through the library: "whole" or "unit".
    void TellScheme(const std::string& szScheme) { m_szScheme = szScheme; }

    /// Tells of the picture that the run has written: this is its result and its summary.
    void TellPicture(const std::string& szPath, Format eFormat, ImageSize size);

    /// Results of the command, which become keys of the JSON object.
    nlohmann::ordered_json& Json() { return m_json; }

    /// Results of the command as text, for standard output without --json.
    void SetData(const std::string& szText) { m_szData = szText; }

    /// One line about what was done, for standard error.
    void SetSummary(const std::string& szText) { m_szSummary = szText; }

    /// Writes to standard error, clear of the progress line.
    void Say(const std::string& szText);

    /// The run is over: prints its results and writes the reports that are wanted. For a report that cannot
    /// be written there is a line on standard error.
    void Succeed();
    void Fail(const Failure& failure);

private:
    friend class Step;
    friend class StepBands;

    /// What the library works with, and when it was set up.
    struct Setup
    {
        LibraryFacts library;
        int nThreads;
        double fSeconds;
    };

    void Begin(StepRecord& step);
    void Close(StepRecord step);
    double SecondsNow() const;
    nlohmann::ordered_json Document(const Failure* pFailure) const;
    void TellStep(const StepRecord& step);
    void TellTotal();
    void WarnAboutBudget(const StepPlan& step);
    void WriteFiles(nlohmann::ordered_json document);

    const ReportSettings& m_settings;
    std::string m_szCommand;
    bool m_bPlan;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::unique_ptr<MemoryWatch> m_pWatch;      ///< null where nobody wants its figures
    std::unique_ptr<LibraryReports> m_pReports; ///< null without reports
    Progress m_progress;
    std::optional<Setup> m_setup; ///< none while the library is not used
    std::string m_szScheme;       ///< empty for commands without one
    std::vector<StepRecord> m_steps;
    os::ResidentMemory m_peak; ///< of all steps
    nlohmann::ordered_json m_json = nlohmann::ordered_json::object();
    std::string m_szData;
    std::string m_szSummary;
};

/// What is printed for a run that was ended early.
/// @param nStatus  exit status
void PrintEnded(int nStatus, const std::string& szMessage, bool bJson);
