#pragma once
// The JSON objects that runs print and report.

#include "report/RunPlan.h"
#include "system/Process.h"
#include "values/Failure.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

/// A step as it went.
struct StepRecord
{
    StepPlan plan; ///< without images while they are not planned
    std::chrono::steady_clock::time_point begin;
    double nBegin = 0;       ///< that in seconds from the start of the run
    double nSeconds = 0;     ///< that it took
    bool bFinished = false;  ///< false: the run failed in it
    os::ResidentMemory peak; ///< while it ran
};

/// How an object begins.
/// @param szCommand  empty when the command line told none
nlohmann::ordered_json HeadJson(const std::string& szCommand, bool bPlan, int nStatus);

nlohmann::ordered_json ErrorJson(const Failure& failure);

/// What is known of the most memory that the process had.
nlohmann::ordered_json PeakJson(os::ResidentMemory peak);

/// @param nBudget  bytes
/// @param bPlan    the step was only planned, and has no times
nlohmann::ordered_json StepJson(const StepRecord& step, std::int64_t nBudget, bool bPlan);

/// The object as text. Names of files may hold any bytes; it stays valid JSON.
std::string JsonText(const nlohmann::ordered_json& json);
