// From the command's job to the scheme that does it.

#include "schemes/Job.h"

#include "schemes/UnitTransfer.h"
#include "schemes/WholeTransfer.h"

#include <algorithm>

namespace {

void CheckSizes(Scheme eScheme, const InputFile& input, const Job& job)
{
    const PictureFacts& facts = input.Facts();
    const auto fnFits = eScheme == Scheme::Unit ? FitsUnitScheme : FitsWholeScheme;
    if (!fnFits(facts.eFormat, facts.size, facts.nOffset, job.nFrame))
        FailTooLarge(eScheme, ExitStatus::BadInput, input.Path(), facts.size);
    if (!fnFits(job.eTo, job.size, IsBitmap(job.eTo) ? kBitmapHeaderBytes : 0, job.nFrame))
        FailTooLarge(eScheme, ExitStatus::WrongCommandLine, job.szOutput, job.size);
}

/// Lets the bands of a filter be several times as tall as their frame, as far as the budget reaches: the
/// lines of the frame are read anew for every band.
void WidenBandCap(const LibrarySettings& settings, const Job& job)
{
    constexpr std::int64_t kFrames = 8;
    if (settings.nBandCap != 0 || job.nFrame == 0)
        return;
    const std::int64_t nLines = kFrames * job.nFrame;
    const std::int64_t nBandLine =
        (std::int64_t{job.size.nWidth} + 2 * job.nFrame) * 4 * SampleBytes(job.eTo);
    const std::int64_t nWanted =
        2 * (nLines + 2 * job.nFrame) * nBandLine + nLines * LineBytes(job.eTo, job.size.nWidth);
    const std::int64_t nCap = std::min<std::int64_t>(nWanted, CImageObj::AskFreeMemory());
    CImageObj::ms_nUseMaxMemoryUnit = std::max(CImageObj::ms_nUseMaxMemoryUnit, static_cast<LONG>(nCap));
}

void RunScheme(const Run& run, const InputFile& input, const Job& job)
{
    if (run.settings.eScheme == Scheme::Unit)
        RunUnitScheme(run, input, job);
    else
        RunWholeScheme(run, input, job);
}

} // namespace

bool IsStoredBottomUp(Format eFormat)
{
    return IsBitmap(eFormat);
}

bool MustReverseLines(Scheme eScheme, const Job& job)
{
    return eScheme == Scheme::Unit && job.bReversedLines;
}

Job KeepFormat(const std::string& szName, int nIpNo, const PictureFacts& facts, const std::string& szOutput)
{
    const auto eMeant = FormatFromEnding(szOutput, SampleCount(facts.eFormat));
    if (eMeant && *eMeant != facts.eFormat)
        throw Failure(ExitStatus::WrongCommandLine, szOutput,
                      std::string("the name means another format than ") + FormatName(facts.eFormat) +
                          ", which is kept",
                      "imgband convert first");
    return {.szName = szName,
            .nIpNo = nIpNo,
            .szOutput = szOutput,
            .eTo = facts.eFormat,
            .size = facts.size,
            .bReversedLines = facts.bBottomUp != IsStoredBottomUp(facts.eFormat),
            .bReversedPixels = false,
            .bOwnAlpha = true};
}

void RunJob(const RunSettings& settings, InputFile& input, const Job& job, Report& report)
{
    CheckSizes(settings.eScheme, input, job);
    const Library library(settings.library, report.Settings().bJson);
    WidenBandCap(settings.library, job);
    DescribeLibrary(settings, library, report);
    report.TellScheme(settings.eScheme == Scheme::Unit ? "unit" : "whole");
    const ObjectFormats objects{ObjectFormat(SampleBytes(input.Facts().eFormat)),
                                ObjectFormat(SampleBytes(job.eTo))};
    const Workers workers(settings.nThreads);
    if (settings.bPlan) {
        ExternalPair pair(settings.eAccess, &input, nullptr, job.eTo, job.size, objects);
        RunScheme({settings, library, report, pair, workers, nullptr}, input, job);
        return;
    }
    OutputFile output(job.szOutput);
    output.CheckRoom(FileBytes(job.eTo, job.size));
    ExternalPair pair(settings.eAccess, &input, &output, job.eTo, job.size, objects);
    RunScheme({settings, library, report, pair, workers, &output}, input, job);
    pair.DeliverOutput();
    input.Close(); // it may be what the output replaces
    output.Publish();
    DescribePicture(job.szOutput, job.eTo, job.size, report);
}
