// Sums and searches over the images of a step.

#include "library/StepPlan.h"

#include <algorithm>

std::int64_t StepPlan::Charged() const
{
    std::int64_t nSum = 0;
    for (const ImagePlan& image : images)
        nSum += image.nCharged;
    return nSum;
}

std::int64_t StepPlan::Temporary() const
{
    std::int64_t nSum = 0;
    for (const ImagePlan& image : images)
        nSum += image.nTemporary;
    return nSum;
}

const ImagePlan* StepPlan::Find(ImageRole eRole) const
{
    const auto image = std::find_if(images.begin(), images.end(),
                                    [eRole](const ImagePlan& one) { return one.eRole == eRole; });
    return image != images.end() ? &*image : nullptr;
}

int BandCount(int nHeight, int nBandLines)
{
    return static_cast<int>((std::int64_t{nHeight} + nBandLines - 1) / nBandLines);
}
