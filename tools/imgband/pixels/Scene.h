#pragma once
// The pictures that the tool can make.

#include "values/SceneSettings.h"

#include <cstdint>
#include <memory>

/// A picture that is painted line by line, in any order; each line depends on size, seed and its number only.
class Scene
{
public:
    static constexpr int kSamples = 4; ///< blue, green, red, alpha

    virtual ~Scene() = default;

    /// Fills one line: width * kSamples samples of 16 bits.
    virtual void PaintLine(int nLine, std::uint16_t* pLine) = 0;
};

std::unique_ptr<Scene> MakeScene(const SceneSettings& settings);
