#pragma once
// The pictures that the tool can make.

#include "values/SceneSettings.h"

#include <cstdint>
#include <memory>

/// A picture that is painted line by line, in any order. A line depends on the settings and its number only.
class Scene
{
public:
    virtual ~Scene() = default;

    /// Fills one line: four samples of 16 bits a pixel, blue, green, red and alpha.
    virtual void PaintLine(int nLine, std::uint16_t* pLine) = 0;
};

/// The scene of the settings, with memory for a few lines. Never null.
std::unique_ptr<Scene> MakeScene(const SceneSettings& settings);
