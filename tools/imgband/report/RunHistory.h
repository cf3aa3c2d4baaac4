#pragma once
// What happened in the course of a run: the budget, the bands, and the bytes that went in and out.

#include "MemoryManager/MemoryManager.h"
#include "report/BoundedSeries.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

/// The free budget at a moment.
struct BudgetMoment
{
    std::chrono::steady_clock::time_point time;
    LONG nFree; ///< bytes

    static BudgetMoment Now() { return {std::chrono::steady_clock::now(), CImageObj::AskFreeMemory()}; }
};

/// Bytes that moved.
struct Traffic
{
    std::int64_t nRead = 0;    ///< of the input's stored lines, as often as they were read
    std::int64_t nWritten = 0; ///< of the output's
    std::int64_t nSpilled = 0; ///< of temporary files, each counted when it is made
};

/// Bytes of the budget that a step's images are charged with, in their order; 0 for those that are not there.
using Charges = std::array<LONG, 3>;

/// Kept for a report only: one that is not wanted takes no notes. Used by one thread.
class RunHistory
{
public:
    RunHistory(bool bWanted, std::chrono::steady_clock::time_point begin) : m_bWanted(bWanted), m_begin(begin)
    {
    }

    /// The library is set up: nothing is charged yet.
    void Begin(LONG nBudget);

    /// A step begins. The charges of its predecessor hold on.
    void BeginStep();

    /// Bands that the step will take.
    void ExpectBands(int nBands) { m_nBands = nBands; }

    /// The step's images are charged with this now, or were so then. Equal notes after each other are one.
    void NoteCharges(const Charges& charges) { NoteCharges(charges, BudgetMoment::Now()); }
    void NoteCharges(const Charges& charges, const BudgetMoment& moment);

    /// A band of the step's image of this number, which the step is told of already, is mapped.
    /// @return whether it is one of those that are kept: at most 8 of an image, first and last among them
    bool NoteBand(int nImage, const T_ImageLrg_tag& band);

    /// The step's next band will be noted.
    void BandDone() { ++m_nBand; }

    void Count(const Traffic& traffic);

    /// The run is over.
    void End();

    /// Adds "traffic", "budget_over_time" and "bands" to a report that has "steps".
    void AddTo(nlohmann::ordered_json& report) const;

private:
    struct Sample
    {
        double nSeconds;
        LONG nFree;
        Charges charges;

        /// Of two samples the fuller one counts.
        void Merge(const Sample& later)
        {
            if (later.nFree < nFree)
                *this = {nSeconds, later.nFree, later.charges};
        }
        bool SameAs(const Sample& other) const { return nFree == other.nFree && charges == other.charges; }
    };

    struct Band
    {
        int nImage;
        double nSeconds;
        int nTop;
        int nBottom;
        int nFrame;
    };

    struct Step
    {
        BoundedSeries<Sample, 256> samples;
        std::optional<Sample> last; ///< on its own too: what a step leaves is told exactly
        std::vector<Band> bands;
    };

    double SecondsAt(std::chrono::steady_clock::time_point time) const;
    nlohmann::ordered_json SampleJson(const Sample& sample, const nlohmann::ordered_json& images) const;

    bool m_bWanted;
    std::chrono::steady_clock::time_point m_begin;
    std::optional<LONG> m_nBudget;
    double m_nBudgetSeconds = 0; ///< when it was set
    std::vector<Step> m_steps;
    int m_nBands = 0; ///< of the step
    int m_nBand = 0;  ///< the one that is mapped now
    Traffic m_traffic;
};
