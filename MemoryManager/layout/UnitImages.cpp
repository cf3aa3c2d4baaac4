// Line lengths of the external images that unit bands are read from and written to, and the check that every
// byte of such an image has a 32-bit position.

#include "MemoryManager/layout/UnitImages.h"

#include "MemoryManager/ImageRecord.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <algorithm>
#include <limits>

namespace {

/// Bytes of a line's pixels, without padding.
std::int64_t PixelBytesOf(int nFormat, int nWidth)
{
    return std::int64_t{SampleBytesOf(nFormat)} * SamplesOf(nFormat) * nWidth;
}

/// Whether lines of nTaken bytes that start nStep bytes apart do not overlap and end within 32 bits.
bool AreLinesReachable(const T_ImgInf& inf, std::int64_t nTaken, std::int64_t nStep)
{
    if (inf.nWidth < 0 || inf.nHeight < 0 || nStep < nTaken)
        return false;
    constexpr std::int64_t nMost = std::numeric_limits<DWORD>::max();
    return static_cast<DWORD>(inf.nOffset) + inf.nHeight * nStep <= nMost;
}

bool HasFourSamples(int nFormat)
{
    return SamplesOf(nFormat) == 4 && (SampleBytesOf(nFormat) == 1 || SampleBytesOf(nFormat) == 2);
}

bool IsWritten(int nFormat)
{
    return nFormat == MM_FORMAT_BGR24 || nFormat == MM_FORMAT_BGRA32 || nFormat == MM_FORMAT_RAW48 ||
           nFormat == MM_FORMAT_RAW64;
}

} // namespace

std::int64_t SourceLineBytes(const T_ImgInf& in)
{
    if (HasFourSamples(in.nSrcFormat))
        return in.nLineBytes;
    const std::int64_t nPixels = PixelBytesOf(in.nSrcFormat, in.nWidth);
    if (in.nSrcFormat == MM_FORMAT_BGR24)
        return PaddedLine(nPixels);
    return in.nSrcFormat == MM_FORMAT_RAW48 ? nPixels : 0;
}

std::int64_t DestinationLineBytes(const T_ImgInf& out)
{
    if (!IsWritten(out.nDstFormat))
        return 0;
    const std::int64_t nPixels = PixelBytesOf(out.nDstFormat, out.nWidth);
    const bool bPadded = out.nFileType == MM_FILE_BITMAP || out.eAcsType == ACS_FILEIO;
    return out.nDstFormat == MM_FORMAT_BGR24 && bPadded ? PaddedLine(nPixels) : nPixels;
}

bool IsSourceReachable(const T_ImgInf& in)
{
    if (SampleBytesOf(in.nSrcFormat) > kLargestUnitSample)
        return false;
    if (HasFourSamples(in.nSrcFormat))
        return AreLinesReachable(in, PixelBytesOf(in.nSrcFormat, in.nWidth), in.nLineBytes);
    if (in.nSrcFormat != MM_FORMAT_BGR24 && in.nSrcFormat != MM_FORMAT_RAW48)
        return true;
    return AreLinesReachable(in, SourceLineBytes(in), in.nLineBytes);
}

bool IsDestinationReachable(const T_ImgInf& out)
{
    if (SampleBytesOf(out.nDstFormat) > kLargestUnitSample)
        return false;
    if (!IsWritten(out.nDstFormat))
        return true;
    const std::int64_t nLine = DestinationLineBytes(out);
    if (out.eAcsType != ACS_FILEIO)
        return AreLinesReachable(out, nLine, out.nLineBytes);
    // Appended lines cannot overlap: padding that the description does not count is added all the same.
    return AreLinesReachable(out, PixelBytesOf(out.nDstFormat, out.nWidth), out.nLineBytes) &&
           AreLinesReachable(out, nLine, std::max<std::int64_t>(nLine, out.nLineBytes));
}
