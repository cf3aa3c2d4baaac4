// Collecting a run's steps, and printing its results.

#include "report/Report.h"

#include "pictures/Formats.h"
#include "report/Document.h"
#include "report/PlanText.h"
#include "report/ReportFile.h"
#include "report/Seconds.h"
#include "report/Tables.h"
#include "system/Console.h"
#include "system/Folders.h"
#include "system/Interrupts.h"

#include <cstdio>
#include <fmt/format.h>
#include <utility>

using nlohmann::ordered_json;

Report::Report(const ReportSettings& settings, const std::string& szCommand, bool bPlan)
    : m_settings(settings), m_szCommand(szCommand), m_bPlan(bPlan),
      m_progress(settings.bQuiet || bPlan || !os::IsTerminal(stderr))
{
    const bool bReports = !settings.reports.empty();
    if ((settings.bVerbose || settings.bJson || bReports) && !bPlan)
        m_pWatch = std::make_unique<MemoryWatch>(m_begin);
    if (bReports)
        m_pReports = std::make_unique<LibraryReports>(os::RuntimeFolder());
}

double Report::SecondsNow() const
{
    return SecondsBetween(m_begin, std::chrono::steady_clock::now());
}

Steps Report::BeginSteps(const LibraryFacts& library, int nThreads)
{
    m_setup = {library, nThreads, SecondsNow()};
    if (m_settings.bVerbose)
        Say(fmt::format("  budget {}, one mapping up to {}, bands up to {}, temporary files in {}, "
                        "threads: {}\n",
                        MiB(library.nBudget), MiB(library.nOneMapping), MiB(library.nBandCap),
                        library.szTemporaryFolder, nThreads));
    return Steps(*this);
}

void Report::TellPicture(const std::string& szPath, Format eFormat, ImageSize size)
{
    const std::int64_t nBytes = FileBytes(eFormat, size);
    SetSummary(fmt::format("{}: {}, {} x {} pixels, {} bytes", szPath, FormatName(eFormat), size.nWidth,
                           size.nHeight, nBytes));
    m_json = {{"file", szPath},
              {"format", FormatName(eFormat)},
              {"width", size.nWidth},
              {"height", size.nHeight},
              {"file_bytes", nBytes}};
}

void Report::Begin(StepRecord& step)
{
    m_progress.Begin(step.plan.szStep);
    step.begin = std::chrono::steady_clock::now();
    step.fBegin = SecondsBetween(m_begin, step.begin);
    if (m_pWatch)
        m_pWatch->TakePeak();
    if (m_pReports && !m_bPlan) {
        step.history.emplace(m_begin);
        m_pReports->Enter(step.plan.nIpNo, step.plan.szStep);
    }
}

void Report::Close(StepRecord step)
{
    m_progress.Wipe();
    step.fSeconds = SecondsBetween(step.begin, std::chrono::steady_clock::now());
    if (m_pWatch) {
        step.peak = m_pWatch->TakePeak();
        m_peak = Larger(m_peak, step.peak);
    }
    WarnAboutBudget(step.plan);
    if (m_pReports && !step.plan.images.empty())
        m_pReports->NoteStep(step.plan, m_setup.value().library.nBudget);
    if (m_pReports && !m_bPlan)
        m_pReports->Leave(step.plan.nIpNo, step.plan.szStep);
    if (m_settings.bVerbose && step.bFinished)
        TellStep(step);
    m_steps.push_back(std::move(step));
}

void Report::WarnAboutBudget(const StepPlan& step)
{
    const LONG nBudget = m_setup.value().library.nBudget;
    if (step.Charged() > nBudget && !m_settings.bQuiet)
        Say(fmt::format("imgband: {}: the images take {}, more than the budget of {}\n", step.szStep,
                        MiB(step.Charged()), MiB(nBudget)));
}

void Report::TellStep(const StepRecord& step)
{
    std::string szText = fmt::format("  {}: ", step.plan.szStep);
    if (m_pWatch)
        szText += fmt::format("{:.2f} s, peak private memory {}, ", step.fSeconds, MiB(step.peak.nPrivate));
    Say(szText + fmt::format("{} of the budget\n", MiB(step.plan.nBudget)) + PlanText(step.plan));
}

void Report::TellTotal()
{
    if (m_settings.bVerbose && !m_steps.empty() && !m_bPlan)
        Say(fmt::format("  total: {:.2f} s, peak private memory {}, {}\n", SecondsNow(), MiB(m_peak.nPrivate),
                        TotalsText(TotalsOf(m_steps))));
}

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
    if (!m_setup)
        return json;
    json["settings"] = SettingsJson(m_setup->library, m_setup->nThreads);
    json["steps"] = StepsJson(m_steps, m_setup->library.nBudget, m_bPlan);
    if (!m_szScheme.empty())
        json["scheme"] = m_szScheme;
    const Totals totals = TotalsOf(m_steps);
    json["temporary_bytes"] = totals.nTemporary;
    json["peak_budget_bytes"] = totals.nBudget;
    if (m_bPlan)
        return json;
    json["seconds"] = SecondsNow();
    json.update(PeakJson(m_peak));
    return json;
}

void Report::Succeed()
{
    os::SettleOutcome();
    ordered_json document = Document(nullptr);
    if (m_settings.bJson)
        os::Print(stdout, JsonText(document));
    else if (!m_settings.bQuiet)
        os::Print(stdout, m_bPlan ? PlanTable(m_szScheme, m_steps) : m_szData);
    TellTotal();
    if (!m_settings.bQuiet && !m_szSummary.empty())
        Say(m_szSummary + "\n");
    WriteFiles(std::move(document));
}

void Report::Fail(const Failure& failure)
{
    os::SettleOutcome();
    ordered_json document = Document(&failure);
    if (m_settings.bJson)
        os::Print(stdout, JsonText(document));
    else if (!m_settings.bQuiet)
        os::Print(stdout, m_szData); // results until then
    Say(fmt::format("imgband: {}\n", failure.Message()));
    WriteFiles(std::move(document));
}

void Report::WriteFiles(ordered_json document)
{
    if (!m_pReports)
        return;
    if (!m_steps.empty() && m_steps.back().history)
        m_steps.back().history->NoteCharges({}, BudgetMoment::Now());
    if (m_setup && !m_bPlan)
        document.update(HistoryJson(m_steps, m_setup->library.nBudget, m_setup->fSeconds));
    if (m_pWatch)
        m_pWatch->AddTo(document);
    AddTables(*m_pReports, document);
    for (const std::string& szPath : m_settings.reports)
        try {
            WriteReportFile(szPath, document);
        } catch (const std::exception& e) {
            Say(fmt::format("imgband: the report could not be written to {}: {}\n", szPath, e.what()));
        }
}

void PrintEnded(int nStatus, const std::string& szMessage, bool bJson)
{
    if (bJson) {
        ordered_json json = HeadJson("", false, nStatus);
        json["error"] = {{"message", szMessage}};
        os::Print(stdout, JsonText(json));
    }
    os::Print(stderr,
              fmt::format("{}imgband: {}\n", os::IsTerminal(stderr) ? Progress::kWipe : "", szMessage));
}
