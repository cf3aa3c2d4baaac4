// Collecting what a step tells.

#include "report/Step.h"

#include "report/Report.h"

#include <exception>
#include <utility>

Step::Step(Report& report, const std::string& szStep, int nIpNo) : m_report(report)
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

void Step::ExpectBands(int nBands, std::int64_t nBytes)
{
    m_report.m_progress.Expect(nBands, nBytes);
    if (m_record.history)
        m_record.history->ExpectBands(nBands);
}

void Step::NoteBand(ImageRole eRole, const T_ImageLrg_tag& band)
{
    const StepPlan& plan = m_record.plan;
    if (m_record.history && m_record.history->NoteBand(eRole, band))
        m_report.m_pReports->NoteMapping(band.pImage, plan.szStep + ": " + plan.Find(eRole)->szImage);
}

void Step::BandDone()
{
    m_report.m_progress.Advance();
    if (m_record.history)
        m_record.history->BandDone();
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
