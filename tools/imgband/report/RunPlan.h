#pragma once
// What a run takes: where each image of each step lives, and how much of budget and disk that is.

#include "MemoryManager/ImageRecord.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// What an image is to its step.
enum class ImageRole
{
    Input,
    Output,
    Temporary,
};

/// How one image of a step is held.
struct ImagePlan
{
    std::string szImage; ///< what it is, with its format
    ImageRole eRole;
    T_ImageLrg_tag info;   ///< its geometry, frame and weight; of a picture file its size, without margins
    std::string szPlace;   ///< where its bytes are
    bool bFile = false;    ///< they are in a file, its own or a temporary one
    std::int64_t nBytes;   ///< bytes of the whole image there
    int nBandLines;        ///< lines of a band; all lines when it is reached whole
    int nBands;            ///< bands that it is worked on in
    std::int64_t nCharged; ///< bytes of the budget
    std::int64_t nTemporary = 0; ///< bytes of its temporary file
};

struct StepPlan
{
    std::string szStep;
    int nIpNo = 0; ///< process identifier, see ProcessIds.h
    std::vector<ImagePlan> images;
    std::int64_t nBudget = 0; ///< bytes of the budget in use once the step's images are planned

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
