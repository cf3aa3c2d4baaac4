#pragma once
// A step of any images that is only planned.

#include "values/Picture.h"

#include <vector>

/// An image of the step.
struct StepImage
{
    ImageSize size;
    Format eFormat;
    int nRatio = 100; ///< weight in percent
    int nFrame = 0;   ///< pixels
};

struct StepRequest
{
    std::vector<StepImage> inputs;
    std::vector<StepImage> outputs; ///< at most one
    std::vector<StepImage> temporaries;
    int nMaps = 1;    ///< band buffers of each input and temporary image
    int nMinBand = 1; ///< smallest band in lines
};
