// imgband convert: a picture file becomes one of another format.

#include "Commands.h"
#include "pixels/ConvertWork.h"
#include "schemes/Job.h"

namespace {

Format ChooseFormat(const Options& options, const PictureFacts& facts)
{
    const std::optional<Format> eFormat =
        options.eTo ? options.eTo : FormatFromEnding(options.szOutput, SampleCount(facts.eFormat));
    if (!eFormat)
        throw Failure(ExitStatus::WrongCommandLine, options.szOutput, "the name's ending tells no format",
                      "--to FORMAT");
    return *eFormat;
}

} // namespace

// A transfer drops or adds a fourth sample, and reverses the order of lines (whole scheme) or of lines and
// pixels together (unit scheme). Whatever else changes a sample or an order is work between the bands.
void RunConvert(const Options& options, Report& report)
{
    InputFile input(options);
    const PictureFacts& facts = input.Facts();
    const Format eTo = ChooseFormat(options, facts);
    const int nFrom = SampleBytes(facts.eFormat);
    const int nTo = SampleBytes(eTo);
    Job job{.szName = "convert",
            .nIpNo = kIpOther,
            .eTo = eTo,
            .size = facts.size,
            .bReversedLines = (facts.bBottomUp != IsStoredBottomUp(eTo)) != options.bTurn,
            .bReversedPixels = options.bTurn,
            .bOwnAlpha = options.bKeepAlpha && SampleCount(facts.eFormat) == 4};
    job.bOneObject = nFrom == nTo && job.bReversedLines == job.bReversedPixels;
    const bool bLinesPass = nFrom == nTo && !options.bTurn;
    if (options.eScheme == Scheme::Unit ? !job.bOneObject : !bLinesPass)
        job.pWork =
            std::make_unique<ConvertWork>(ChooseLineFunction(nFrom, nTo, options.bFullRange, options.bTurn),
                                          facts.size.nHeight, MustReverseLines(options, job));
    RunJob(options, input, job, report);
}
