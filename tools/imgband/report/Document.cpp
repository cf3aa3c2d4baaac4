// Making the parts of a run's JSON object.

#include "report/Document.h"

#include "MemoryManager/ResultCodes.h"
#include "library/Glossary.h"
#include "report/PlanText.h"

using nlohmann::ordered_json;

namespace {

constexpr int kSchema = 1;

ordered_json StepJson(const StepRecord& step, std::int64_t nBudget, bool bPlan)
{
    const std::string szProcess = glossary::ProcessName(step.plan.nIpNo);
    ordered_json json = {{"step", step.plan.szStep},
                         {"process_id", step.plan.nIpNo},
                         {"process_name", szProcess},
                         {"process_english", glossary::English(szProcess)}};
    if (!step.bFinished)
        json["unfinished"] = true;
    if (!bPlan) {
        json["begin_seconds"] = step.fBegin;
        json["seconds"] = step.fSeconds;
        json.update(PeakJson(step.peak));
    }
    if (!step.plan.images.empty()) {
        json["budget_used_bytes"] = step.plan.nBudget;
        json["budget_free_bytes"] = nBudget - step.plan.nBudget;
    }
    json["images"] = PlanJson(step.plan);
    return json;
}

/// What is taken of the budget, but not by the images of the step's plan, is told as "other".
ordered_json SampleJson(const StepHistory::Sample& sample, const StepPlan& plan, LONG nBudget)
{
    ordered_json charged = ordered_json::array();
    std::int64_t nOther = std::int64_t{nBudget} - sample.nFree;
    const std::pair<ImageRole, LONG> charges[] = {{ImageRole::Input, sample.charges.nInput},
                                                  {ImageRole::Output, sample.charges.nOutput},
                                                  {ImageRole::Temporary, sample.charges.nTemporary}};
    for (const auto& [eRole, nBytes] : charges) {
        const ImagePlan* pImage = plan.Find(eRole);
        if (!pImage || nBytes == 0)
            continue;
        charged.push_back({{"image", pImage->szImage}, {"bytes", nBytes}});
        nOther -= nBytes;
    }
    if (nOther != 0)
        charged.push_back({{"image", "other"}, {"bytes", nOther}});
    return {{"seconds", sample.fSeconds}, {"free_bytes", sample.nFree}, {"charged", charged}};
}

ordered_json BandJson(const StepHistory::Band& band, std::size_t nStep, const StepPlan& plan)
{
    return {{"step", nStep},
            {"image", plan.Find(band.eRole) - plan.images.data()},
            {"seconds", band.fSeconds},
            {"top", band.nTop},
            {"bottom", band.nBottom},
            {"frame", band.nFrame}};
}

} // namespace

ordered_json HeadJson(const std::string& szCommand, bool bPlan, int nStatus)
{
    ordered_json json = {{"schema", kSchema}, {"program", "imgband"}, {"version", IMGBAND_VERSION}};
    if (!szCommand.empty())
        json["command"] = szCommand;
    if (bPlan)
        json["plan"] = true;
    json["ok"] = nStatus == static_cast<int>(ExitStatus::Done);
    json["exit_status"] = nStatus;
    return json;
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

ordered_json SettingsJson(const LibraryFacts& library, int nThreads)
{
    return {{"budget_bytes", library.nBudget},
            {"one_mapping_bytes", library.nOneMapping},
            {"band_cap_bytes", library.nBandCap},
            {"temporary_folder", library.szTemporaryFolder},
            {"threads", nThreads}};
}

ordered_json PeakJson(os::ResidentMemory peak)
{
    ordered_json json = ordered_json::object();
    if (peak.nPrivate >= 0)
        json["peak_private_bytes"] = peak.nPrivate;
    if (peak.nMapped >= 0)
        json["peak_mapped_bytes"] = peak.nMapped;
    return json;
}

ordered_json StepsJson(const std::vector<StepRecord>& steps, std::int64_t nBudget, bool bPlan)
{
    ordered_json json = ordered_json::array();
    for (const StepRecord& step : steps)
        json.push_back(StepJson(step, nBudget, bPlan));
    return json;
}

ordered_json HistoryJson(const std::vector<StepRecord>& steps, LONG nBudget, double fSeconds)
{
    Traffic traffic;
    ordered_json samples = ordered_json::array();
    samples.push_back(SampleJson({fSeconds, nBudget, {}}, {}, nBudget));
    ordered_json bands = ordered_json::array();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const StepRecord& step = steps[i];
        traffic += step.traffic;
        if (!step.history)
            continue;
        for (const StepHistory::Sample& sample : step.history->Samples())
            samples.push_back(SampleJson(sample, step.plan, nBudget));
        for (const StepHistory::Band& band : step.history->Bands())
            bands.push_back(BandJson(band, i, step.plan));
    }
    return {{"traffic",
             {{"read_bytes", traffic.nRead},
              {"written_bytes", traffic.nWritten},
              {"spilled_bytes", traffic.nSpilled}}},
            {"budget_over_time", samples},
            {"bands", bands}};
}

std::string JsonText(const ordered_json& json)
{
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}
