// Collecting what a step tells.

#include "report/Step.h"

#include <exception>
#include <utility>

Step::Step(Steps steps, const std::string& szStep, int nIpNo) : m_report(steps.m_report)
{
    m_record.plan.szStep = szStep;
    m_record.plan.nIpNo = nIpNo;
    m_report.Begin(m_record);
}

Step::~Step()
{
    if (!m_bOpen)
        return;
    try {
        Close(false);
    } catch (const std::exception&) {
        // The run ends with the failure that ended the step; the report goes without it.
    }
}

void Step::Plan(std::vector<ImagePlan> images, std::int64_t nBudget)
{
    m_record.plan.images = std::move(images);
    m_record.plan.nBudget = nBudget;
}

void Step::NoteCharges(const Charges& charges, const BudgetMoment& moment)
{
    if (m_record.history)
        m_record.history->NoteCharges(charges, moment);
}

void Step::End()
{
    Close(true);
}

void Step::Close(bool bFinished)
{
    m_bOpen = false;
    m_record.bFinished = bFinished;
    m_report.Close(std::move(m_record));
}

StepBands::StepBands(Step& step, int nBands, std::int64_t nBytes) : m_step(step), m_nBands(nBands)
{
    m_step.m_report.m_progress.Expect(nBands, nBytes);
}

void StepBands::Note(ImageRole eRole, const T_ImageLrg_tag& band)
{
    StepRecord& record = m_step.m_record;
    if (record.history && record.history->NoteBand(eRole, band, m_nBand, m_nBands))
        m_step.m_report.m_pReports->NoteMapping(band.pImage,
                                                record.plan.szStep + ": " + record.plan.Find(eRole)->szImage);
}

void StepBands::Done()
{
    ++m_nBand;
    m_step.m_report.m_progress.Advance();
}
