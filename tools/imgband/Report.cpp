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

std::string MiB(std::int64_t nBytes)
{
    return nBytes < 0 ? "unknown" : fmt::format("{:.1f} MiB", static_cast<double>(nBytes) / (1 << 20));
}

// Names of files may hold any bytes; the object stays valid JSON.
void PrintJson(const ordered_json& json)
{
    Print(stdout, json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

std::string PlanText(const ImagePlan& plan)
{
    const std::string szBands =
        plan.Bands() == 1 ? "whole" : fmt::format("{} bands of {} lines", plan.Bands(), plan.nBandLines);
    return fmt::format("    {:<22} {:>10} in {}, {}, {} charged\n", plan.szImage, MiB(plan.nBytes),
                       plan.szPlace, szBands, MiB(plan.nCharged));
}

ordered_json PlanJson(const ImagePlan& plan)
{
    return {{"image", plan.szImage},         {"place", plan.szPlace}, {"bytes", plan.nBytes},
            {"band_lines", plan.nBandLines}, {"bands", plan.Bands()}, {"charged_bytes", plan.nCharged}};
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
    : m_watcher(host::StartWatcher([this](std::stop_token stop) {
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

Report::Report(const Options& options) : m_options(options)
{
    if (options.bVerbose || options.bJson)
        m_pPeak = std::make_unique<PeakMemory>();
}

void Report::TellSettings(std::int64_t nBudget, std::int64_t nOneMapping, std::int64_t nBandCap,
                          const std::string& szTemporaryFolder)
{
    m_settings = {{"budget_bytes", nBudget},
                  {"one_mapping_bytes", nOneMapping},
                  {"band_cap_bytes", nBandCap},
                  {"temporary_folder", szTemporaryFolder}};
    if (m_options.bVerbose)
        Print(stderr,
              fmt::format("  budget {}, one mapping up to {}, output bands up to {}, temporary files in {}\n",
                          MiB(nBudget), MiB(nOneMapping), MiB(nBandCap), szTemporaryFolder));
}

void Report::BeginStep()
{
    m_stepBegin = std::chrono::steady_clock::now();
    if (m_pPeak)
        m_pPeak->Take();
}

void Report::EndStep(const std::string& szName, const std::vector<ImagePlan>& images)
{
    WarnAboutBudget(szName, images);
    if (!m_pPeak)
        return;
    const double nSeconds = SecondsSince(m_stepBegin);
    const std::int64_t nPeak = m_pPeak->Take();
    m_nPeak = std::max(m_nPeak, nPeak);
    ordered_json step = {{"step", szName}, {"seconds", nSeconds}, {"peak_private_bytes", nPeak}};
    std::string szText =
        fmt::format("  {}: {:.2f} s, peak private memory {}\n", szName, nSeconds, MiB(nPeak));
    for (const ImagePlan& plan : images) {
        step["images"].push_back(PlanJson(plan));
        szText += PlanText(plan);
    }
    m_steps.push_back(step);
    if (m_options.bVerbose)
        Print(stderr, szText);
}

void Report::WarnAboutBudget(const std::string& szName, const std::vector<ImagePlan>& images) const
{
    std::int64_t nCharged = 0;
    for (const ImagePlan& plan : images)
        nCharged += plan.nCharged;
    const std::int64_t nBudget = m_settings.value("budget_bytes", nCharged);
    if (nCharged > nBudget && !m_options.bQuiet)
        Print(stderr,
              fmt::format("imgband: {}: the smallest bands of so wide a picture take {}, more than the "
                          "budget of {}\n",
                          szName, MiB(nCharged), MiB(nBudget)));
}

ordered_json Report::Head(ExitStatus eStatus) const
{
    ordered_json json = {{"schema", kSchema}, {"program", "imgband"}, {"version", IMGBAND_VERSION}};
    if (m_options.eCommand != Command::None)
        json["command"] = CommandName(m_options.eCommand);
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
    json["seconds"] = SecondsSince(m_begin);
    json["peak_private_bytes"] = m_nPeak;
}

void Report::TellTotal() const
{
    if (m_options.bVerbose && !m_steps.empty())
        Print(stderr, fmt::format("  total: {:.2f} s, peak private memory {}\n", SecondsSince(m_begin),
                                  MiB(m_nPeak)));
}

void Report::PrintSuccess()
{
    if (m_options.bJson) {
        ordered_json json = Head(ExitStatus::Done);
        json.update(m_json);
        AddSteps(json);
        PrintJson(json);
    } else if (!m_options.bQuiet) {
        Print(stdout, m_szData);
    }
    TellTotal();
    if (!m_options.bQuiet && !m_szSummary.empty())
        Print(stderr, m_szSummary + "\n");
}

void Report::PrintFailure(const Failure& failure)
{
    if (m_options.bJson) {
        ordered_json json = Head(failure.eStatus);
        json["error"] = ErrorJson(failure);
        AddSteps(json);
        PrintJson(json);
    }
    Print(stderr, fmt::format("imgband: {}\n", failure.Message()));
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
    Print(stderr, fmt::format("imgband: {}\n", szMessage));
}
