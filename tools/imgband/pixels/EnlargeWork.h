#pragma once
// Enlargement by a whole factor.

#include "pixels/BandWork.h"

enum class EnlargeOp
{
    Nearest, ///< every pixel becomes factor x factor equal ones
    Linear,  ///< between pixel centres: (x + 0.5) / factor - 0.5, edges replicated, rounded once, halves up
};

/// Makes an image factor times as wide and as high; all four samples alike.
class EnlargeWork final : public BandWork
{
public:
    /// @param nWidth, nHeight  of the source
    /// @param bReversed        the source's last line comes first
    EnlargeWork(EnlargeOp eOp, int nFactor, int nWidth, int nHeight, bool bReversed);

    LineRange SourceLines(LineRange dst) const override;
    void Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const override;

private:
    template <class Sample>
    void RunLines(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, int nFirst, int nEnd) const;

    /// A source line, counted from where the destination begins, as a line of the source's band.
    int BandLine(const T_ImageLrg_tag& src, int nLine) const;

    EnlargeOp m_eOp;
    int m_nFactor;
    int m_nWidth;
    int m_nHeight;
    bool m_bReversed;
};
