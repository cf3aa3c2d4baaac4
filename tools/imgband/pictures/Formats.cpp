// Names, endings and sizes of the picture formats.

#include "pictures/Formats.h"

#include "system/Paths.h"
#include "values/Failure.h"

#include <algorithm>
#include <cctype>

namespace {

struct FormatFacts
{
    const char* pszName;
    int nSamples;
    int nSampleBytes;
    int nCode;
};

constexpr FormatFacts kFacts[] = {{"bgr24", 3, 1, MM_FORMAT_BGR24},
                                  {"bgra32", 4, 1, MM_FORMAT_BGRA32},
                                  {"raw48", 3, 2, MM_FORMAT_RAW48},
                                  {"raw64", 4, 2, MM_FORMAT_RAW64}};

const FormatFacts& FactsOf(Format eFormat)
{
    return kFacts[static_cast<int>(eFormat)];
}

} // namespace

const char* FormatName(Format eFormat)
{
    return FactsOf(eFormat).pszName;
}

std::optional<Format> FormatFromEnding(const std::string& szPath, int nSamples)
{
    std::string szEnding = os::TextOf(os::PathOf(szPath).extension());
    std::transform(szEnding.begin(), szEnding.end(), szEnding.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (szEnding == ".bmp" || szEnding == ".dib")
        return nSamples == 4 ? Format::Bgra32 : Format::Bgr24;
    if (szEnding == ".raw")
        return nSamples == 4 ? Format::Raw64 : Format::Raw48;
    return std::nullopt;
}

Format ChooseFormat(const OutputRequest& output, int nSamples)
{
    const std::optional<Format> eFormat =
        output.eFormat ? output.eFormat : FormatFromEnding(output.szPath, nSamples);
    if (!eFormat)
        throw Failure(ExitStatus::WrongCommandLine, output.szPath, "the name's ending tells no format",
                      "--to FORMAT");
    return *eFormat;
}

bool IsBitmap(Format eFormat)
{
    return SampleBytes(eFormat) == 1;
}

bool IsStoredBottomUp(Format eFormat)
{
    return IsBitmap(eFormat);
}

int SampleCount(Format eFormat)
{
    return FactsOf(eFormat).nSamples;
}

int SampleBytes(Format eFormat)
{
    return FactsOf(eFormat).nSampleBytes;
}

int FormatCode(Format eFormat)
{
    return FactsOf(eFormat).nCode;
}

std::int64_t LineBytes(Format eFormat, int nWidth)
{
    const std::int64_t nBytes = std::int64_t{nWidth} * SampleCount(eFormat) * SampleBytes(eFormat);
    return IsBitmap(eFormat) ? (nBytes + 3) / 4 * 4 : nBytes;
}

std::int64_t FileBytes(Format eFormat, ImageSize size)
{
    // A line has at most 2^34 bytes and there are at most 2^31 of them: the product can pass 63 bits.
    const std::int64_t nLine = LineBytes(eFormat, size.nWidth);
    if (nLine > (INT64_MAX - kBitmapHeaderBytes) / size.nHeight)
        return INT64_MAX;
    return nLine * size.nHeight + (IsBitmap(eFormat) ? kBitmapHeaderBytes : 0);
}

int ObjectFormat(int nSampleBytes)
{
    return nSampleBytes == 1 ? MM_FORMAT_BGRA32 : MM_FORMAT_RAW64;
}
