#pragma once
// How the images of a step are held, and what they take of budget and disk.

#include "MemoryManager/MemoryManager.h"

#include <chrono>
#include <cstdint>
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
    T_ImageLrg_tag info;       ///< geometry, frame and weight; a picture file has only a size, and no margins
    std::string szPlace;       ///< where its bytes are, in words
    bool bFile = false;        ///< that is a file: the picture's or a temporary one
    std::int64_t nBytes = 0;   ///< bytes of the whole image there
    int nBandLines = 0;        ///< of a band; all lines when the image is reached whole
    int nBands = 0;            ///< in which it is worked on
    std::int64_t nCharged = 0; ///< bytes of the budget
    std::int64_t nTemporary = 0; ///< bytes of its temporary file
};

struct StepPlan
{
    std::string szStep;
    int nIpNo = 0;                 ///< process identifier, see ProcessIds.h
    std::vector<ImagePlan> images; ///< empty until they are planned
    std::int64_t nBudget = 0;      ///< bytes of the budget in use once the step's images are planned

    /// Sums over the images.
    std::int64_t Charged() const;
    std::int64_t Temporary() const;

    /// The first image of a role; null when there is none.
    const ImagePlan* Find(ImageRole eRole) const;
};

/// Number of bands of nBandLines lines, at least one of them.
int BandCount(int nHeight, int nBandLines);

/// The free budget at a moment.
struct BudgetMoment
{
    std::chrono::steady_clock::time_point time;
    LONG nFree; ///< bytes

    static BudgetMoment Now() { return {std::chrono::steady_clock::now(), CImageObj::AskFreeMemory()}; }
};
