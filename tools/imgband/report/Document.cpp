// Making the parts of a run's JSON object.

#include "report/Document.h"

#include "MemoryManager/ResultCodes.h"
#include "report/LibraryTables.h"

using nlohmann::ordered_json;

namespace {

constexpr int kSchema = 1;

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

ordered_json PeakJson(os::ResidentMemory peak)
{
    ordered_json json = ordered_json::object();
    if (peak.nPrivate >= 0)
        json["peak_private_bytes"] = peak.nPrivate;
    if (peak.nMapped >= 0)
        json["peak_mapped_bytes"] = peak.nMapped;
    return json;
}

ordered_json StepJson(const StepRecord& step, std::int64_t nBudget, bool bPlan)
{
    ordered_json json = {{"step", step.plan.szStep},
                         {"process_id", step.plan.nIpNo},
                         {"process_name", ProcessName(step.plan.nIpNo)},
                         {"process_english", ProcessEnglish(step.plan.nIpNo)}};
    if (!step.bFinished)
        json["unfinished"] = true;
    if (!bPlan) {
        json["begin_seconds"] = step.nBegin;
        json["seconds"] = step.nSeconds;
        json.update(PeakJson(step.peak));
    }
    if (!step.plan.images.empty()) {
        json["budget_used_bytes"] = step.plan.nBudget;
        json["budget_free_bytes"] = nBudget - step.plan.nBudget;
    }
    json["images"] = PlanJson(step.plan);
    return json;
}

std::string JsonText(const ordered_json& json)
{
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}
