// Import, work and export of a whole picture inside the budget.

#include "schemes/WholeTransfer.h"

#include "library/BudgetCharge.h"
#include "pictures/Formats.h"
#include "report/Step.h"
#include "schemes/BandLoop.h"
#include "schemes/Dumps.h"
#include "schemes/ExternalPlan.h"
#include "schemes/PlannedRun.h"

#include <algorithm>

namespace {

/// Ends the step of a transfer, whose external image is gone by now. An external image with a charge was
/// reached in bands of as many lines as the charge pays for; one without a charge was reached whole. Both
/// sides moved in the smaller of their two band heights.
void EndTransfer(const Run& run, Step& step, ImageRole eExternal, Format eFormat, const PlannedImage& object)
{
    const T_ImgInf& inf = eExternal == ImageRole::Input ? run.pair.Input() : run.pair.Output();
    const TransferPlan& transfer = object.Transfer();
    ImagePlan external = ExternalPlan(eExternal, eFormat, {inf.nWidth, inf.nHeight}, run.settings.eAccess);
    ImagePlan own = transfer.object;
    const BlockBytes& blocks = run.pair.Blocks();
    const std::int64_t nLine = LineBytes(eFormat, inf.nWidth);
    const std::int64_t nFits = transfer.nExternalCharge > 0 ? transfer.nExternalCharge / nLine : inf.nHeight;
    external.nBandLines = own.nBandLines =
        std::min(own.nBandLines, static_cast<int>(std::clamp<std::int64_t>(nFits, 1, inf.nHeight)));
    external.nBands = own.nBands = BandCount(inf.nHeight, own.nBandLines);

    external.nCharged =
        transfer.nExternalCharge + (eExternal == ImageRole::Input ? blocks.nInput : blocks.nOutput);
    const ImagePlan& in = eExternal == ImageRole::Input ? external : own;
    const ImagePlan& out = eExternal == ImageRole::Input ? own : external;
    run.lib.CheckBudget(step.Name(), own.nCharged + transfer.nExternalCharge + blocks.Sum());
    step.Plan({in, out}, transfer.nBudget);
    step.NoteCharges({.nInput = static_cast<LONG>(in.nCharged), .nOutput = static_cast<LONG>(out.nCharged)},
                     transfer.moment);
    step.NoteCharges({.nOutput = object.m_nAreaSize}); // after an export nothing is left
    step.End();
}

void ImportStep(const Run& run, const InputFile& input, PlannedImage& object, bool bReversed)
{
    Step step(run.steps, "import", kIpRead);
    const DWORD nCode = object.Import(run.pair.Input(), bReversed);
    if (run.settings.eAccess != Access::Memory)
        input.CheckWhole(); // first, as it may be why the import failed
    run.lib.CheckImport(nCode, input.Path(), object.m_ImgInfo.nBufSize, run.settings.eAccess == Access::Mmap);
    const PictureFacts& facts = input.Facts();
    step.Count({.nRead = LineBytes(facts.eFormat, facts.size.nWidth) * facts.size.nHeight,
                .nSpilled = object.Transfer().object.nTemporary});
    EndTransfer(run, step, ImageRole::Input, facts.eFormat, object);
}

/// Looks after bands in memory or in temporary files.
class StepWatch final : public BandWatch
{
public:
    StepWatch(const Run& run, const Job& job, const CImageObj& src, const CImageObj& dst, StepBands& bands)
        : m_run(run), m_job(job), m_src(src), m_dst(dst), m_bands(bands)
    {
    }
    void CheckSource(DWORD nCode) override
    {
        m_run.lib.CheckStep(nCode, m_job.szName, m_src.m_ImgInfo.nBufSize);
    }
    void CheckDestination(DWORD nCode) override
    {
        m_run.lib.CheckStep(nCode, m_job.szName, m_dst.m_ImgInfo.nBufSize);
    }
    void NoteMapped(const T_ImageLrg_tag& from, const T_ImageLrg_tag& to) override
    {
        m_bands.Note(ImageRole::Input, from);
        m_bands.Note(ImageRole::Output, to);
    }
    void NoteEnded() override { m_bands.Done(); }

private:
    const Run& m_run;
    const Job& m_job;
    const CImageObj& m_src;
    const CImageObj& m_dst;
    StepBands& m_bands;
};

/// Bytes that the planner gives to a banded image beside its share of the budget: the lines of its frame.
LONG FrameBytes(const PlannedImage& image)
{
    const T_ImageLrg_tag& info = image.m_ImgInfo;
    const std::int64_t nBytes = std::int64_t{2} * info.nFsize * info.nLineBytes;
    return image.WillBeBanded() ? static_cast<LONG>(std::min<std::int64_t>(nBytes, info.nBufSize)) : 0;
}

/// Plans both objects as one step, with bands in the proportion of their heights.
void PlanWork(const Run& run, const Job& job, PlannedImage& src, PlannedImage& dst)
{
    src.SetFsize(job.nFrame);
    dst.SetRatio(static_cast<int>(std::int64_t{100} * dst.m_ImgInfo.nHeight / src.m_ImgInfo.nHeight));
    src.ReturnDryCharge();
    tag_MemAlloc request;
    request.nOutCnt = 1;
    CImageObj* pSrc = &src;
    CImageObj* pDst = &dst;
    const BudgetCharge frame(FrameBytes(src));
    run.lib.CheckStep(CImageObj::MemoryAlloc(&request, &pSrc, &pDst, nullptr), job.szName,
                      dst.m_ImgInfo.nBufSize);
}

void WorkStep(const Run& run, const Job& job, PlannedImage& src, PlannedImage& dst)
{
    Step step(run.steps, job.szName, job.nIpNo);
    PlanWork(run, job, src, dst);
    run.lib.CheckBudget(job.szName, run.pair.Blocks().Sum() + src.m_nAreaSize + dst.m_nAreaSize);
    // When the work needs more source lines than destination lines, the destination's bands become smaller.
    const int nSrcLines = src.GetBandHeight();
    const Bands bands = FittingBands(*job.pWork, job.size.nHeight, dst.GetBandHeight(),
                                     [&](int, int nSrc) { return nSrc <= nSrcLines; });
    dst.SetBandHeight(bands.nLines);
    src.SetBandHeight(MostSourceLines(*job.pWork, bands));
    ImagePlan in = src.Plan(ImageRole::Input);
    ImagePlan out = dst.Plan(ImageRole::Output);
    in.nBands = out.nBands = bands.Count();
    step.Plan({in, out}, run.lib.Taken());
    step.NoteCharges({.nInput = src.m_nAreaSize, .nOutput = dst.m_nAreaSize});
    step.Count({.nSpilled = out.nTemporary});

    if (!run.settings.bPlan) {
        StepBands told(step, bands.Count(), FileBytes(job.eTo, job.size));
        StepWatch watch(run, job, src, dst, told);
        watch.CheckSource(src.SetFrameColor(job.frame.nMode, static_cast<int>(job.frame.nColor)));
        FillFrom(run, src, dst, *job.pWork, bands, watch);
        if (!run.settings.szDump.empty())
            DumpObjects(run, src, dst);
    }
    src.Destroy();
    step.NoteCharges({.nOutput = dst.m_nAreaSize});
    step.End();
}

} // namespace

void ExportStep(const Run& run, PlannedImage& object, Format eTo, bool bReversed, bool bOwnAlpha)
{
    Step step(run.steps, "export", kIpWrite);
    T_ImgInf& inf = run.pair.Output();
    const std::int64_t nBytes = FileBytes(eTo, {inf.nWidth, inf.nHeight});
    if (run.pOutput)
        run.pOutput->CheckRoom(nBytes); // again: temporary files may have taken some
    const DWORD nCode = object.Export(inf, bReversed, bOwnAlpha);
    if (run.pOutput)
        run.lib.CheckExport(nCode, run.pOutput->Path(),
                            {static_cast<std::uintmax_t>(nBytes), run.pOutput->AvailableBytes()});
    else
        run.lib.CheckStep(nCode, "export", 0);
    step.Count({.nWritten = LineBytes(eTo, inf.nWidth) * inf.nHeight});
    EndTransfer(run, step, ImageRole::Output, eTo, object);
}

void RunWholeScheme(const Run& run, const InputFile& input, const Job& job)
{
    if (!run.settings.bPlan)
        RunWholeScheme(PlannedRun(run), input, job);
    PlannedImage object(run.settings.bPlan, "object");
    ImportStep(run, input, object, job.order.bLines);
    if (!job.pWork)
        return ExportStep(run, object, job.eTo, false, job.bOwnAlpha);
    PlannedImage result(run.settings.bPlan, "result");
    run.lib.CheckStep(
        result.SetGeometry(job.size.nWidth, job.size.nHeight, ObjectFormat(SampleBytes(job.eTo))), job.szName,
        0);
    WorkStep(run, job, object, result);
    ExportStep(run, result, job.eTo, false, job.bOwnAlpha);
}
