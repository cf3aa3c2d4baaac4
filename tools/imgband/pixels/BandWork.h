#pragma once
// What a job does to the pixels of a mapped band.

#include "MemoryManager/MemoryManager.h"
#include "pixels/Workers.h"

/// Lines of an image, both inclusive.
struct LineRange
{
    int nFirst;
    int nLast;

    int Count() const { return nLast - nFirst + 1; }
};

/// Makes lines of a destination image from lines of a source image, band by band, with the same result
/// whatever the bands are. Pixels have four samples of one or two bytes.
class BandWork
{
public:
    BandWork() = default;
    virtual ~BandWork() = default;
    BandWork(const BandWork&) = delete;
    BandWork& operator=(const BandWork&) = delete;

    /// Lines of the source image that these lines of the destination are made from, inside the source.
    virtual LineRange SourceLines(LineRange dst) const = 0;

    /// Fills the lines of the destination's band.
    /// @param src  a band of exactly SourceLines(lines of dst); its frame of nFsize lines and pixels is not
    ///             painted yet beyond the image's edges, and may be painted here
    virtual void Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const = 0;
};
