// Printing a run's results, and collecting those of its steps.

#include "report/Report.h"

#include "report/ReportFile.h"
#include "report/Seconds.h"
#include "system/Console.h"
#include "system/Folders.h"
#include "system/Interrupts.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>

using nlohmann::ordered_json;

namespace {

double SecondsSince(std::chrono::steady_clock::time_point begin)
{
    return SecondsBetween(begin, std::chrono::steady_clock::now());
}

} // namespace

Report::Report(const ReportSettings& settings, const std::string& szCommand, bool bPlan)
    : m_settings(settings), m_szCommand(szCommand), m_bPlan(bPlan),
      m_history(!settings.reports.empty() && !bPlan, m_begin),
      m_progress(settings.bQuiet || bPlan || !os::IsTerminal(stderr))
{
    const bool bReports = !settings.reports.empty();
    if ((settings.bVerbose || settings.bJson || bReports) && !bPlan)
        m_pWatch = std::make_unique<MemoryWatch>(m_begin);
    if (bReports)
        m_pTables = std::make_unique<LibraryTables>(os::RuntimeFolder());
}

void Report::TellSettings(std::int64_t nBudget, std::int64_t nOneMapping, std::int64_t nBandCap,
                          const std::string& szTemporaryFolder, int nThreads)
{
    m_librarySettings = {{"budget_bytes", nBudget},
                         {"one_mapping_bytes", nOneMapping},
                         {"band_cap_bytes", nBandCap},
                         {"temporary_folder", szTemporaryFolder},
                         {"threads", nThreads}};
    m_nBudget = static_cast<LONG>(nBudget);
    m_history.Begin(m_nBudget);
    if (m_settings.bVerbose)
        Say(fmt::format("  budget {}, one mapping up to {}, bands up to {}, temporary files in {}, "
                        "threads: {}\n",
                        MiB(nBudget), MiB(nOneMapping), MiB(nBandCap), szTemporaryFolder, nThreads));
}

void Report::BeginStep(const std::string& szStep, int nIpNo)
{
    m_progress.Begin(szStep);
    m_history.BeginStep();
    m_step.emplace();
    m_step->plan.szStep = szStep;
    m_step->plan.nIpNo = nIpNo;
    m_step->begin = std::chrono::steady_clock::now();
    if (m_pWatch)
        m_pWatch->TakePeak();
    if (m_pTables && !m_bPlan)
        m_pTables->Enter(nIpNo, szStep);
}

void Report::ExpectBands(int nBands, std::int64_t nBytes)
{
    m_progress.Expect(nBands, nBytes);
    m_history.ExpectBands(nBands);
}

void Report::BandDone()
{
    m_progress.Advance();
    m_history.BandDone();
}

void Report::NoteBand(int nImage, const T_ImageLrg_tag& band)
{
    if (!m_history.NoteBand(nImage, band))
        return;
    const StepPlan& plan = m_step->plan;
    m_pTables->NoteMapping(band.pImage,
                           plan.szStep + ": " + plan.images.at(static_cast<std::size_t>(nImage)).szImage);
}

void Report::EndStep()
{
    CloseStep(true);
}

void Report::CloseStep(bool bFinished)
{
    m_progress.Wipe();
    StepRecord step = *std::exchange(m_step, std::nullopt);
    step.bFinished = bFinished;
    step.nBegin = SecondsBetween(m_begin, step.begin);
    step.nSeconds = SecondsSince(step.begin);
    if (m_pWatch) {
        step.peak = m_pWatch->TakePeak();
        m_peak = Larger(m_peak, step.peak);
    }
    WarnAboutBudget(step.plan);
    m_plan.Add(step.plan);
    m_steps.push_back(StepJson(step, m_nBudget, m_bPlan));
    if (m_pTables)
        TellTables(step.plan);
    if (m_settings.bVerbose && bFinished)
        TellStep(step);
}

void Report::TellStep(const StepRecord& step)
{
    std::string szText = fmt::format("  {}: ", step.plan.szStep);
    if (m_pWatch)
        szText += fmt::format("{:.2f} s, peak private memory {}, ", step.nSeconds, MiB(step.peak.nPrivate));
    Say(szText + fmt::format("{} of the budget\n", MiB(step.plan.nBudget)) + PlanText(step.plan));
}

// The library's table takes the free budget of the moment, which was that of the plan only until the step's
// bands or external image were given back.
void Report::TellTables(const StepPlan& plan)
{
    const LONG nFree = CImageObj::ms_FreeMemory;
    CImageObj::ms_FreeMemory = static_cast<LONG>(m_nBudget - plan.nBudget);
    if (!plan.images.empty())
        m_pTables->NoteStep(plan);
    CImageObj::ms_FreeMemory = nFree;
    if (!m_bPlan)
        m_pTables->Leave(plan.nIpNo, plan.szStep);
}

void Report::WarnAboutBudget(const StepPlan& step)
{
    const std::int64_t nBudget = m_librarySettings.value("budget_bytes", step.Charged());
    if (step.Charged() > nBudget && !m_settings.bQuiet)
        Say(fmt::format("imgband: {}: the images take {}, more than the budget of {}\n", step.szStep,
                        MiB(step.Charged()), MiB(nBudget)));
}

// What is written must not run into the progress line.
void Report::Say(const std::string& szText)
{
    m_progress.Wipe();
    os::Print(stderr, szText);
}

ordered_json Report::Document(const Failure* pFailure) const
{
    const ExitStatus eStatus = pFailure ? pFailure->eStatus : ExitStatus::Done;
    ordered_json json = HeadJson(m_szCommand, m_bPlan, static_cast<int>(eStatus));
    if (pFailure)
        json["error"] = ErrorJson(*pFailure);
    json.update(m_json);
    if (m_librarySettings.is_null())
        return json;
    json["settings"] = m_librarySettings;
    json["steps"] = m_steps;
    m_plan.TellTotals(json);
    if (m_bPlan)
        return json;
    json["seconds"] = SecondsSince(m_begin);
    json.update(PeakJson(m_peak));
    return json;
}

void Report::TellTotal()
{
    if (m_settings.bVerbose && !m_plan.IsEmpty() && !m_bPlan)
        Say(fmt::format("  total: {:.2f} s, peak private memory {}, {}\n", SecondsSince(m_begin),
                        MiB(m_peak.nPrivate), m_plan.Totals()));
}

void Report::PrintSuccess()
{
    os::SettleOutcome();
    m_document = Document(nullptr);
    if (m_settings.bJson)
        os::Print(stdout, JsonText(m_document));
    else if (!m_settings.bQuiet)
        os::Print(stdout, m_bPlan ? m_plan.Table() : m_szData);
    TellTotal();
    if (!m_settings.bQuiet && !m_szSummary.empty())
        Say(m_szSummary + "\n");
}

void Report::PrintFailure(const Failure& failure)
{
    os::SettleOutcome();
    if (m_step)
        CloseStep(false);
    m_document = Document(&failure);
    if (m_settings.bJson)
        os::Print(stdout, JsonText(m_document));
    else if (!m_settings.bQuiet)
        os::Print(stdout, m_szData); // what was found before
    Say(fmt::format("imgband: {}\n", failure.Message()));
}

void Report::WriteFiles()
{
    if (!m_pTables)
        return;
    m_history.End();
    m_history.AddTo(m_document);
    if (m_pWatch)
        m_pWatch->AddTo(m_document);
    m_pTables->AddTo(m_document);
    for (const std::string& szPath : m_settings.reports)
        try {
            WriteReportFile(szPath, m_document);
        } catch (const std::exception& e) {
            Say(fmt::format("imgband: the report could not be written to {}: {}\n", szPath, e.what()));
        }
}

void PrintInterrupted(int nStatus, bool bJson)
{
    const std::string szMessage = fmt::format("interrupted by signal {}", nStatus - 128);
    if (bJson) {
        ordered_json json = HeadJson("", false, nStatus);
        json["error"] = {{"message", szMessage}};
        os::Print(stdout, JsonText(json));
    }
    os::Print(stderr,
              fmt::format("{}imgband: {}\n", os::IsTerminal(stderr) ? Progress::kWipe : "", szMessage));
}
