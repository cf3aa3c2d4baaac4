// What a report tells over time.

#include "page/History.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double kShortestRun = 1e-6; // seconds

/// Calls fnColumn with the samples of each column that has some, and with where the column ends.
template <class Sample, class Column>
void ForEachColumn(const std::vector<Sample>& samples, double fColumn, Column fnColumn)
{
    for (auto first = samples.begin(); first != samples.end();) {
        const double fEnd = (std::floor(first->fSeconds / fColumn) + 1) * fColumn;
        const auto last = std::find_if(first + 1, samples.end(),
                                       [fEnd](const Sample& sample) { return sample.fSeconds >= fEnd; });
        fnColumn(first, last, fEnd);
        first = last;
    }
}

std::size_t PlaceOf(std::vector<std::string>& images, const std::string& szImage)
{
    const auto found = std::find(images.begin(), images.end(), szImage);
    if (found != images.end())
        return static_cast<std::size_t>(found - images.begin());
    images.push_back(szImage);
    return images.size() - 1;
}

} // namespace

double BudgetHistory::Sample::Charged() const
{
    return std::accumulate(charged.begin(), charged.end(), 0.0);
}

std::vector<StepSpan> StepSpans(const Node& report)
{
    std::vector<StepSpan> spans;
    const Node steps = report["steps"];
    for (std::size_t i = 0; i < steps.Count(); ++i) {
        const Node step = steps.Item(i);
        const double fBegin = step["begin_seconds"].Number();
        if (step["begin_seconds"].IsNumber() && step["seconds"].IsNumber())
            spans.push_back({step["step"].String(), fBegin, fBegin + step["seconds"].Number()});
    }
    return spans;
}

BudgetHistory BudgetOverTime(const Node& report)
{
    BudgetHistory history;
    const Node times = report["budget_over_time"];
    for (std::size_t i = 0; i < times.Count(); ++i) {
        const Node time = times.Item(i), charged = time["charged"];
        BudgetHistory::Sample sample{time["seconds"].Number(), time["free_bytes"].Number(), {}};
        sample.charged.resize(history.images.size());
        for (std::size_t k = 0; k < charged.Count(); ++k) {
            const std::size_t nImage = PlaceOf(history.images, charged.Item(k)["image"].String());
            sample.charged.resize(history.images.size());
            sample.charged[nImage] += charged.Item(k)["bytes"].Number();
        }
        history.samples.push_back(std::move(sample));
    }
    for (BudgetHistory::Sample& sample : history.samples)
        sample.charged.resize(history.images.size());
    return history;
}

std::vector<MemorySample> MemoryOverTime(const Node& report, const std::string& szKey)
{
    std::vector<MemorySample> samples;
    const Node times = report["memory_over_time"];
    for (std::size_t i = 0; i < times.Count(); ++i)
        if (times.Item(i)[szKey].IsNumber())
            samples.push_back({times.Item(i)["seconds"].Number(), times.Item(i)[szKey].Number()});
    return samples;
}

double EndOfRun(const Node& report)
{
    double fEnd = std::max(report["seconds"].Number(), kShortestRun);
    for (const StepSpan& span : StepSpans(report))
        fEnd = std::max(fEnd, span.fEnd);
    for (const char* pszTimes : {"budget_over_time", "memory_over_time"})
        for (std::size_t i = 0; i < report[pszTimes].Count(); ++i)
            fEnd = std::max(fEnd, report[pszTimes].Item(i)["seconds"].Number());
    return fEnd;
}

std::vector<BudgetHistory::Sample> Thinned(const std::vector<BudgetHistory::Sample>& samples, double fColumn)
{
    std::vector<BudgetHistory::Sample> kept;
    const auto LessFree = [](const auto& a, const auto& b) { return a.fFree < b.fFree; };
    ForEachColumn(samples, fColumn, [&](auto first, auto last, double fEnd) {
        if (!kept.empty() && kept.back().fSeconds >= fEnd - fColumn)
            kept.pop_back(); // it held for no time
        kept.push_back(*std::min_element(first, last, LessFree));
        if (last - first == 1)
            return;
        kept.back().fSeconds = std::max(samples.front().fSeconds, fEnd - fColumn);
        kept.push_back(*(last - 1));
        kept.back().fSeconds = fEnd;
    });
    return kept;
}

std::vector<MemorySample> Thinned(const std::vector<MemorySample>& samples, double fColumn)
{
    std::vector<MemorySample> kept;
    const auto Lower = [](const auto& a, const auto& b) { return a.fBytes < b.fBytes; };
    ForEachColumn(samples, fColumn, [&](auto first, auto last, double) {
        const auto [lowest, highest] = std::minmax_element(first, last, Lower);
        kept.push_back(*first);
        for (auto sample : {std::min(lowest, highest), std::max(lowest, highest), last - 1})
            if (sample != first)
                kept.push_back(*sample);
    });
    return kept;
}
