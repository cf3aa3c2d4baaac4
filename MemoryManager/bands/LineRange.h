#pragma once
// Runs of image lines, and which of them a band of limited height covers.
//
// Internal.

#include <algorithm>
#include <cstdint>

/// The view slot of operations that go through an image band by band themselves.
inline constexpr int kSlot = 0;

/// Lines of an image, both inclusive; no lines when nLast lies above nFirst.
struct LineRange
{
    int nFirst;
    int nLast;

    std::int64_t Count() const { return std::int64_t{nLast} - nFirst + 1; }
};

/// The band of at most nLines lines that starts at nLine and ends at the image's last line at the latest.
inline LineRange BandDownFrom(int nLine, int nLines, int nHeight)
{
    return {nLine, nLine + std::min(nLines, nHeight - nLine) - 1};
}

/// The band of at most nLines lines that ends at nLine and starts at the image's first line at the earliest.
inline LineRange BandUpTo(int nLine, int nLines)
{
    return {nLine - std::min(nLines, nLine + 1) + 1, nLine};
}
