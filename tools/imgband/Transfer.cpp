// Import, conversion and export of a whole picture inside the budget.

#include "Transfer.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr int kImportMargin = 16;

// The external image of a transfer is banded as far as its charge goes; without one it costs the budget
// nothing and is reached whole.
ImagePlan ExternalPlan(const Run& run, const char* pszRole, Format eFormat, const PlannedImage& object)
{
    const int nHeight = object.NotedPlan().nHeight;
    const std::int64_t nLine = LineBytes(eFormat, run.pair.Output().nWidth);
    const std::int64_t nCharged = object.ExternalCharge();
    const std::int64_t nFits = nCharged > 0 ? nCharged / nLine : nHeight;
    const char* pszPlace = run.options.eAccess == Access::Memory ? "the tool's memory" : "file";
    return {fmt::format("{} {}", pszRole, FormatName(eFormat)),
            run.options.eAccess == Access::Mmap ? "file, mapped" : pszPlace,
            nLine * nHeight,
            nHeight,
            static_cast<int>(std::clamp<std::int64_t>(nFits, 1, nHeight)),
            nCharged};
}

// Both sides of a transfer move in the smaller of the two band heights.
void EndTransfer(const Run& run, const char* pszStep, ImagePlan from, ImagePlan to)
{
    from.nBandLines = to.nBandLines = std::min(from.nBandLines, to.nBandLines);
    run.report.EndStep(pszStep, {from, to});
}

DWORD ConvertBand(CImageObj& src, CImageObj& dst, int nTop, LineFunction pConvert)
{
    T_ImageLrg_tag from = {};
    T_ImageLrg_tag to = {};
    if (const DWORD nCode = src.MapBand(nTop, &from, MM_BAND_DOWNWARD, 0))
        return nCode;
    DWORD nCode = dst.MapBand(nTop, &to, MM_BAND_DOWNWARD, 0);
    if (nCode == MM_SUCCESS) {
        for (std::ptrdiff_t i = 0; i < to.nBandLines; ++i)
            pConvert(from.pImage + i * from.nLineBytes, to.pImage + i * to.nLineBytes, to.nWidth);
        nCode = dst.UnmapBand(0);
    }
    const DWORD nUnmapped = src.UnmapBand(0);
    return nCode ? nCode : nUnmapped;
}

} // namespace

std::optional<std::int64_t> ObjectBytes(ImageSize size, int nObjectFormat)
{
    CImageObj object;
    int nBytes = 0, nLineBytes = 0, nWidth = 0, nHeight = 0;
    if (object.CalcImgBufLrg(nBytes, nLineBytes, nWidth, nHeight, size.nWidth, size.nHeight, kImportMargin,
                             kImportMargin, nObjectFormat, MM_ALIGN_LINES) != MM_SUCCESS)
        return std::nullopt;
    return nBytes;
}

bool FitsLibrary(Format eFormat, ImageSize size, std::int64_t nOffset, int nObjectFormat)
{
    const std::int64_t nLines = FileBytes(eFormat, size);
    return nLines <= INT32_MAX - nOffset && ObjectBytes(size, nObjectFormat);
}

void FailTooLarge(ExitStatus eStatus, const std::string& szPath, ImageSize size)
{
    throw Failure(
        eStatus, szPath,
        fmt::format("{} x {} pixels are too many: with its margins, a picture may take 2 GiB - 1 at each "
                    "stage of its way",
                    size.nWidth, size.nHeight));
}

void ImportStep(const Run& run, const InputFile& input, PlannedImage& object, bool bReversed)
{
    run.report.BeginStep();
    T_ImgInf& inf = run.pair.Input();
    object.BeginTransfer();
    const DWORD nCode = ImportImg(&object, &inf, bReversed ? 1 : 0, nullptr);
    run.lib.CheckImport(nCode, input.Path(), ObjectBytes(input.Facts().size, inf.nDstFormat).value_or(0));
    EndTransfer(run, "import", ExternalPlan(run, "input", input.Facts().eFormat, object), object.NotedPlan());
}

void ConvertStep(const Run& run, PlannedImage& src, PlannedImage& dst, LineFunction pConvert)
{
    run.report.BeginStep();
    tag_MemAlloc request;
    request.nOutCnt = 1;
    CImageObj* inputs[] = {&src};
    CImageObj* outputs[] = {&dst};
    DWORD nCode = CImageObj::MemoryAlloc(&request, inputs, outputs, nullptr);
    const int nLines = std::min(src.GetBandHeight(), dst.GetBandHeight());
    src.SetBandHeight(nLines);
    dst.SetBandHeight(nLines);
    const std::vector<ImagePlan> plans = {src.Plan("object"), dst.Plan("converted object")};
    for (int nTop = 0; nCode == MM_SUCCESS && nTop < dst.m_ImgInfo.nHeight; nTop += nLines)
        nCode = ConvertBand(src, dst, nTop, pConvert);
    CImageObj::MemoryRelease(&request, nullptr); // this step has no temporary images
    run.lib.CheckStep(nCode, "conversion", dst.m_ImgInfo.nBufSize);
    src.Destroy();
    run.report.EndStep("convert", plans);
}

void ExportStep(const Run& run, OutputFile& output, PlannedImage& object, Format eTo, bool bOwnAlpha)
{
    run.report.BeginStep();
    T_ImgInf& inf = run.pair.Output();
    const std::int64_t nBytes = FileBytes(eTo, {inf.nWidth, inf.nHeight});
    output.CheckRoom(nBytes); // again: temporary files may have taken it
    object.BeginTransfer();
    const DWORD nCode = ExportImg(&object, &inf, IsBitmap(eTo) ? 1 : 0, nullptr, bOwnAlpha ? 0 : 1);
    run.lib.CheckExport(nCode, output.Path(), {static_cast<std::uintmax_t>(nBytes), output.AvailableBytes()});
    run.pair.DeliverOutput();
    EndTransfer(run, "export", object.NotedPlan(), ExternalPlan(run, "output", eTo, object));
}

void DescribeLibrary(Report& report, const Library& library)
{
    report.TellSettings(library.Budget(), CImageObj::ms_MaxOneMappingSize, CImageObj::GetUseMaxBandMemory(),
                        library.TemporaryFolder());
}

void DescribePicture(Report& report, const std::string& szPath, Format eFormat, ImageSize size)
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
