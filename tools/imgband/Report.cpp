// Printing a run's results.

#include "Report.h"

#include "HostFiles.h"
#include "MemoryManager/ResultCodes.h"

#include <cstdio>
#include <fmt/format.h>

using nlohmann::ordered_json;

namespace {

constexpr int kSchema = 1;

void Print(std::FILE* pStream, const std::string& szText)
{
    std::fputs(szText.c_str(), pStream);
}

double SecondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// Names of files may hold any bytes; the object stays valid JSON.
void PrintJson(const ordered_json& json)
{
    Print(stdout, json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

ordered_json ErrorJson(const Failure& failure)
{
    ordered_json error = {{"message", failure.Message()}};
    if (!failure.szFile.empty())
        error["file"] = failure.szFile;
    if (failure.room) {
        error["wanted_bytes"] = failure.room->nWanted;
        error["available_bytes"] = failure.room->nAvailable;
    }
    if (failure.libraryResult) {
        error["library_code"] = failure.libraryResult->nCode;
        error["library_meaning"] = MM_ResultText(failure.libraryResult->nCode);
        if (failure.libraryResult->nSystemError)
            error["system_error"] = *failure.libraryResult->nSystemError;
    }
    if (!failure.szTry.empty())
        error["try"] = failure.szTry;
    return error;
}

} // namespace

PeakMemory::PeakMemory()
    : m_watcher(host::StartThread([this](std::stop_token stop) {
          while (!stop.stop_requested()) {
              Look();
              std::this_thread::sleep_for(std::chrono::milliseconds(2));
          }
      }))
{
}

void PeakMemory::Look() noexcept
{
    const std::int64_t nNow = host::PrivateBytes();
    std::int64_t nPeak = m_nPeak;
    while (nNow > nPeak && !m_nPeak.compare_exchange_weak(nPeak, nNow)) {
    }
}

std::int64_t PeakMemory::Take()
{
    Look();
    const std::int64_t nPeak = m_nPeak.exchange(-1);
    Look(); // what is held already counts for the next interval too
    return nPeak;
}

Report::Report(const Options& options)
    : m_options(options), m_progress(options.bQuiet || options.bPlan || !host::IsTerminal(stderr))
{
    if ((options.bVerbose || options.bJson) && !options.bPlan)
        m_pPeak = std::make_unique<PeakMemory>();
}

void Report::TellSettings(std::int64_t nBudget, std::int64_t nOneMapping, std::int64_t nBandCap,
                          const std::string& szTemporaryFolder, int nThreads)
{
    m_settings = {{"budget_bytes", nBudget},
                  {"one_mapping_bytes", nOneMapping},
                  {"band_cap_bytes", nBandCap},
                  {"temporary_folder", szTemporaryFolder},
                  {"threads", nThreads}};
    if (m_options.bVerbose)
        Say(fmt::format("  budget {}, one mapping up to {}, bands up to {}, temporary files in {}, "
                        "threads: {}\n",
                        MiB(nBudget), MiB(nOneMapping), MiB(nBandCap), szTemporaryFolder, nThreads));
}

void Report::BeginStep(const std::string& szStep)
{
    m_progress.Begin(szStep);
    m_stepBegin = std::chrono::steady_clock::now();
    if (m_pPeak)
        m_pPeak->Take();
}

void Report::EndStep(const StepPlan& plan)
{
    m_progress.Wipe();
    WarnAboutBudget(plan);
    m_plan.Add(plan);
    ordered_json step = {{"step", plan.szStep}};
    std::string szText = fmt::format("  {}: ", plan.szStep);
    if (m_pPeak) {
        const double nSeconds = SecondsSince(m_stepBegin);
        const std::int64_t nPeak = m_pPeak->Take();
        m_nPeak = std::max(m_nPeak, nPeak);
        step["seconds"] = nSeconds;
        step["peak_private_bytes"] = nPeak;
        szText += fmt::format("{:.2f} s, peak private memory {}, ", nSeconds, MiB(nPeak));
    }
    step["images"] = PlanJson(plan);
    m_steps.push_back(step);
    if (m_options.bVerbose)
        Say(szText + fmt::format("{} of the budget\n", MiB(plan.nBudget)) + PlanText(plan));
}

void Report::WarnAboutBudget(const StepPlan& step)
{
    const std::int64_t nBudget = m_settings.value("budget_bytes", step.Charged());
    if (step.Charged() > nBudget && !m_options.bQuiet)
        Say(fmt::format("imgband: {}: the images take {}, more than the budget of {}\n", step.szStep,
                        MiB(step.Charged()), MiB(nBudget)));
}

// What is written must not run into the progress line.
void Report::Say(const std::string& szText)
{
    m_progress.Wipe();
    Print(stderr, szText);
}

ordered_json Report::Head(ExitStatus eStatus) const
{
    ordered_json json = {{"schema", kSchema}, {"program", "imgband"}, {"version", IMGBAND_VERSION}};
    if (m_options.eCommand != Command::None)
        json["command"] = CommandName(m_options.eCommand);
    if (m_options.bPlan)
        json["plan"] = true;
    json["ok"] = eStatus == ExitStatus::Done;
    json["exit_status"] = static_cast<int>(eStatus);
    return json;
}

void Report::AddSteps(ordered_json& json) const
{
    if (m_settings.is_null())
        return;
    json["settings"] = m_settings;
    json["steps"] = m_steps;
    m_plan.TellTotals(json);
    if (m_options.bPlan)
        return;
    json["seconds"] = SecondsSince(m_begin);
    json["peak_private_bytes"] = m_nPeak;
}

void Report::TellTotal()
{
    if (m_options.bVerbose && !m_plan.IsEmpty() && !m_options.bPlan)
        Say(fmt::format("  total: {:.2f} s, peak private memory {}, {}\n", SecondsSince(m_begin),
                        MiB(m_nPeak), m_plan.Totals()));
}

void Report::PrintSuccess()
{
    if (m_options.bJson) {
        ordered_json json = Head(ExitStatus::Done);
        json.update(m_json);
        AddSteps(json);
        PrintJson(json);
    } else if (!m_options.bQuiet) {
        Print(stdout, m_options.bPlan ? m_plan.Table() : m_szData);
    }
    TellTotal();
    if (!m_options.bQuiet && !m_szSummary.empty())
        Say(m_szSummary + "\n");
}

void Report::PrintFailure(const Failure& failure)
{
    if (m_options.bJson) {
        ordered_json json = Head(failure.eStatus);
        json["error"] = ErrorJson(failure);
        AddSteps(json);
        PrintJson(json);
    }
    Say(fmt::format("imgband: {}\n", failure.Message()));
}

void PrintInterrupted(int nStatus, bool bJson)
{
    const std::string szMessage = fmt::format("interrupted by signal {}", nStatus - 128);
    if (bJson)
        PrintJson({{"schema", kSchema},
                   {"program", "imgband"},
                   {"version", IMGBAND_VERSION},
                   {"ok", false},
                   {"exit_status", nStatus},
                   {"error", {{"message", szMessage}}}});
    Print(stderr, fmt::format("{}imgband: {}\n", host::IsTerminal(stderr) ? Progress::kWipe : "", szMessage));
}
