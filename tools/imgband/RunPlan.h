#pragma once
// What a run takes: where each image of each step lives, and how much of budget and disk that is.

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// How one image of a step is held.
struct ImagePlan
{
    std::string szImage;         ///< what it is, with its format
    std::string szPlace;         ///< where its bytes are
    std::int64_t nBytes;         ///< bytes of the whole image there
    int nBandLines;              ///< lines of a band; all lines when it is reached whole
    int nBands;                  ///< bands that it is worked on in
    std::int64_t nCharged;       ///< bytes of the budget
    std::int64_t nTemporary = 0; ///< bytes of its temporary file
};

struct StepPlan
{
    std::string szStep;
    std::vector<ImagePlan> images;
    std::int64_t nBudget; ///< bytes of the budget in use once the step's images are planned

    std::int64_t Charged() const;
    std::int64_t Temporary() const;
};

/// Number of bands of nBandLines lines.
int BandCount(int nHeight, int nBandLines);

std::string MiB(std::int64_t nBytes);

/// The step's images, a line for each.
std::string PlanText(const StepPlan& step);
nlohmann::ordered_json PlanJson(const StepPlan& step);

/// The steps of one run. A planned run and the run itself collect the same.
class RunPlan
{
public:
    void SetScheme(const std::string& szScheme) { m_szScheme = szScheme; }
    void Add(const StepPlan& step) { m_steps.push_back(step); }
    bool IsEmpty() const { return m_steps.empty(); }

    /// Adds the totals: scheme, temporary files at their peak (a step's files live together), and budget.
    void TellTotals(nlohmann::ordered_json& json) const;

    /// All of it as a table.
    std::string Table() const;

    /// The totals in one line.
    std::string Totals() const;

private:
    std::int64_t PeakTemporary() const;
    std::int64_t PeakBudget() const;

    std::string m_szScheme; ///< empty for commands without one
    std::vector<StepPlan> m_steps;
};
