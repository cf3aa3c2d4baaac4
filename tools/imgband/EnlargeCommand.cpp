// imgband enlarge: a picture becomes a whole number of times as wide and as high.

#include "Commands.h"
#include "pixels/EnlargeWork.h"
#include "schemes/Job.h"

#include <fmt/format.h>

namespace {

ImageSize Enlarged(const Options& options, ImageSize size)
{
    const std::int64_t nWidth = std::int64_t{size.nWidth} * options.enlarge.nFactor;
    const std::int64_t nHeight = std::int64_t{size.nHeight} * options.enlarge.nFactor;
    if (nWidth > INT32_MAX || nHeight > INT32_MAX)
        throw Failure(ExitStatus::WrongCommandLine, options.output.szPath,
                      fmt::format("{} x {} pixels are too many", nWidth, nHeight), "a smaller --factor");
    return {static_cast<int>(nWidth), static_cast<int>(nHeight)};
}

} // namespace

void RunEnlarge(const Options& options, Report& report)
{
    InputFile input(options.input, options.run);
    const ImageSize size = input.Facts().size;
    Job job = KeepFormat("enlarge", kIpEnlarge, input.Facts(), options.output.szPath);
    job.size = Enlarged(options, size);
    job.pWork =
        std::make_unique<EnlargeWork>(options.enlarge, size, job.LeftToWork(options.run.eScheme).bLines);
    RunJob(options.run, input, job, report);
}
