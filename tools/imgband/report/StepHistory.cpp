// Taking notes of a step.

#include "report/StepHistory.h"

#include "report/Seconds.h"

namespace {

constexpr std::int64_t kMostBands = 8; // of one image in one step

/// The way from the first band to the last has kMostBands - 1 parts. Kept are the first band, and every band
/// that is the first to reach another part.
bool IsKept(int nBand, int nBands)
{
    const std::int64_t nWay = nBands - 1;
    const auto fnPart = [nWay](std::int64_t n) { return n * (kMostBands - 1) / nWay; };
    return nBand == 0 || (nWay > 0 && fnPart(nBand) != fnPart(nBand - 1));
}

} // namespace

Traffic& Traffic::operator+=(const Traffic& more)
{
    nRead += more.nRead;
    nWritten += more.nWritten;
    nSpilled += more.nSpilled;
    return *this;
}

void StepHistory::NoteCharges(const Charges& charges, const BudgetMoment& moment)
{
    const Sample sample{SecondsAt(moment.time), moment.nFree, charges};
    if (m_last && sample.SameAs(*m_last))
        return;
    m_samples.Add(sample);
    m_last = sample;
}

bool StepHistory::NoteBand(ImageRole eRole, const T_ImageLrg_tag& band, int nBand, int nBands)
{
    if (!IsKept(nBand, nBands))
        return false;
    m_bands.push_back(
        {eRole, SecondsAt(std::chrono::steady_clock::now()), band.nBandTop, band.nBandBottom, band.nFsize});
    return true;
}

std::vector<StepHistory::Sample> StepHistory::Samples() const
{
    std::vector<Sample> samples = m_samples.Points();
    if (m_last && !m_last->SameAs(samples.back()))
        samples.push_back(*m_last);
    return samples;
}

double StepHistory::SecondsAt(std::chrono::steady_clock::time_point time) const
{
    return SecondsBetween(m_begin, time);
}
