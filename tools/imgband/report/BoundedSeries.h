#pragma once
// A series over time whose length does not grow with the run.

#include <cstddef>
#include <vector>

/// Keeps at most kMost points. Each stands for the same number of samples; when there are too many, every two
/// become one by Sample::Merge(later), which keeps its own time and the most of both.
///
/// Takes its memory once, so that adding never fails.
template <class Sample, std::size_t kMost> class BoundedSeries
{
    static_assert(kMost % 2 == 0);

public:
    BoundedSeries() { m_points.reserve(kMost); }

    void Add(const Sample& sample)
    {
        if (m_nInLast < m_nPerPoint) {
            m_points.back().Merge(sample);
            ++m_nInLast;
            return;
        }
        if (m_points.size() == kMost)
            HalveResolution();
        m_points.push_back(sample);
        m_nInLast = 1;
    }

    const std::vector<Sample>& Points() const { return m_points; }

private:
    void HalveResolution()
    {
        for (std::size_t i = 0; i < kMost / 2; ++i) {
            m_points[i] = m_points[2 * i];
            m_points[i].Merge(m_points[2 * i + 1]);
        }
        m_points.resize(kMost / 2, m_points[0]);
        m_nPerPoint *= 2;
    }

    std::vector<Sample> m_points;
    std::size_t m_nPerPoint = 1;
    std::size_t m_nInLast = 1; ///< samples in the last point
};
