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

    /// The same lines, counted from the last line of an image of nHeight lines.
    LineRange Reversed(int nHeight) const { return {nHeight - 1 - nLast, nHeight - 1 - nFirst}; }
};

/// Makes lines of a destination image from lines of a source image, band by band. The result does not depend
/// on how the image is divided into bands. Pixels have four samples of one or two bytes.
class BandWork
{
public:
    BandWork() = default;
    virtual ~BandWork() = default;
    BandWork(const BandWork&) = delete;
    BandWork& operator=(const BandWork&) = delete;

    /// Lines of the source image that these lines of the destination are made from, inside the source.
    virtual LineRange SourceLines(LineRange dst) const = 0;

    /// Fills the lines of the destination's band, and shares them among the workers.
    /// @param src  a band of exactly SourceLines(lines of dst). Its frame of nFsize lines and pixels is
    ///             not painted yet where it lies beyond the image's edges; the work may paint it.
    virtual void Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const = 0;
};
