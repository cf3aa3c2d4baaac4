// imgband convert: a picture file becomes one of another format.

#include "Commands.h"
#include "pixels/ConvertWork.h"
#include "schemes/Job.h"

// A transfer drops or adds a fourth sample, and reverses the order of lines (whole scheme) or of lines and
// pixels together (unit scheme). Whatever else changes a sample or an order is work between the bands.
void RunConvert(const Options& options, Report& report)
{
    InputFile input(options.input, options.run);
    const PictureFacts& facts = input.Facts();
    const Format eTo = ChooseFormat(options.output, SampleCount(facts.eFormat));
    const int nFrom = SampleBytes(facts.eFormat);
    const int nTo = SampleBytes(eTo);
    Job job{.szName = "convert",
            .nIpNo = kIpOther,
            .szOutput = options.output.szPath,
            .eTo = eTo,
            .size = facts.size,
            .order = LineOrder::Between(facts.bBottomUp, eTo, options.convert.bTurn),
            .bOwnAlpha = options.convert.bKeepAlpha && SampleCount(facts.eFormat) == 4};
    job.bOneObject = nFrom == nTo && job.order.bLines == job.order.bPixels;
    const LineOrder left = job.LeftToWork(options.run.eScheme);
    if (nFrom != nTo || left != LineOrder{})
        job.pWork = std::make_unique<ConvertWork>(
            ChooseLineFunction(nFrom, nTo, options.convert.bFullRange, left.bPixels), facts.size.nHeight,
            left.bLines);
    RunJob(options.run, input, job, report);
}
