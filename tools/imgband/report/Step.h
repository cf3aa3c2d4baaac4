#pragma once
// A step of a run that is under way.

#include "report/Report.h"
#include "report/StepRecord.h"

#include <chrono>
#include <string>
#include <vector>

/// What happens in a step is told to this object. When the step ends, it becomes part of the report. There is
/// one at a time, used by the thread of its report.
class Step
{
public:
    /// The step begins.
    /// @param steps  of a report that outlives the step
    /// @param nIpNo  process identifier, see ProcessIds.h
    Step(Steps steps, const std::string& szStep, int nIpNo);

    /// A step that was not ended is told as the one that the run failed in.
    ~Step();
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

    const std::string& Name() const { return m_record.plan.szStep; }

    /// Tells how the step's images are planned. A later plan replaces this one. Unless the run is only
    /// planned, no two images have the same role.
    /// @param nBudget  bytes of the budget in use once they are planned
    void Plan(std::vector<ImagePlan> images, std::int64_t nBudget);

    /// What the images are charged with now, or were at that moment.
    void NoteCharges(const Charges& charges) { NoteCharges(charges, BudgetMoment::Now()); }
    void NoteCharges(const Charges& charges, const BudgetMoment& moment);

    /// Adds bytes that moved.
    void Count(const Traffic& traffic) { m_record.traffic += traffic; }

    /// The step is done. Its time and peak memory are told with its plan. No other call follows.
    void End();

private:
    friend class StepBands;

    void Close(bool bFinished);

    Report& m_report;
    StepRecord m_record;
    bool m_bOpen = true;
};

/// The bands of a step, one after the other in all its images.
class StepBands
{
public:
    /// The step is planned, and its first band comes next.
    /// @param step    outlives this object
    /// @param nBands  how many the step takes
    /// @param nBytes  of the output, in all bands together
    StepBands(Step& step, int nBands, std::int64_t nBytes);

    /// A band of the planned image of this role is mapped.
    void Note(ImageRole eRole, const T_ImageLrg_tag& band);

    /// One more band is done, in all images.
    void Done();

private:
    Step& m_step;
    int m_nBands;
    int m_nBand = 0; ///< number of the band that is mapped now
};
