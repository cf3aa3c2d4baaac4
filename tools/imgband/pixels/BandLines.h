#pragma once
// Addresses of samples in a mapped band.

#include "MemoryManager/MemoryManager.h"

#include <cstddef>

/// Samples of a pixel: blue, green, red and a fourth.
inline constexpr int kSamples = 4;

/// Address of pixel x of band line k. Both may lie in the band's frame: from -nFsize on.
inline unsigned char* PixelAddress(const T_ImageLrg_tag& band, int x, int k)
{
    return band.pImage + std::ptrdiff_t{k} * band.nLineBytes + std::ptrdiff_t{x} * band.nPixelBytes;
}

/// The same as an address of samples.
template <class Sample> Sample* SampleAddress(const T_ImageLrg_tag& band, int x, int k)
{
    return reinterpret_cast<Sample*>(PixelAddress(band, x, k));
}

/// Samples from one band line to the next.
template <class Sample> std::ptrdiff_t SampleStep(const T_ImageLrg_tag& band)
{
    return band.nLineBytes / static_cast<std::ptrdiff_t>(sizeof(Sample));
}
