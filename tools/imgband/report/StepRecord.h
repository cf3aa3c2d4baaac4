#pragma once
// A step as it went.

#include "library/StepPlan.h"
#include "report/StepHistory.h"
#include "system/Process.h"

#include <chrono>
#include <optional>

struct StepRecord
{
    StepPlan plan;
    std::chrono::steady_clock::time_point begin;
    double fBegin = 0;                  ///< the same in seconds from the start of the run
    double fSeconds = 0;                ///< its duration
    bool bFinished = false;             ///< false: the run failed in it
    os::ResidentMemory peak;            ///< while it ran
    Traffic traffic;                    ///< in all
    std::optional<StepHistory> history; ///< none where no report tells it
};
