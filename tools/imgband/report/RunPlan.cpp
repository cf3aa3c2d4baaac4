// The plan's numbers and words.

#include "report/RunPlan.h"

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

template <class Part> std::int64_t Sum(const std::vector<ImagePlan>& images, Part part)
{
    std::int64_t nSum = 0;
    for (const ImagePlan& plan : images)
        nSum += plan.*part;
    return nSum;
}

} // namespace

std::int64_t StepPlan::Charged() const
{
    return Sum(images, &ImagePlan::nCharged);
}

std::int64_t StepPlan::Temporary() const
{
    return Sum(images, &ImagePlan::nTemporary);
}

int BandCount(int nHeight, int nBandLines)
{
    return static_cast<int>((std::int64_t{nHeight} + nBandLines - 1) / nBandLines);
}

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

std::int64_t RunPlan::PeakTemporary() const
{
    std::int64_t nPeak = 0;
    for (const StepPlan& step : m_steps)
        nPeak = std::max(nPeak, step.Temporary());
    return nPeak;
}

std::int64_t RunPlan::PeakBudget() const
{
    std::int64_t nPeak = 0;
    for (const StepPlan& step : m_steps)
        nPeak = std::max(nPeak, step.nBudget);
    return nPeak;
}

void RunPlan::TellTotals(nlohmann::ordered_json& json) const
{
    if (!m_szScheme.empty())
        json["scheme"] = m_szScheme;
    json["temporary_bytes"] = PeakTemporary();
    json["peak_budget_bytes"] = PeakBudget();
}

std::string RunPlan::Totals() const
{
    return fmt::format("peak of the budget {}, temporary files at most {} at a time", MiB(PeakBudget()),
                       MiB(PeakTemporary()));
}

std::string RunPlan::Table() const
{
    constexpr const char* kRow = "{:<8} {:<18} {:<28} {:>11} {:>7} {:>14} {:>14}\n";
    std::string szTable = m_szScheme.empty() ? "" : fmt::format("scheme: {}\n", m_szScheme);
    szTable += fmt::format(kRow, "step", "image", "place", "band lines", "bands", "charged", "temporary");
    for (const StepPlan& step : m_steps)
        for (const ImagePlan& plan : step.images)
            szTable += fmt::format(kRow, step.szStep, plan.szImage, plan.szPlace, plan.nBandLines,
                                   plan.nBands, plan.nCharged, plan.nTemporary);
    return szTable + fmt::format("{} (bytes: {} and {})\n", Totals(), PeakBudget(), PeakTemporary());
}
