#pragma once
// A picture that knows nothing of the library, and its lines as a host's file or block holds them.

#include "HostFile.h"
#include "TestImages.h"

struct Layout
{
    int nFormat, nFileType;
    std::size_t nSampleBytes, nSamples;
};

/// Of external images, in the order of the host's data types.
inline constexpr Layout kLayouts[] = {
    {0x1301, 0, 1, 3}, {0x0401, 0, 1, 4}, {0x1322, 1, 2, 3}, {0x0422, 1, 2, 4}};

/// A sample of the picture, of 16 bits.
inline int Sample(int x, int y, int nSample)
{
    return (x * 40503 + y * 30011 + nSample * 7919 + 77) & 0xFFFF;
}

/// Lines of samples as value(x, y, sample) gives them; those of a bitmap are padded.
template <class Value>
std::string LinesOf(const Layout& layout, int nWidth, int nHeight, char cPad, Value value)
{
    std::string s;
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x)
            for (int n = 0; n < int(layout.nSamples); ++n) {
                const int nValue = value(x, y, n);
                s.append(reinterpret_cast<const char*>(&nValue), layout.nSampleBytes);
            }
        while (layout.nFileType == MM_FILE_BITMAP && s.size() % 4 != 0)
            s += cPad;
    }
    return s;
}
