// Samples of another width, and other orders of lines and pixels.

#include "pixels/ConvertWork.h"

#include "pixels/BandLines.h"

ConvertWork::ConvertWork(LineFunction pConvert, int nHeight, bool bReversed)
    : m_pConvert(pConvert), m_nHeight(nHeight), m_bReversed(bReversed)
{
}

LineRange ConvertWork::SourceLines(LineRange dst) const
{
    return m_bReversed ? dst.Reversed(m_nHeight) : dst;
}

void ConvertWork::Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const
{
    workers.ForLines(dst.nBandLines, [&](int nFirst, int nEnd) {
        for (int k = nFirst; k < nEnd; ++k) {
            const int nFrom = m_bReversed ? dst.nBandLines - 1 - k : k;
            m_pConvert(PixelAddress(src, 0, nFrom), PixelAddress(dst, 0, k), dst.nWidth);
        }
    });
}
