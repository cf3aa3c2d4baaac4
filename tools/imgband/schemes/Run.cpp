// The limits of the schemes, and what every run tells.

#include "schemes/Run.h"

#include <fmt/format.h>

namespace {

constexpr int kImportMargin = 16;

std::int64_t StoredBytes(Format eFormat, ImageSize size)
{
    return FileBytes(eFormat, size) - (IsBitmap(eFormat) ? kBitmapHeaderBytes : 0);
}

} // namespace

std::optional<std::int64_t> ObjectBytes(ImageSize size, int nMargin, int nObjectFormat)
{
    CImageObj object;
    int nBytes = 0, nLineBytes = 0, nWidth = 0, nHeight = 0;
    if (object.CalcImgBufLrg(nBytes, nLineBytes, nWidth, nHeight, size.nWidth, size.nHeight, nMargin, nMargin,
                             nObjectFormat, MM_ALIGN_LINES) != MM_SUCCESS)
        return std::nullopt;
    return nBytes;
}

bool FitsWholeScheme(Format eFormat, ImageSize size, std::int64_t nAhead, int)
{
    return StoredBytes(eFormat, size) <= INT32_MAX - nAhead &&
           ObjectBytes(size, kImportMargin, ObjectFormat(SampleBytes(eFormat)));
}

// Objects hold one band; its smallest has one line.
bool FitsUnitScheme(Format eFormat, ImageSize size, std::int64_t nAhead, int nFrame)
{
    return StoredBytes(eFormat, size) <= std::int64_t{UINT32_MAX} - nAhead &&
           ObjectBytes({size.nWidth, 1}, nFrame, ObjectFormat(SampleBytes(eFormat)));
}

void FailTooLarge(Scheme eScheme, ExitStatus eStatus, const std::string& szPath, ImageSize size)
{
    const std::string szPixels = fmt::format("{} x {} pixels are too many: ", size.nWidth, size.nHeight);
    if (eScheme == Scheme::Unit)
        throw Failure(eStatus, szPath,
                      szPixels + "a file may have 4 GiB - 1, and a line with its frame 2 GiB - 1");
    throw Failure(eStatus, szPath,
                  szPixels +
                      "with its margins, a picture may take 2 GiB - 1 at each stage of its way as a whole");
}

T_ImageLrg_tag PictureInfo(Format eFormat, ImageSize size)
{
    T_ImageLrg_tag info = {};
    info.nWidth = info.nAllocWidth = size.nWidth;
    info.nHeight = info.nAllocHeight = size.nHeight;
    info.nSampleBytes = SampleBytes(eFormat);
    info.nSamples = SampleCount(eFormat);
    info.nPixelBytes = info.nSampleBytes * info.nSamples;
    info.nRatio = 100;
    return info;
}

const char* ExternalPlace(Access eAccess)
{
    switch (eAccess) {
    case Access::Memory:
        return "the tool's memory";
    case Access::Mmap:
        return "file, mapped";
    case Access::File:
        break;
    }
    return "file";
}

void DescribeLibrary(const RunSettings& settings, const Library& library, Report& report)
{
    const bool bUnit = settings.eScheme == Scheme::Unit;
    const LONG nBandCap = bUnit ? CImageObj::ms_nUseMaxMemoryUnit : CImageObj::GetUseMaxBandMemory();
    report.TellSettings(library.Budget(), CImageObj::ms_MaxOneMappingSize, nBandCap,
                        library.TemporaryFolder(), settings.nThreads);
}

void DescribePicture(const std::string& szPath, Format eFormat, ImageSize size, Report& report)
{
    const std::int64_t nBytes = FileBytes(eFormat, size);
    report.SetSummary(fmt::format("{}: {}, {} x {} pixels, {} bytes", szPath, FormatName(eFormat),
                                  size.nWidth, size.nHeight, nBytes));
    report.Json() = {{"file", szPath},
                     {"format", FormatName(eFormat)},
                     {"width", size.nWidth},
                     {"height", size.nHeight},
                     {"file_bytes", nBytes}};
}
