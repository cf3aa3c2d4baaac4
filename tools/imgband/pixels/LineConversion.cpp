// The line functions: one loop, with the change of one sample as its parameter.

#include "pixels/LineConversion.h"

#include "pixels/BandLines.h"

#include <algorithm>
#include <cstdint>

namespace {

template <class Src, class Dst = Src> constexpr Dst Same(Src nValue)
{
    return nValue;
}

constexpr std::uint16_t Widen(std::uint8_t nValue)
{
    return static_cast<std::uint16_t>(nValue * 257);
}

constexpr std::uint8_t Narrow(std::uint16_t nValue)
{
    return NarrowSample(nValue);
}

constexpr std::uint8_t Clamp(std::uint16_t nValue)
{
    return static_cast<std::uint8_t>(std::min<std::uint16_t>(nValue, 255));
}

template <class Src, class Dst, Dst (*Change)(Src), bool bTurned>
void ConvertLine(const unsigned char* pSrcBytes, unsigned char* pDstBytes, int nPixels)
{
    const Src* pSrc = reinterpret_cast<const Src*>(pSrcBytes);
    Dst* pDst = reinterpret_cast<Dst*>(pDstBytes);
    for (std::ptrdiff_t i = 0; i < nPixels; ++i) {
        const std::ptrdiff_t j = bTurned ? nPixels - 1 - i : i;
        for (int k = 0; k < kSamples; ++k)
            pDst[j * kSamples + k] = Change(pSrc[i * kSamples + k]);
    }
}

template <class Src, class Dst, Dst (*Change)(Src)> LineFunction Choose(bool bTurned)
{
    return bTurned ? ConvertLine<Src, Dst, Change, true> : ConvertLine<Src, Dst, Change, false>;
}

} // namespace

LineFunction ChooseLineFunction(int nSrcBytes, int nDstBytes, bool bFullRange, bool bTurned)
{
    if (nSrcBytes == nDstBytes)
        return nSrcBytes == 1 ? Choose<std::uint8_t, std::uint8_t, Same<std::uint8_t>>(bTurned)
                              : Choose<std::uint16_t, std::uint16_t, Same<std::uint16_t>>(bTurned);
    if (nSrcBytes == 1)
        return bFullRange ? Choose<std::uint8_t, std::uint16_t, Widen>(bTurned)
                          : Choose<std::uint8_t, std::uint16_t, Same<std::uint8_t, std::uint16_t>>(bTurned);
    return bFullRange ? Choose<std::uint16_t, std::uint8_t, Narrow>(bTurned)
                      : Choose<std::uint16_t, std::uint8_t, Clamp>(bTurned);
}
