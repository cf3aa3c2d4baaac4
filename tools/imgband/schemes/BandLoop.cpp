// Choosing bands, and going through them.

#include "schemes/BandLoop.h"

#include <algorithm>

LineRange Bands::At(int nBand) const
{
    const int nFirst = nBand * nLines;
    return {nFirst, nFirst + std::min(nLines, nHeight - nFirst) - 1};
}

int MostSourceLines(const BandWork& work, Bands bands)
{
    int nMost = 0;
    for (int i = 0; i < bands.Count(); ++i)
        nMost = std::max(nMost, work.SourceLines(bands.At(i)).Count());
    return nMost;
}

Bands FittingBands(const BandWork& work, int nHeight, int nDstLines,
                   const std::function<bool(int nDst, int nSrc)>& fnFits)
{
    const auto fnFit = [&](int nLines) { return fnFits(nLines, MostSourceLines(work, {nHeight, nLines})); };
    int nTooMany = std::clamp(nDstLines, 1, nHeight);
    if (fnFit(nTooMany))
        return {nHeight, nTooMany};
    int nLines = 1;
    while (nTooMany - nLines > 1) {
        const int nTried = nLines + (nTooMany - nLines) / 2;
        if (fnFit(nTried))
            nLines = nTried;
        else
            nTooMany = nTried;
    }
    return {nHeight, nLines};
}

void FillFrom(const Run& run, CImageObj& src, CImageObj& dst, const BandWork& work, Bands bands,
              BandWatch& watch)
{
    for (int i = 0; i < bands.Count(); ++i) {
        const LineRange lines = bands.At(i);
        MappedBand from(src, work.SourceLines(lines));
        watch.CheckSource(from.Result());
        MappedBand to(dst, lines);
        watch.CheckDestination(to.Result());
        watch.NoteMapped(from.Record(), to.Record());
        if (!run.settings.bPlan)
            work.Run(from.Record(), to.Record(), run.workers);
        watch.CheckDestination(to.End());
        watch.CheckSource(from.End());
        watch.NoteEnded();
    }
}
