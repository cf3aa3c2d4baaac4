#pragma once
// What happened in the course of a step: the budget, the bands, and the bytes that went in and out.

#include "library/StepPlan.h"
#include "report/BoundedSeries.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Bytes that moved.
struct Traffic
{
    std::int64_t nRead = 0;    ///< of the input's stored lines, as often as they were read
    std::int64_t nWritten = 0; ///< of the output's
    std::int64_t nSpilled = 0; ///< of temporary files, each counted when it is made

    Traffic& operator+=(const Traffic& more);
};

/// Bytes of the budget that a step's images are charged with; 0 for those that are not there.
struct Charges
{
    LONG nInput = 0;
    LONG nOutput = 0;
    LONG nTemporary = 0;

    bool operator==(const Charges&) const = default;
};

/// Notes for a report. Used by one thread.
class StepHistory
{
public:
    struct Sample
    {
        double fSeconds; ///< from the start of the run
        LONG nFree;      ///< bytes of the budget
        Charges charges;

        /// Of two samples the fuller one counts.
        void Merge(const Sample& later)
        {
            if (later.nFree < nFree)
                *this = later;
        }
        bool SameAs(const Sample& other) const { return nFree == other.nFree && charges == other.charges; }
    };

    struct Band
    {
        ImageRole eRole;
        double fSeconds; ///< from the start of the run
        int nTop;
        int nBottom;
        int nFrame; ///< lines and pixels
    };

    /// @param begin  of the run
    explicit StepHistory(std::chrono::steady_clock::time_point begin) : m_begin(begin) {}

    /// Bands that the step takes. To be told ahead of the first one.
    void ExpectBands(int nBands) { m_nBands = nBands; }

    /// The step's images are charged with this at the moment. Equal notes after each other are one.
    void NoteCharges(const Charges& charges, const BudgetMoment& moment);

    /// A band of the step's image of this role is mapped.
    /// @return whether it is one of those that are kept: at most 8 of an image, first and last among them
    bool NoteBand(ImageRole eRole, const T_ImageLrg_tag& band);

    /// The step's next band will be noted.
    void BandDone() { ++m_nBand; }

    /// In the order of time; the last one is that of the last note.
    std::vector<Sample> Samples() const;
    const std::vector<Band>& Bands() const { return m_bands; }

private:
    double SecondsAt(std::chrono::steady_clock::time_point time) const;

    std::chrono::steady_clock::time_point m_begin;
    BoundedSeries<Sample, 256> m_samples;
    std::optional<Sample> m_last; ///< on its own too: what a step leaves is told exactly
    std::vector<Band> m_bands;
    int m_nBands = 0;
    int m_nBand = 0; ///< the one that is mapped now
};
