#pragma once
// A step of a run that is under way.

#include "report/StepRecord.h"

#include <chrono>
#include <string>
#include <vector>

class Report;

/// What happens in a step is told to this object, and by its end becomes part of the report. One at a time;
/// used by the thread that the report belongs to.
class Step
{
public:
    /// The step begins. The report has been told the run's settings, and outlives the step.
    /// @param nIpNo  process identifier, see ProcessIds.h
    Step(Report& report, const std::string& szStep, int nIpNo);

    /// A step that was not ended is the one that the run failed in.
    ~Step();
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

    /// Tells how the step's images are planned; again when more of them has shown. A step that is run has one
    /// image of a role at most.
    /// @param nBudget  bytes of the budget in use once they are planned
    void Plan(std::vector<ImagePlan> images, std::int64_t nBudget);

    /// Tells the bands that the step takes, ahead of the first one.
    /// @param nBytes  that come out of all of them
    void ExpectBands(int nBands, std::int64_t nBytes);

    /// A band of a planned image is mapped.
    void NoteBand(ImageRole eRole, const T_ImageLrg_tag& band);

    /// The bands of all images that were mapped last are done.
    void BandDone();

    /// The images are charged with this now, or were so then.
    void NoteCharges(const Charges& charges) { NoteCharges(charges, BudgetMoment::Now()); }
    void NoteCharges(const Charges& charges, const BudgetMoment& moment);

    /// More bytes moved.
    void Count(const Traffic& traffic) { m_record.traffic += traffic; }

    /// The step is done: its time and peak memory go with its plan. Nothing is told after this.
    void End();

private:
    void Close(bool bFinished);

    Report& m_report;
    StepRecord m_record;
    bool m_bOpen = true;
};
