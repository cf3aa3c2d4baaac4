#pragma once
// What a filter does.

#include "MemoryManager/MemoryManager.h"

#include <cstdint>

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
    int nMode;            ///< MM_FRAME_MODE; MM_FRAME_NONE for images without a frame
    std::uint32_t nColor; ///< 0xRRGGBB, for MM_FRAME_COLOR; scaled by 257 in 16-bit samples
};

struct FilterSettings
{
    FilterOp eOp = FilterOp::Box;
    int nRadius = 2;    ///< pixels, 1 to kLargestRadius
    double fAmount = 1; ///< of sharpening, at least 0
    FrameFill frame{MM_FRAME_REPLICATE, 0};
};
