// imgband enlarge: a picture becomes a whole number of times as wide and as high.

#include "Commands.h"
#include "schemes/Job.h"

#include <fmt/format.h>

namespace {

ImageSize Enlarged(const Options& options, ImageSize size)
{
    const std::int64_t nWidth = std::int64_t{size.nWidth} * options.nFactor;
    const std::int64_t nHeight = std::int64_t{size.nHeight} * options.nFactor;
    if (nWidth > INT32_MAX || nHeight > INT32_MAX)
        throw Failure(ExitStatus::WrongCommandLine, options.szOutput,
                      fmt::format("{} x {} pixels are too many", nWidth, nHeight), "a smaller --factor");
    return {static_cast<int>(nWidth), static_cast<int>(nHeight)};
}

} // namespace

void RunEnlarge(const Options& options, Report& report)
{
    InputFile input(options);
    const ImageSize size = input.Facts().size;
    Job job = KeepFormat(options, input.Facts(), kIpEnlarge);
    job.size = Enlarged(options, size);
    job.pWork = std::make_unique<EnlargeWork>(options.eEnlargeOp, options.nFactor, size.nWidth, size.nHeight,
                                              MustReverseLines(options, job));
    RunJob(options, input, job, report);
}
