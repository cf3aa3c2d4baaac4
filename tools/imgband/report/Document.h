#pragma once
// The parts of the JSON objects that runs print and report.

#include "library/Library.h"
#include "report/StepRecord.h"
#include "system/Process.h"
#include "values/Failure.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// The beginning of every object.
/// @param szCommand  empty when the command line told none
nlohmann::ordered_json HeadJson(const std::string& szCommand, bool bPlan, int nStatus);

nlohmann::ordered_json ErrorJson(const Failure& failure);

nlohmann::ordered_json SettingsJson(const LibraryFacts& library, int nThreads);

/// The most memory that the process had, as far as it is known.
nlohmann::ordered_json PeakJson(os::ResidentMemory peak);

/// @param nBudget  bytes of the budget
/// @param bPlan    the steps were only planned, and have no times
nlohmann::ordered_json StepsJson(const std::vector<StepRecord>& steps, std::int64_t nBudget, bool bPlan);

/// "traffic", "budget_over_time" and "bands". Steps without a history have only traffic.
/// @param nBudget   bytes of the budget
/// @param fSeconds  from the start of the run to when the budget was set
nlohmann::ordered_json HistoryJson(const std::vector<StepRecord>& steps, LONG nBudget, double fSeconds);

/// The object as text. It is valid JSON even when names of files are not UTF-8.
std::string JsonText(const nlohmann::ordered_json& json);
