// imgband make: paints a picture into an image object, band by band, and exports it.

#include "Commands.h"
#include "library/BudgetCharge.h"
#include "pictures/Formats.h"
#include "pixels/BandLines.h"
#include "pixels/LineConversion.h"
#include "pixels/Scene.h"
#include "report/Step.h"
#include "schemes/BandLoop.h"
#include "schemes/Limits.h"
#include "schemes/PlannedRun.h"
#include "schemes/WholeTransfer.h"
#include "values/ProcessIds.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace {

DWORD PaintBand(CImageObj& object, int nTop, Scene& scene, std::vector<std::uint16_t>& line, StepBands& told)
{
    T_ImageLrg_tag band = {};
    if (const DWORD nCode = object.MapBand(nTop, &band, MM_BAND_DOWNWARD, 0))
        return nCode;
    told.Note(ImageRole::Input, band);
    for (int i = 0; i < band.nBandLines; ++i) {
        unsigned char* pLine = band.pImage + static_cast<std::ptrdiff_t>(i) * band.nLineBytes;
        scene.PaintLine(nTop + i, line.data());
        if (band.nSampleBytes == 1)
            std::transform(line.begin(), line.end(), pLine, NarrowSample);
        else
            std::memcpy(pLine, line.data(), line.size() * sizeof line[0]);
    }
    return object.UnmapBand(0);
}

/// Paints all bands.
void Paint(const Run& run, PlannedImage& object, const SceneSettings& scene, Step& step)
{
    const Bands bands{scene.size.nHeight, object.GetBandHeight()};
    StepBands told(step, bands.Count(), object.m_ImgInfo.nBufSize);

    const auto pScene = MakeScene(scene);
    std::vector<std::uint16_t> line(static_cast<std::size_t>(scene.size.nWidth) * kSamples);
    for (int i = 0; i < bands.Count(); ++i) {
        const DWORD nCode = PaintBand(object, bands.At(i).nFirst, *pScene, line, told);
        run.lib.CheckStep(nCode, "painting", object.m_ImgInfo.nBufSize);
        told.Done();
    }
}

void PaintStep(const Run& run, PlannedImage& object, const SceneSettings& scene)
{
    Step step(run.steps, "paint", kIpOther);
    tag_MemAlloc request; // one image, which is filled instead of read
    CImageObj* images[] = {&object};
    DWORD nCode = CImageObj::MemoryAlloc(&request, images, nullptr, nullptr);
    run.lib.CheckStep(nCode, "painting", object.m_ImgInfo.nBufSize);
    run.lib.CheckBudget("painting", object.m_nAreaSize + run.pair.Blocks().Sum());
    const ImagePlan plan = object.Plan(ImageRole::Input);
    step.Plan({plan}, run.lib.Taken());
    step.NoteCharges({.nInput = object.m_nAreaSize});
    step.Count({.nSpilled = plan.nTemporary});
    if (!run.settings.bPlan)
        Paint(run, object, scene, step);
    step.End();
}

void PaintAndExport(const Run& run, Format eTo, const SceneSettings& scene)
{
    PlannedImage object(run.settings.bPlan, "object");
    run.lib.CheckStep(
        object.SetGeometry(scene.size.nWidth, scene.size.nHeight, ObjectFormat(SampleBytes(eTo))), "set-up",
        0);
    PaintStep(run, object, scene);
    ExportStep(run, object, eTo, IsStoredBottomUp(eTo), true);
}

} // namespace

void RunMake(const Options& options, Report& report)
{
    const Format eTo = ChooseFormat(options.output, 3);
    const ImageSize size = options.scene.size;
    const int nObjectFormat = ObjectFormat(SampleBytes(eTo));
    CheckOutputSize(Scheme::Whole, options.output.szPath, eTo, size, 0);

    const Library library(options.run.library, options.report.bJson);
    const Steps steps = report.BeginSteps(library.Facts(Scheme::Whole), options.run.nThreads);
    OutputFile output(options.output.szPath);
    output.CheckRoom(FileBytes(eTo, size));
    const BudgetCharge blocks(
        BlocksInBudget(library, ExternalPair::Needs(options.run.eAccess, nullptr, eTo, size)));
    ExternalPair pair(options.run.eAccess, nullptr, &output, eTo, size, {nObjectFormat, nObjectFormat});
    const Workers workers(options.run.nThreads);
    const Run run{options.run, library, report, steps, pair, workers, &output};

    PaintAndExport(PlannedRun(run), eTo, options.scene);
    PaintAndExport(run, eTo, options.scene);
    pair.DeliverOutput();
    output.Publish();

    report.TellPicture(options.output.szPath, eTo, size);
}
