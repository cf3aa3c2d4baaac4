#pragma once
// Which picture `imgband make` paints.

#include "values/Picture.h"

#include <cstdint>

enum class Pattern
{
    Photo,    ///< a landscape
    Gradient, ///< ramps of every sample
    Noise,    ///< random samples
};

/// Equal settings give equal pictures, on every machine.
struct SceneSettings
{
    ImageSize size{1, 1};
    Pattern ePattern = Pattern::Photo;
    std::uint64_t nSeed = 1;
};
