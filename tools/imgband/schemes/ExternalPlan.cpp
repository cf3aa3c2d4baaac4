// What a plan tells of picture files.

#include "schemes/ExternalPlan.h"

#include "pictures/Formats.h"

#include <fmt/format.h>

namespace {

const char* PlaceName(Access eAccess)
{
    static constexpr const char* kNames[] = {"file", "the tool's memory", "file, mapped"};
    return kNames[static_cast<int>(eAccess)];
}

/// A picture file has no margins.
T_ImageLrg_tag PictureInfo(Format eFormat, ImageSize size)
{
    T_ImageLrg_tag info = {};
    info.nWidth = info.nAllocWidth = size.nWidth;
    info.nHeight = info.nAllocHeight = size.nHeight;
    info.nSampleBytes = SampleBytes(eFormat);
    info.nSamples = SampleCount(eFormat);
    info.nPixelBytes = info.nSampleBytes * info.nSamples;
    info.nRatio = 100;
    return info;
}

} // namespace

ImagePlan ExternalPlan(ImageRole eRole, Format eFormat, ImageSize size, Access eAccess)
{
    return {.szImage =
                fmt::format("{} {}", eRole == ImageRole::Input ? "input" : "output", FormatName(eFormat)),
            .eRole = eRole,
            .info = PictureInfo(eFormat, size),
            .szPlace = PlaceName(eAccess),
            .bFile = eAccess != Access::Memory,
            .nBytes = LineBytes(eFormat, size.nWidth) * size.nHeight};
}
