// Taking notes of a run, and telling them.

#include "report/RunHistory.h"

#include "report/Seconds.h"

using nlohmann::ordered_json;

namespace {

constexpr std::int64_t kMostBands = 8; // of one image in one step

/// Whether a band is the first in its part of the way from the first band to the last.
bool IsKept(int nBand, int nBands)
{
    const std::int64_t nWay = nBands - 1;
    const auto fnPart = [nWay](std::int64_t n) { return n * (kMostBands - 1) / nWay; };
    return nBand == 0 || (nWay > 0 && fnPart(nBand) != fnPart(nBand - 1));
}

} // namespace

void RunHistory::Begin(LONG nBudget)
{
    m_nBudget = nBudget;
    m_nBudgetSeconds = SecondsAt(std::chrono::steady_clock::now());
}

void RunHistory::BeginStep()
{
    m_nBand = m_nBands = 0;
    if (m_bWanted)
        m_steps.emplace_back();
}

void RunHistory::NoteCharges(const Charges& charges, const BudgetMoment& moment)
{
    if (!m_bWanted)
        return;
    Step& step = m_steps.back();
    const Sample sample{SecondsAt(moment.time), moment.nFree, charges};
    if (step.last && sample.SameAs(*step.last))
        return;
    step.samples.Add(sample);
    step.last = sample;
}

bool RunHistory::NoteBand(int nImage, const T_ImageLrg_tag& band)
{
    if (!m_bWanted || !IsKept(m_nBand, m_nBands))
        return false;
    m_steps.back().bands.push_back(
        {nImage, SecondsAt(std::chrono::steady_clock::now()), band.nBandTop, band.nBandBottom, band.nFsize});
    return true;
}

void RunHistory::Count(const Traffic& traffic)
{
    m_traffic.nRead += traffic.nRead;
    m_traffic.nWritten += traffic.nWritten;
    m_traffic.nSpilled += traffic.nSpilled;
}

void RunHistory::End()
{
    if (m_bWanted && !m_steps.empty())
        NoteCharges({});
}

double RunHistory::SecondsAt(std::chrono::steady_clock::time_point time) const
{
    return SecondsBetween(m_begin, time);
}

// What the step's images do not account for is somebody's too.
ordered_json RunHistory::SampleJson(const Sample& sample, const ordered_json& images) const
{
    ordered_json charged = ordered_json::array();
    std::int64_t nOther = std::int64_t{*m_nBudget} - sample.nFree;
    for (std::size_t i = 0; i < sample.charges.size(); ++i) {
        if (sample.charges[i] == 0)
            continue;
        charged.push_back({{"image", images.at(i).at("image")}, {"bytes", sample.charges[i]}});
        nOther -= sample.charges[i];
    }
    if (nOther != 0)
        charged.push_back({{"image", "other"}, {"bytes", nOther}});
    return {{"seconds", sample.nSeconds}, {"free_bytes", sample.nFree}, {"charged", charged}};
}

void RunHistory::AddTo(ordered_json& report) const
{
    if (!m_bWanted || !m_nBudget)
        return;
    ordered_json samples = ordered_json::array();
    samples.push_back(SampleJson({m_nBudgetSeconds, *m_nBudget, {}}, {}));
    ordered_json bands = ordered_json::array();
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
        const Step& step = m_steps[i];
        const ordered_json& images = report.at("steps").at(i).at("images");
        for (const Sample& sample : step.samples.Points())
            samples.push_back(SampleJson(sample, images));
        if (step.last && !step.last->SameAs(step.samples.Points().back()))
            samples.push_back(SampleJson(*step.last, images));
        for (const Band& band : step.bands)
            bands.push_back({{"step", i},
                             {"image", band.nImage},
                             {"seconds", band.nSeconds},
                             {"top", band.nTop},
                             {"bottom", band.nBottom},
                             {"frame", band.nFrame}});
    }
    report["traffic"] = {{"read_bytes", m_traffic.nRead},
                         {"written_bytes", m_traffic.nWritten},
                         {"spilled_bytes", m_traffic.nSpilled}};
    report["budget_over_time"] = samples;
    report["bands"] = bands;
}
