#pragma once
// Samples of another width, and other orders of lines and pixels.

#include "pixels/BandWork.h"
#include "pixels/LineConversion.h"

/// Every destination line is one source line, converted.
class ConvertWork final : public BandWork
{
public:
    /// @param pConvert   converts one line; it may reverse the line's pixels
    /// @param nHeight    of both images
    /// @param bReversed  the source's last line becomes the destination's first
    ConvertWork(LineFunction pConvert, int nHeight, bool bReversed);

    LineRange SourceLines(LineRange dst) const override;
    void Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const override;

private:
    LineFunction m_pConvert;
    int m_nHeight;
    bool m_bReversed;
};
