#pragma once
// Filling a destination band by band.

#include "library/StepPlan.h"
#include "pixels/BandWork.h"
#include "schemes/Run.h"

#include <functional>

/// The bands of an image from its first line on.
struct Bands
{
    int nHeight; ///< of the image
    int nLines;  ///< of every band but the last

    int Count() const { return BandCount(nHeight, nLines); }
    LineRange At(int nBand) const;
};

/// Most source lines that one of the bands is made from.
int MostSourceLines(const BandWork& work, Bands bands);

/// The tallest bands of at most nDstLines lines that fnFits takes, given the lines of the destination's band
/// and the most of the source's; of one line if it takes none.
Bands FittingBands(const BandWork& work, int nHeight, int nDstLines,
                   const std::function<bool(int nDst, int nSrc)>& fnFits);

/// Who looks after the bands of a loop; a check throws Failure unless its result of a mapping or an end is
/// success.
class BandWatch
{
public:
    virtual ~BandWatch() = default;
    virtual void CheckSource(DWORD nCode) = 0;
    virtual void CheckDestination(DWORD nCode) = 0;

    /// Both bands are mapped; both are ended, and with them one band of the loop is done.
    virtual void NoteMapped(const T_ImageLrg_tag& from, const T_ImageLrg_tag& to) = 0;
    virtual void NoteEnded() = 0;
};

/// A band of an object, mapped; the destructor ends it if that is left to it.
class MappedBand
{
public:
    MappedBand(CImageObj& object, LineRange lines)
        : m_object(object), m_nResult(object.MapBandRange(lines.nFirst, lines.nLast, &m_band, 0)),
          m_bHeld(m_nResult == MM_SUCCESS)
    {
    }
    ~MappedBand()
    {
        if (m_bHeld)
            m_object.UnmapBand(0);
    }
    MappedBand(const MappedBand&) = delete;
    MappedBand& operator=(const MappedBand&) = delete;

    /// What the mapping returned.
    DWORD Result() const { return m_nResult; }
    const T_ImageLrg_tag& Record() const { return m_band; }

    DWORD End()
    {
        m_bHeld = false;
        return m_object.UnmapBand(0);
    }

private:
    CImageObj& m_object;
    T_ImageLrg_tag m_band = {};
    DWORD m_nResult;
    bool m_bHeld;
};

/// Makes all bands of dst from src. A planned run maps the bands and leaves them alone.
void FillFrom(const Run& run, CImageObj& src, CImageObj& dst, const BandWork& work, Bands bands,
              BandWatch& watch);
