#pragma once
// What a report tells over time, and the part of it that a drawing can show.

#include "page/Node.h"

#include <string>
#include <vector>

/// When a step ran, in seconds.
struct StepSpan
{
    std::string szStep;
    double fBegin;
    double fEnd;
};

/// The budget, time by time; each sample holds until the next.
struct BudgetHistory
{
    struct Sample
    {
        double fSeconds;
        double fFree;                ///< bytes; below 0 when more is charged than there is
        std::vector<double> charged; ///< bytes of each image
        double Charged() const;
    };
    std::vector<std::string> images; ///< as they appear
    std::vector<Sample> samples;
};

struct MemorySample
{
    double fSeconds;
    double fBytes;
};

std::vector<StepSpan> StepSpans(const Node& report);
BudgetHistory BudgetOverTime(const Node& report);

/// @param szKey  private_bytes or mapped_bytes
std::vector<MemorySample> MemoryOverTime(const Node& report, const std::string& szKey);

/// The last moment that the report knows; above 0.
double EndOfRun(const Node& report);

/// A drawing of the samples stays small and shows the same when only few of each column, fColumn seconds
/// wide, are kept. Of the budget that is the one with the most charged, for the whole column, and the last,
/// from its end on.
std::vector<BudgetHistory::Sample> Thinned(const std::vector<BudgetHistory::Sample>& samples, double fColumn);

/// Of the memory they are the first, the lowest, the highest and the last.
std::vector<MemorySample> Thinned(const std::vector<MemorySample>& samples, double fColumn);
