// imgband filter: every pixel is made anew from those around it.

#include "Commands.h"
#include "pixels/FilterWork.h"
#include "schemes/Job.h"

void RunFilter(const Options& options, Report& report)
{
    InputFile input(options.input, options.run);
    Job job = KeepFormat("filter", options.filter.eOp == FilterOp::Sharpen ? kIpSharpen : kIpSmooth,
                         input.Facts(), options.output.szPath);
    job.nFrame = options.filter.nRadius;
    job.frame = options.filter.frame;
    job.pWork = std::make_unique<FilterWork>(options.filter);
    job.bOneObject = true;
    RunJob(options.run, input, job, report);
}
