// imgband plan: a step of any images goes through the library's planner, without making them.

#include "Commands.h"
#include "library/Library.h"
#include "library/PlannedImage.h"
#include "pictures/Formats.h"
#include "report/Step.h"
#include "values/ProcessIds.h"

#include <deque>
#include <fmt/format.h>

namespace {

/// The images that have one role in the step, as objects without memory.
class StepImages
{
public:
    StepImages(const char* pszKind, ImageRole eRole, const std::vector<StepImage>& images) : m_eRole(eRole)
    {
        for (const StepImage& image : images) {
            const std::string szNumber =
                eRole == ImageRole::Output ? "" : fmt::format("{} ", m_objects.size() + 1);
            Add(image, fmt::format("{} {}{}", pszKind, szNumber, FormatName(image.eFormat)));
        }
    }

    int Count() const { return static_cast<int>(m_pointers.size()); }
    CImageObj** Pointers() { return m_pointers.data(); }

    void AddPlans(std::vector<ImagePlan>& plans) const
    {
        for (const PlannedImage& object : m_objects)
            plans.push_back(object.Plan(m_eRole));
    }

private:
    void Add(const StepImage& image, const std::string& szName)
    {
        PlannedImage& object = m_objects.emplace_back(true, szName);
        if (const DWORD nCode = object.SetGeometry(image.size.nWidth, image.size.nHeight,
                                                   FormatCode(image.eFormat), image.nFrame)) {
            Failure failure(ExitStatus::WrongCommandLine, "",
                            fmt::format("{}: {} x {} pixels with a frame of {} are too many: an image of a "
                                        "step may take 2 GiB - 1",
                                        szName, image.size.nWidth, image.size.nHeight, image.nFrame));
            failure.libraryResult = LibraryResult{nCode, {}};
            throw failure;
        }
        object.SetFsize(image.nFrame);
        object.SetRatio(image.nRatio);
        m_pointers.push_back(&object);
    }

    ImageRole m_eRole;
    std::deque<PlannedImage> m_objects;
    std::vector<CImageObj*> m_pointers;
};

void CheckPlan(DWORD nCode)
{
    if (nCode == MM_SUCCESS)
        return;
    Failure failure(ExitStatus::WrongCommandLine, "", "the step cannot be planned");
    failure.libraryResult = LibraryResult{nCode, {}};
    if (nCode == MM_RATIO_ZERO)
        failure.szTry = "@RATIO above 0, or a larger --budget";
    else if (nCode == MM_BAD_ARGUMENT)
        failure.szTry = "a smaller --min-band";
    throw failure;
}

} // namespace

void RunPlanned(const Options& options, Report& report)
{
    SizeBudget(options.run.library);
    const LONG nBudget = CImageObj::AskFreeMemory();
    const Steps steps = report.BeginSteps({nBudget, CImageObj::ms_MaxOneMappingSize,
                                           CImageObj::GetUseMaxBandMemory(), options.run.library.szTempDir},
                                          options.run.nThreads);
    const StepRequest& step = options.step;
    StepImages inputs("input", ImageRole::Input, step.inputs);
    StepImages outputs("output", ImageRole::Output, step.outputs);
    StepImages temporaries("temporary", ImageRole::Temporary, step.temporaries);

    tag_MemAlloc request;
    request.nInCnt = inputs.Count();
    request.nOutCnt = outputs.Count();
    request.nTmpCnt = temporaries.Count();
    request.nMapCnt = step.nMaps;
    request.nIpNo = kIpOther;
    request.nMinBand = step.nMinBand;
    CheckPlan(
        CImageObj::MemoryAlloc(&request, inputs.Pointers(), outputs.Pointers(), temporaries.Pointers()));

    std::vector<ImagePlan> plans;
    for (const StepImages* pImages : {&inputs, &outputs, &temporaries})
        pImages->AddPlans(plans);
    Step planned(steps, "step", kIpOther);
    planned.Plan(plans, nBudget - CImageObj::AskFreeMemory());
    planned.End();
}
