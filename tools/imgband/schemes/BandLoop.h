#pragma once
// Filling a destination band by band.

#include "library/StepPlan.h"
#include "pixels/BandWork.h"
#include "schemes/Run.h"

#include <functional>

/// The bands that an image is divided into.
struct Bands
{
    int nHeight; ///< of the image
    int nLines;  ///< of every band but the last

    int Count() const { return BandCount(nHeight, nLines); }
    LineRange At(int nBand) const;
};

/// The most source lines that any of the bands is made from.
int MostSourceLines(const BandWork& work, Bands bands);

/// The tallest bands of at most nDstLines lines that fnFits accepts; bands of one line if it accepts none.
/// fnFits gets the lines of the destination's band, and the most lines of a band of the source.
Bands FittingBands(const BandWork& work, int nHeight, int nDstLines,
                   const std::function<bool(int nDst, int nSrc)>& fnFits);

/// Looks after the bands of a loop. A check gets the result of mapping or ending a band, and throws Failure
/// unless it is success.
class BandWatch
{
public:
    virtual ~BandWatch() = default;
    virtual void CheckSource(DWORD nCode) = 0;
    virtual void CheckDestination(DWORD nCode) = 0;

    /// Both bands are mapped. Both are ended, and one turn of the loop is done.
    virtual void NoteMapped(const T_ImageLrg_tag& from, const T_ImageLrg_tag& to) = 0;
    virtual void NoteEnded() = 0;
};

/// A mapped band of an object. One that was not ended is left to the object's destructor, which never writes
/// it.
class MappedBand
{
public:
    MappedBand(CImageObj& object, LineRange lines)
        : m_object(object), m_nResult(object.MapBandRange(lines.nFirst, lines.nLast, &m_band, 0))
    {
    }
    MappedBand(const MappedBand&) = delete;
    MappedBand& operator=(const MappedBand&) = delete;

    /// What the mapping returned.
    DWORD Result() const { return m_nResult; }
    const T_ImageLrg_tag& Record() const { return m_band; }

    DWORD End() { return m_object.UnmapBand(0); }

private:
    CImageObj& m_object;
    T_ImageLrg_tag m_band = {};
    DWORD m_nResult;
};

/// Makes all bands of dst from src. A planned run only maps the bands.
void FillFrom(const Run& run, CImageObj& src, CImageObj& dst, const BandWork& work, Bands bands,
              BandWatch& watch);
