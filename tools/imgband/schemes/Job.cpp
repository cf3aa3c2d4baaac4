// From the command's job to the scheme that does it.

#include "schemes/Job.h"

#include "library/BudgetCharge.h"
#include "pictures/Formats.h"
#include "schemes/Limits.h"
#include "schemes/UnitTransfer.h"
#include "schemes/WholeTransfer.h"

#include <optional>

namespace {

/// Lets the bands of a filter be several times as tall as their frame, as far as the budget allows, because
/// the frame's lines are read again for every band.
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
    RaiseUnitBandCap(nWanted);
}

void RunScheme(const Run& run, const InputFile& input, const Job& job)
{
    if (run.settings.eScheme == Scheme::Unit)
        RunUnitScheme(run, input, job);
    else
        RunWholeScheme(run, input, job);
}

} // namespace

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
            .order = LineOrder::Between(facts.bBottomUp, facts.eFormat, false),
            .bOwnAlpha = true};
}

void RunJob(const RunSettings& settings, InputFile& input, const Job& job, Report& report)
{
    CheckInputSize(settings.eScheme, input, job.nFrame);
    CheckOutputSize(settings.eScheme, job.szOutput, job.eTo, job.size, job.nFrame);
    const Library library(settings.library, report.Settings().bJson);
    if (settings.eAccess == Access::Mmap)
        input.EndRunWhenLost();
    WidenBandCap(settings.library, job);
    const Steps steps = report.BeginSteps(library.Facts(settings.eScheme), settings.nThreads);
    report.TellScheme(settings.eScheme == Scheme::Unit ? "unit" : "whole");
    std::optional<OutputFile> output;
    if (!settings.bPlan) {
        output.emplace(job.szOutput);
        output->CheckRoom(FileBytes(job.eTo, job.size));
    }
    OutputFile* pOutput = output ? &*output : nullptr;
    const ObjectFormats objects{ObjectFormat(SampleBytes(input.Facts().eFormat)),
                                ObjectFormat(SampleBytes(job.eTo))};
    const BudgetCharge blocks(
        BlocksInBudget(library, ExternalPair::Needs(settings.eAccess, &input, job.eTo, job.size)));
    ExternalPair pair(settings.eAccess, &input, pOutput, job.eTo, job.size, objects);
    const Workers workers(settings.nThreads);
    RunScheme({settings, library, report, steps, pair, workers, pOutput}, input, job);
    if (!output)
        return;
    pair.DeliverOutput();
    input.Close(); // the output may replace it
    output->Publish();
    report.TellPicture(job.szOutput, job.eTo, job.size);
}
