// From the command's job to the scheme that does it.

#include "schemes/Job.h"

#include "schemes/UnitTransfer.h"
#include "schemes/WholeTransfer.h"

#include <algorithm>

namespace {

void CheckSizes(const Options& options, const PictureFacts& facts, const Job& job)
{
    const auto fnFits = options.eScheme == Scheme::Unit ? FitsUnitScheme : FitsWholeScheme;
    if (!fnFits(facts.eFormat, facts.size, facts.nOffset, job.nFrame))
        FailTooLarge(options.eScheme, ExitStatus::BadInput, options.szInput, facts.size);
    if (!fnFits(job.eTo, job.size, IsBitmap(job.eTo) ? kBitmapHeaderBytes : 0, job.nFrame))
        FailTooLarge(options.eScheme, ExitStatus::WrongCommandLine, options.szOutput, job.size);
}

/// Lets the bands of a filter be several times as tall as their frame, as far as the budget reaches: the
/// lines of the frame are read anew for every band.
void WidenBandCap(const Options& options, const Job& job)
{
    constexpr std::int64_t kFrames = 8;
    if (options.nBandCap != 0 || job.nFrame == 0)
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
    if (run.options.eScheme == Scheme::Unit)
        RunUnitScheme(run, input, job);
    else
        RunWholeScheme(run, input, job);
}

} // namespace

bool IsStoredBottomUp(Format eFormat)
{
    return IsBitmap(eFormat);
}

bool MustReverseLines(const Options& options, const Job& job)
{
    return options.eScheme == Scheme::Unit && job.bReversedLines;
}

Job KeepFormat(const Options& options, const PictureFacts& facts, int nIpNo)
{
    const auto eMeant = FormatFromEnding(options.szOutput, SampleCount(facts.eFormat));
    if (eMeant && *eMeant != facts.eFormat)
        throw Failure(ExitStatus::WrongCommandLine, options.szOutput,
                      std::string("the name means another format than ") + FormatName(facts.eFormat) +
                          ", which is kept",
                      "imgband convert first");
    return {.szName = CommandName(options.eCommand),
            .nIpNo = nIpNo,
            .eTo = facts.eFormat,
            .size = facts.size,
            .bReversedLines = facts.bBottomUp != IsStoredBottomUp(facts.eFormat),
            .bReversedPixels = false,
            .bOwnAlpha = true};
}

void RunJob(const Options& options, InputFile& input, const Job& job, Report& report)
{
    CheckSizes(options, input.Facts(), job);
    const Library library(options);
    WidenBandCap(options, job);
    DescribeLibrary(options, library, report);
    report.TellScheme(options.eScheme == Scheme::Unit ? "unit" : "whole");
    const ObjectFormats objects{ObjectFormat(SampleBytes(input.Facts().eFormat)),
                                ObjectFormat(SampleBytes(job.eTo))};
    const Workers workers(options.nThreads);
    if (options.bPlan) {
        ExternalPair pair(options.eAccess, &input, nullptr, job.eTo, job.size, objects);
        RunScheme({options, library, report, pair, workers, nullptr}, input, job);
        return;
    }
    OutputFile output(options.szOutput);
    output.CheckRoom(FileBytes(job.eTo, job.size));
    ExternalPair pair(options.eAccess, &input, &output, job.eTo, job.size, objects);
    RunScheme({options, library, report, pair, workers, &output}, input, job);
    pair.DeliverOutput();
    input.Close(); // it may be what the output replaces
    output.Publish();
    DescribePicture(options.szOutput, job.eTo, job.size, report);
}
