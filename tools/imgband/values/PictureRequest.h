#pragma once
// Picture files as the user names and describes them.

#include "values/Picture.h"

#include <optional>
#include <string>

/// The picture to read. Format and size are needed for raw pictures; a bitmap must agree with them.
struct InputRequest
{
    std::string szPath;
    std::optional<Format> eFormat;
    std::optional<ImageSize> size;
};

/// The picture to write. Without a format, the ending of its name decides.
struct OutputRequest
{
    std::string szPath;
    std::optional<Format> eFormat;
};
