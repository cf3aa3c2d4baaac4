#pragma once
// Neighbourhood filters: every destination pixel is made from the source pixels around it.

#include "pixels/BandWork.h"
#include "values/FilterSettings.h"

#include <vector>

/// Filters the first three samples of every pixel and carries the fourth. The source band has a frame as wide
/// as the radius; Run paints it where it lies beyond the image's edges.
class FilterWork final : public BandWork
{
public:
    explicit FilterWork(const FilterSettings& settings);

    LineRange SourceLines(LineRange dst) const override { return dst; }
    void Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const override;

private:
    FilterSettings m_settings;
    std::vector<double> m_weights; ///< of the distances 0 to radius, normalised; empty for Box
};
