#pragma once
// Neighbourhood filters: every destination pixel is made from the source pixels around it.

#include "pixels/BandWork.h"

#include <cstdint>
#include <vector>

enum class FilterOp
{
    Box,     ///< mean of (2 radius + 1)^2 pixels, rounded to nearest, halves up
    Gauss,   ///< weights exp(-d^2 / (2 sigma^2)) in both directions, sigma = radius / 2, cut at the radius
    Sharpen, ///< v + amount * (v - gauss)
};

/// Largest radius: the margins of an imported image have 16 pixels.
inline constexpr int kLargestRadius = 16;

/// What lies beyond the image's edges.
struct FrameFill
{
    int nMode;            ///< MM_FRAME_MODE, 1 to 4
    std::uint32_t nColor; ///< 0xRRGGBB, for mode 4; scaled by 257 in 16-bit samples
};

struct FilterSettings
{
    FilterOp eOp;
    int nRadius; ///< 1 to kLargestRadius
    double nAmount;
    FrameFill frame;
};

/// Filters the first three samples of every pixel and carries the fourth. The source band has a frame of the
/// radius, which Run paints where it lies beyond the image's edges.
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

/// Paints the frame of a band, its nFsize lines and pixels, wherever it lies beyond the image's edges. Frame
/// lines inside the image hold the image's pixels already.
void PaintFrame(const T_ImageLrg_tag& band, const FrameFill& fill, const Workers& workers);

/// Copies a band with the lines of its frame into a buffer of the same geometry and gives the record of the
/// copy. bMirrored: the pixels of every line come out in reverse order, for which the lines' frame pixels do
/// not matter.
/// @param buffer  from AllcImgBufLrg, for at least as many lines and with margins of the frame's size
T_ImageLrg_tag CopyFramedBand(const T_ImageLrg_tag& band, const T_ImageLrg_tag& buffer, bool bMirrored,
                              const Workers& workers);
