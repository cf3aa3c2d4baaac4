#pragma once
// A step of a run that is under way.

#include "report/StepRecord.h"

#include <chrono>
#include <string>
#include <vector>

class Report;

/// What happens in a step is told to this object. When the step ends, it becomes part of the report. There is
/// one at a time, used by the thread of its report.
class Step
{
public:
    /// The step begins.
    /// @param report has been told the settings, and outlives the step
    /// @param nIpNo  process identifier, see ProcessIds.h
    Step(Report& report, const std::string& szStep, int nIpNo);

    /// A step that was not ended is told as the one that the run failed in.
    ~Step();
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

    const std::string& Name() const { return m_record.plan.szStep; }

    /// Tells how the step's images are planned. A later plan replaces this one. Unless the run is only
    /// planned, no two images have the same role.
    /// @param nBudget  bytes of the budget in use once they are planned
    void Plan(std::vector<ImagePlan> images, std::int64_t nBudget);

    /// Tells how many bands the step takes, ahead of the first one.
    /// @param nBytes  of the output, in all bands together
    void ExpectBands(int nBands, std::int64_t nBytes);

    /// A band of the planned image of this role is mapped.
    void NoteBand(ImageRole eRole, const T_ImageLrg_tag& band);

    /// One more band is done, in all images.
    void BandDone();

    /// What the images are charged with now, or were at that moment.
    void NoteCharges(const Charges& charges) { NoteCharges(charges, BudgetMoment::Now()); }
    void NoteCharges(const Charges& charges, const BudgetMoment& moment);

    /// Adds bytes that moved.
    void Count(const Traffic& traffic) { m_record.traffic += traffic; }

    /// The step is done. Its time and peak memory are told with its plan. No other call follows.
    void End();

private:
    void Close(bool bFinished);

    Report& m_report;
    StepRecord m_record;
    bool m_bOpen = true;
};
