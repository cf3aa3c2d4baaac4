#pragma once
// What a run tells: text on standard error, data or one JSON object on standard output.

#include "Failure.h"
#include "Options.h"
#include "Progress.h"
#include "RunPlan.h"

#include <atomic>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

/// The largest private memory of the process, looked at every 2 ms by a thread of its own.
class PeakMemory
{
public:
    PeakMemory();

    /// The peak in bytes since the last call; below 0 when it is unknown.
    std::int64_t Take();

private:
    void Look() noexcept;

    std::atomic<std::int64_t> m_nPeak{-1};
    std::jthread m_watcher; // last: it uses the others
};

/// Collects a run's results. Steps are told as they end, the rest by PrintSuccess or PrintFailure.
class Report
{
public:
    explicit Report(const Options& options);

    /// Tells the settings that the library works with.
    void TellSettings(std::int64_t nBudget, std::int64_t nOneMapping, std::int64_t nBandCap,
                      const std::string& szTemporaryFolder, int nThreads);

    /// Tells how pictures go through the library.
    void TellScheme(const std::string& szScheme) { m_plan.SetScheme(szScheme); }

    /// Marks the beginning of a step.
    void BeginStep(const std::string& szStep);

    /// Tells the bands that the step will take, and the bytes that come out of all of them; then each one
    /// that is done.
    void ExpectBands(int nBands, std::int64_t nBytes) { m_progress.Expect(nBands, nBytes); }
    void BandDone() { m_progress.Advance(); }

    /// Ends the step: its time and peak memory go with its plan.
    void EndStep(const StepPlan& step);

    /// Results of the command for the JSON object.
    nlohmann::ordered_json& Json() { return m_json; }

    /// Data for standard output, in place of JSON.
    void SetData(const std::string& szText) { m_szData = szText; }

    /// One line about what was done, for standard error.
    void SetSummary(const std::string& szText) { m_szSummary = szText; }

    void PrintSuccess();
    void PrintFailure(const Failure& failure);

private:
    nlohmann::ordered_json Head(ExitStatus eStatus) const;
    void AddSteps(nlohmann::ordered_json& json) const;
    void TellTotal();
    void WarnAboutBudget(const StepPlan& step);
    void Say(const std::string& szText);

    const Options& m_options;
    std::unique_ptr<PeakMemory> m_pPeak; ///< only where its figures are told
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_stepBegin;
    std::int64_t m_nPeak = -1; ///< of all steps
    nlohmann::ordered_json m_json = nlohmann::ordered_json::object();
    nlohmann::ordered_json m_settings;
    nlohmann::ordered_json m_steps = nlohmann::ordered_json::array();
    RunPlan m_plan;
    Progress m_progress;
    std::string m_szData;
    std::string m_szSummary;
};

/// The object that a run prints which a signal ended.
void PrintInterrupted(int nStatus, bool bJson);
