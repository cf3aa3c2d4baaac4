#pragma once
// A run that is planned ahead of itself.

#include "schemes/Run.h"

/// The same run, but planned only, and told to nobody. What goes its way first ends with a failure wherever
/// the plan does not fit the budget, before anything is read or written.
class PlannedRun
{
public:
    explicit PlannedRun(const Run& run)
        : m_settings(PlannedOnly(run.settings)), m_report(m_silent, "", true),
          m_steps(m_report.BeginSteps(run.lib.Facts(m_settings.eScheme), m_settings.nThreads)),
          m_run{m_settings, run.lib, m_report, m_steps, run.pair, run.workers, nullptr}
    {
    }

    operator const Run&() const { return m_run; }

private:
    static RunSettings PlannedOnly(RunSettings settings)
    {
        settings.bPlan = true;
        return settings;
    }

    ReportSettings m_silent{.reports = {}, .bQuiet = true};
    RunSettings m_settings;
    Report m_report;
    Steps m_steps;
    Run m_run;
};
