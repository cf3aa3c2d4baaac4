#pragma once
// Enlargement by a whole factor.

#include "pixels/BandWork.h"
#include "values/EnlargeSettings.h"
#include "values/Picture.h"

/// Makes an image factor times as wide and as high. All four samples are treated alike.
class EnlargeWork final : public BandWork
{
public:
    /// @param source     the source's size
    /// @param bReversed  the source's last line comes first
    EnlargeWork(const EnlargeSettings& settings, ImageSize source, bool bReversed);

    LineRange SourceLines(LineRange dst) const override;
    void Run(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, const Workers& workers) const override;

private:
    template <class Sample>
    void RunLines(const T_ImageLrg_tag& src, const T_ImageLrg_tag& dst, int nFirst, int nEnd) const;

    /// The line of the source's band that holds a source line, which is counted from the end of the source
    /// that the destination begins with.
    int BandLine(const T_ImageLrg_tag& src, int nLine) const;

    EnlargeSettings m_settings;
    ImageSize m_source;
    bool m_bReversed;
};
