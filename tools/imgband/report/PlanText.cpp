// The words and the table of a plan.

#include "report/PlanText.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

std::string BandText(const ImagePlan& plan)
{
    return plan.nBands == 1 ? "whole"
                            : fmt::format("{} bands of {} line{}", plan.nBands, plan.nBandLines,
                                          plan.nBandLines == 1 ? "" : "s");
}

const char* RoleName(ImageRole eRole)
{
    static constexpr const char* kNames[] = {"input", "output", "temporary"};
    return kNames[static_cast<int>(eRole)];
}

const char* StateName(const ImagePlan& plan)
{
    if (plan.nBandLines < plan.info.nHeight)
        return "banded";
    return plan.bFile ? "mapped whole" : "memory";
}

} // namespace

std::string MiB(std::int64_t nBytes)
{
    return nBytes < 0 ? "unknown" : fmt::format("{:.1f} MiB", static_cast<double>(nBytes) / (1 << 20));
}

std::string PlanText(const StepPlan& step)
{
    std::string szText;
    for (const ImagePlan& plan : step.images)
        szText += fmt::format("    {:<22} {:>12} in {}, {}, {} charged\n", plan.szImage, MiB(plan.nBytes),
                              plan.szPlace, BandText(plan), MiB(plan.nCharged));
    return szText;
}

nlohmann::ordered_json PlanJson(const StepPlan& step)
{
    nlohmann::ordered_json images = nlohmann::ordered_json::array();
    for (const ImagePlan& plan : step.images)
        images.push_back({{"image", plan.szImage},
                          {"role", RoleName(plan.eRole)},
                          {"place", plan.szPlace},
                          {"state", StateName(plan)},
                          {"width", plan.info.nWidth},
                          {"height", plan.info.nHeight},
                          {"frame", plan.info.nFsize},
                          {"ratio", plan.info.nRatio},
                          {"bytes", plan.nBytes},
                          {"band_lines", plan.nBandLines},
                          {"bands", plan.nBands},
                          {"charged_bytes", plan.nCharged},
                          {"temporary_bytes", plan.nTemporary}});
    return images;
}

Totals TotalsOf(const std::vector<StepRecord>& steps)
{
    Totals most;
    for (const StepRecord& step : steps) {
        most.nTemporary = std::max(most.nTemporary, step.plan.Temporary());
        most.nBudget = std::max(most.nBudget, step.plan.nBudget);
    }
    return most;
}

std::string TotalsText(const Totals& totals)
{
    return fmt::format("peak of the budget {}, temporary files at most {} at a time", MiB(totals.nBudget),
                       MiB(totals.nTemporary));
}

std::string PlanTable(const std::string& szScheme, const std::vector<StepRecord>& steps)
{
    constexpr const char* kRow = "{:<8} {:<18} {:<28} {:>11} {:>7} {:>14} {:>14}\n";
    std::string szTable = szScheme.empty() ? "" : fmt::format("scheme: {}\n", szScheme);
    szTable += fmt::format(kRow, "step", "image", "place", "band lines", "bands", "charged", "temporary");
    for (const StepRecord& step : steps)
        for (const ImagePlan& plan : step.plan.images)
            szTable += fmt::format(kRow, step.plan.szStep, plan.szImage, plan.szPlace, plan.nBandLines,
                                   plan.nBands, plan.nCharged, plan.nTemporary);
    const Totals totals = TotalsOf(steps);
    return szTable +
           fmt::format("{} (bytes: {} and {})\n", TotalsText(totals), totals.nBudget, totals.nTemporary);
}
