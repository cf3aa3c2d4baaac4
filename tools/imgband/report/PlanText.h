#pragma once
// What a run takes, as text and as JSON. A planned run and the run itself tell the same.

#include "report/StepRecord.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Bytes as MiB; "unknown" below 0.
std::string MiB(std::int64_t nBytes);

/// The step's images, a line for each.
std::string PlanText(const StepPlan& step);

/// The step's images as an array.
nlohmann::ordered_json PlanJson(const StepPlan& step);

/// The most that a run takes at a time. All temporary files of a step exist at once.
struct Totals
{
    std::int64_t nTemporary = 0; ///< bytes of temporary files
    std::int64_t nBudget = 0;    ///< bytes of the budget
};
Totals TotalsOf(const std::vector<StepRecord>& steps);

/// The totals in one line.
std::string TotalsText(const Totals& totals);

/// All images of all steps, with the totals.
/// @param szScheme  empty for commands without one
std::string PlanTable(const std::string& szScheme, const std::vector<StepRecord>& steps);
