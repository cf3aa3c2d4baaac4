// Import, work and export of a whole picture inside the budget.

#include "schemes/WholeTransfer.h"

#include "library/DryTransfer.h"
#include "schemes/BandLoop.h"
#include "schemes/Dumps.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

// The external image of a transfer is banded as far as its charge goes; without one it costs the budget
// nothing and is reached whole.
ImagePlan ExternalPlan(const Run& run, ImageRole eRole, Format eFormat, const T_ImgInf& inf,
                       const PlannedImage& object)
{
    const std::int64_t nLine = LineBytes(eFormat, inf.nWidth);
    const std::int64_t nCharged = object.ExternalCharge();
    const std::int64_t nFits = nCharged > 0 ? nCharged / nLine : inf.nHeight;
    return {.szImage =
                fmt::format("{} {}", eRole == ImageRole::Input ? "input" : "output", FormatName(eFormat)),
            .eRole = eRole,
            .info = PictureInfo(eFormat, {inf.nWidth, inf.nHeight}),
            .szPlace = ExternalPlace(run.settings.eAccess),
            .bFile = run.settings.eAccess != Access::Memory,
            .nBytes = nLine * inf.nHeight,
            .nBandLines = static_cast<int>(std::clamp<std::int64_t>(nFits, 1, inf.nHeight)),
            .nBands = 0,
            .nCharged = nCharged};
}

// Both sides of a transfer move in the smaller of the two band heights. The external image is gone by now.
void EndTransfer(const Run& run, const char* pszStep, int nIpNo, const T_ImgInf& inf,
                 const PlannedImage& object, ImagePlan from, ImagePlan to)
{
    from.nBandLines = to.nBandLines = std::min(from.nBandLines, to.nBandLines);
    from.nBands = to.nBands = BandCount(inf.nHeight, from.nBandLines);
    run.report.PlanStep({pszStep, nIpNo, {from, to}, object.NotedBudget()});
    RunHistory& history = run.report.History();
    history.NoteCharges({static_cast<LONG>(from.nCharged), static_cast<LONG>(to.nCharged)},
                        object.NotedMoment());
    history.NoteCharges({0, object.m_nAreaSize}); // of an export nothing is left
    run.report.EndStep();
}

void ImportStep(const Run& run, const InputFile& input, PlannedImage& object, bool bReversed)
{
    run.report.BeginStep("import", kIpRead);
    T_ImgInf& inf = run.pair.Input();
    const PictureFacts& facts = input.Facts();
    object.BeginTransfer();
    const DWORD nCode = run.settings.bPlan ? PlanImport(object, inf, bReversed)
                                           : ImportImg(&object, &inf, bReversed ? 1 : 0, nullptr);
    run.lib.CheckImport(nCode, input.Path(), object.m_ImgInfo.nBufSize);
    if (run.settings.eAccess != Access::Memory)
        input.CheckWhole();
    run.report.History().Count({.nRead = LineBytes(facts.eFormat, inf.nWidth) * inf.nHeight,
                                .nSpilled = object.NotedPlan(ImageRole::Output).nTemporary});
    EndTransfer(run, "import", kIpRead, inf, object,
                ExternalPlan(run, ImageRole::Input, facts.eFormat, inf, object),
                object.NotedPlan(ImageRole::Output));
}

/// The bands lie in memory or in temporary files.
class StepWatch final : public BandWatch
{
public:
    StepWatch(const Run& run, const Job& job, const CImageObj& src, const CImageObj& dst)
        : m_run(run), m_job(job), m_src(src), m_dst(dst)
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
        m_run.report.NoteBand(0, from);
        m_run.report.NoteBand(1, to);
    }
    void NoteEnded() override {}

private:
    const Run& m_run;
    const Job& m_job;
    const CImageObj& m_src;
    const CImageObj& m_dst;
};

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
    run.lib.CheckStep(CImageObj::MemoryAlloc(&request, &pSrc, &pDst, nullptr), job.szName,
                      dst.m_ImgInfo.nBufSize);
}

void WorkStep(const Run& run, const Job& job, PlannedImage& src, PlannedImage& dst)
{
    run.report.BeginStep(job.szName, job.nIpNo);
    PlanWork(run, job, src, dst);
    // A work that looks at lines beyond its own leaves the source's band as planned and takes fewer lines of
    // the destination.
    const int nSrcLines = src.GetBandHeight();
    const Bands bands = FittingBands(*job.pWork, job.size.nHeight, dst.GetBandHeight(),
                                     [&](int, int nSrc) { return nSrc <= nSrcLines; });
    dst.SetBandHeight(bands.nLines);
    src.SetBandHeight(MostSourceLines(*job.pWork, bands));
    StepPlan plan{job.szName,
                  job.nIpNo,
                  {src.Plan("object", ImageRole::Input), dst.Plan("result", ImageRole::Output)},
                  dst.NotedBudget()};
    plan.images[0].nBands = plan.images[1].nBands = bands.Count();
    run.report.PlanStep(plan);
    run.report.History().NoteCharges({src.m_nAreaSize, dst.m_nAreaSize});
    run.report.History().Count({.nSpilled = plan.images[1].nTemporary});

    if (!run.settings.bPlan) {
        StepWatch watch(run, job, src, dst);
        run.report.ExpectBands(bands.Count(), FileBytes(job.eTo, job.size));
        watch.CheckSource(src.SetFrameColor(job.frame.nMode, static_cast<int>(job.frame.nColor)));
        FillFrom(run, src, dst, *job.pWork, bands, watch);
        if (!run.settings.szDump.empty())
            DumpObjects(run, src, dst);
    }
    src.Destroy();
    run.report.History().NoteCharges({0, dst.m_nAreaSize});
    run.report.EndStep();
}

} // namespace

void ExportStep(const Run& run, PlannedImage& object, Format eTo, bool bReversed, bool bOwnAlpha)
{
    run.report.BeginStep("export", kIpWrite);
    T_ImgInf& inf = run.pair.Output();
    object.BeginTransfer();
    if (run.settings.bPlan) {
        run.lib.CheckStep(PlanExport(object, inf), "export", 0);
    } else {
        const std::int64_t nBytes = FileBytes(eTo, {inf.nWidth, inf.nHeight});
        run.pOutput->CheckRoom(nBytes); // again: temporary files may have taken it
        const DWORD nCode = ExportImg(&object, &inf, bReversed ? 1 : 0, nullptr, bOwnAlpha ? 0 : 1);
        run.lib.CheckExport(nCode, run.pOutput->Path(),
                            {static_cast<std::uintmax_t>(nBytes), run.pOutput->AvailableBytes()});
    }
    run.report.History().Count({.nWritten = LineBytes(eTo, inf.nWidth) * inf.nHeight});
    EndTransfer(run, "export", kIpWrite, inf, object, object.NotedPlan(ImageRole::Input),
                ExternalPlan(run, ImageRole::Output, eTo, inf, object));
}

void RunWholeScheme(const Run& run, const InputFile& input, const Job& job)
{
    PlannedImage object(run.settings.bPlan);
    ImportStep(run, input, object, job.bReversedLines);
    if (!job.pWork)
        return ExportStep(run, object, job.eTo, false, job.bOwnAlpha);
    PlannedImage result(run.settings.bPlan, "result");
    run.lib.CheckStep(
        result.SetGeometry(job.size.nWidth, job.size.nHeight, ObjectFormat(SampleBytes(job.eTo))), job.szName,
        0);
    WorkStep(run, job, object, result);
    ExportStep(run, result, job.eTo, false, job.bOwnAlpha);
}
