#pragma once
// The parts of the JSON objects that runs print and report.

#include "library/Library.h"
#include "report/StepRecord.h"
#include "system/Process.h"
#include "values/Failure.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// How an object begins.
/// @param szCommand  empty when the command line told none
nlohmann::ordered_json HeadJson(const std::string& szCommand, bool bPlan, int nStatus);

nlohmann::ordered_json ErrorJson(const Failure& failure);

nlohmann::ordered_json SettingsJson(const LibraryFacts& library, int nThreads);

/// What is known of the most memory that the process had.
nlohmann::ordered_json PeakJson(os::ResidentMemory peak);

/// @param nBudget  bytes
/// @param bPlan    the steps were only planned, and have no times
nlohmann::ordered_json StepsJson(const std::vector<StepRecord>& steps, std::int64_t nBudget, bool bPlan);

/// "traffic", "budget_over_time" and "bands" of steps that have a history.
/// @param nBudget   bytes
/// @param fSeconds  when it was set, from the start of the run
nlohmann::ordered_json HistoryJson(const std::vector<StepRecord>& steps, LONG nBudget, double fSeconds);

/// The object as text. Names of files may hold any bytes; it stays valid JSON.
std::string JsonText(const nlohmann::ordered_json& json);
