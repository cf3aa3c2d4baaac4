// imgband filter: every pixel is made anew from those around it.

#include "Commands.h"
#include "schemes/Job.h"

void RunFilter(const Options& options, Report& report)
{
    InputFile input(options);
    Job job =
        KeepFormat(options, input.Facts(), options.filter.eOp == FilterOp::Sharpen ? kIpSharpen : kIpSmooth);
    job.nFrame = options.filter.nRadius;
    job.frame = options.filter.frame;
    job.pWork = std::make_unique<FilterWork>(options.filter);
    job.bOneObject = true;
    RunJob(options, input, job, report);
}
