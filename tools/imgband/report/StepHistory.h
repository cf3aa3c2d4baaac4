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
    std::int64_t nRead = 0;    ///< of stored lines of the input, counted each time they are read
    std::int64_t nWritten = 0; ///< of stored lines of the output
    std::int64_t nSpilled = 0; ///< of temporary files, counted when they are made

    Traffic& operator+=(const Traffic& more);
};

/// Bytes of the budget that a step's images are charged with; 0 for a role without an image.
struct Charges
{
    LONG nInput = 0;
    LONG nOutput = 0;
    LONG nTemporary = 0;

    bool operator==(const Charges&) const = default;
};

/// The notes of a step that a report tells. Used by one thread.
class StepHistory
{
public:
    struct Sample
    {
        double fSeconds; ///< from the start of the run
        LONG nFree;      ///< bytes of the budget
        Charges charges;

        /// The sample with less free budget stays.
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

    /// What the step's images are charged with at the moment. Equal notes in a row count as one.
    void NoteCharges(const Charges& charges, const BudgetMoment& moment);

    /// A band of the step's image of this role is mapped. At most 8 bands of an image are kept, the first and
    /// the last among them.
    /// @param nBand  its number among the step's nBands
    /// @return whether this one is kept
    bool NoteBand(ImageRole eRole, const T_ImageLrg_tag& band, int nBand, int nBands);

    /// In the order of time. The last sample is the last note, even where earlier ones were merged.
    std::vector<Sample> Samples() const;
    const std::vector<Band>& Bands() const { return m_bands; }

private:
    double SecondsAt(std::chrono::steady_clock::time_point time) const;

    std::chrono::steady_clock::time_point m_begin;
    BoundedSeries<Sample, 256> m_samples;
    std::optional<Sample> m_last; ///< also kept by itself, so that it is told exactly
    std::vector<Band> m_bands;
};
