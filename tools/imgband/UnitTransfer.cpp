// Unit objects over input and output, and the loops over their bands.

#include "UnitTransfer.h"

#include "BandLoop.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

/// Turns what the library returns or only records into failures of input or output, and keeps what the bands
/// took of the budget at most.
class UnitWatch final : public BandWatch
{
public:
    UnitWatch(const Run& run, const InputFile& input, const Job& job, const CImageObj& src,
              const CImageObj& dst)
        : m_run(run), m_input(input), m_job(job), m_src(src), m_dst(dst)
    {
    }

    void CheckSource(DWORD nCode) override
    {
        if (m_run.options.eAccess != Access::Memory)
            m_input.CheckWhole();
        m_run.lib.CheckRead(WithRecorded(nCode), m_input.Path());
    }

    void CheckDestination(DWORD nCode) override
    {
        if (m_run.options.bPlan)
            return m_run.lib.CheckStep(nCode, m_job.szName, 0);
        m_run.lib.CheckExport(
            WithRecorded(nCode), m_run.pOutput->Path(),
            {static_cast<std::uintmax_t>(FileBytes(m_job.eTo, m_job.size)), m_run.pOutput->AvailableBytes()});
    }

    void NoteBands() override
    {
        m_nSource = std::max(m_nSource, m_src.m_ImgInfo.nBufSize);
        if (&m_dst != &m_src)
            m_nDestination = std::max(m_nDestination, m_dst.m_ImgInfo.nBufSize);
        m_nBudget = std::max(m_nBudget, m_run.lib.Taken());
    }

    /// The step as the bands were.
    StepPlan Plan(int nSrcLines, Bands bands) const
    {
        const char* pszPlace = ExternalPlace(m_run.options.eAccess);
        const Format eFrom = m_input.Facts().eFormat;
        return {m_job.szName,
                {{.szImage = fmt::format("input {}", FormatName(eFrom)),
                  .szPlace = pszPlace,
                  .nBytes = m_input.PictureEnd() - m_input.Facts().nOffset,
                  .nBandLines = nSrcLines,
                  .nBands = bands.Count(),
                  .nCharged = m_nSource},
                 {.szImage = fmt::format("output {}", FormatName(m_job.eTo)),
                  .szPlace = pszPlace,
                  .nBytes = LineBytes(m_job.eTo, m_job.size.nWidth) * m_job.size.nHeight,
                  .nBandLines = bands.nLines,
                  .nBands = bands.Count(),
                  .nCharged = m_nDestination}},
                m_nBudget};
    }

private:
    // What a mapped view could not take or give is in the library's log only.
    DWORD WithRecorded(DWORD nCode) const
    {
        const bool bLook = nCode == MM_SUCCESS && m_run.options.eAccess == Access::Mmap;
        return bLook && m_run.lib.HasRecordedError() ? DWORD{MM_FILE_ACCESS} : nCode;
    }

    const Run& m_run;
    const InputFile& m_input;
    const Job& m_job;
    const CImageObj& m_src;
    const CImageObj& m_dst;
    int m_nSource = 0;
    int m_nDestination = 0;
    LONG m_nBudget = 0;
};

/// A buffer of the tool's own for a band and its frame, charged to the budget.
class BandBuffer
{
public:
    BandBuffer(const Run& run, const CImageObj& object, int nLines, const std::string& szStep)
    {
        const T_ImageLrg_tag& info = object.m_ImgInfo;
        run.lib.CheckStep(CImageObj::AllcImgBufLrg(&m_record, info.nWidth, nLines, info.nMarginX,
                                                   info.nMarginY, ObjectFormat(info.nSampleBytes),
                                                   info.nAlignType),
                          szStep, 0);
    }
    ~BandBuffer() { CImageObj::FreeImgBufLrg(&m_record); }
    BandBuffer(const BandBuffer&) = delete;
    BandBuffer& operator=(const BandBuffer&) = delete;

    const T_ImageLrg_tag& Record() const { return m_record; }

    ImagePlan Plan() const
    {
        return {.szImage = "framed copy",
                .szPlace = "memory",
                .nBytes = m_record.nBufSize,
                .nBandLines = m_record.nHeight,
                .nBands = 1,
                .nCharged = m_record.nBufSize};
    }

private:
    T_ImageLrg_tag m_record = {};
};

/// The descriptions that the objects are set up with: a planned run has no output.
T_ImgInf OutputInf(const Run& run)
{
    T_ImgInf out = run.pair.Output();
    if (run.options.bPlan)
        out.eAcsType = ACS_NONE;
    return out;
}

/// The header's word on where the pixels begin counts, and a planned run reads none.
void SettleSource(const Run& run, const InputFile& input, CImageObj& reader)
{
    reader.m_InImgInf.nOffset = static_cast<int>(input.Facts().nOffset);
    if (run.options.bPlan)
        reader.m_InImgInf.eAcsType = ACS_NONE;
}

/// A band of the object becomes a band of the result, in place.
void WorkInPlace(const Run& run, const Job& job, const T_ImageLrg_tag& band, const BandBuffer& buffer)
{
    const bool bMirrored = job.bReversedLines != job.bReversedPixels; // it was read turned
    const T_ImageLrg_tag copy = CopyFramedBand(band, buffer.Record(), bMirrored, run.workers);
    job.pWork->Run(copy, band, run.workers);
}

StepPlan RunOneObject(const Run& run, const InputFile& input, const Job& job)
{
    CImageObj object;
    UnitWatch watch(run, input, job, object, object);
    T_ImgInf out = OutputInf(run);
    object.m_ImgInfo.nMarginX = object.m_ImgInfo.nMarginY = job.nFrame;
    watch.CheckDestination(ImportImgForUnit(&object, &run.pair.Input(), &out, job.bReversedLines ? 1 : 0,
                                            nullptr, MM_ALIGN_LINES, job.bOwnAlpha ? 0 : 1));
    SettleSource(run, input, object);
    object.SetFsize(job.nFrame);
    watch.CheckSource(object.SetFrameColor(job.frame.nMode, static_cast<int>(job.frame.nColor)));

    // The library's band height leaves room for two buffers.
    const Bands bands{job.size.nHeight, object.GetBandHeight()};
    std::optional<BandBuffer> copy;
    if (job.pWork)
        copy.emplace(run, object, bands.nLines, job.szName);
    run.report.ExpectBands(bands.Count(), FileBytes(job.eTo, job.size));
    for (int i = 0; i < bands.Count(); ++i) {
        MappedBand band(object, bands.At(i));
        watch.CheckSource(band.Result());
        watch.NoteBands();
        if (job.pWork && !run.options.bPlan)
            WorkInPlace(run, job, band.Record(), *copy);
        watch.CheckDestination(band.End());
        run.report.BandDone();
    }
    StepPlan plan = watch.Plan(bands.nLines, bands);
    if (copy)
        plan.images.push_back(copy->Plan());
    return plan;
}

StepPlan RunPair(const Run& run, const InputFile& input, const Job& job)
{
    CImageObj src;
    CImageObj dst;
    UnitWatch watch(run, input, job, src, dst);
    T_ImgInf out = OutputInf(run);
    watch.CheckDestination(
        ImportImgForUnitEnLarge(&dst, &out, &src, &run.pair.Input(), 0, nullptr, job.bOwnAlpha ? 0 : 1));
    SettleSource(run, input, src);

    // The library plans whole source lines with all that they become. An interpolation needs neighbours too,
    // and a large factor only a part.
    const std::int64_t nRoom = std::min(CImageObj::AskFreeMemory(), CImageObj::ms_nUseMaxMemoryUnit);
    const std::int64_t nDstLine = dst.m_ImgInfo.nLineBytes + LineBytes(job.eTo, job.size.nWidth);
    const Bands bands =
        FittingBands(*job.pWork, job.size.nHeight, dst.GetBandHeight(), [&](int nDst, int nSrc) {
            return nDst * nDstLine + std::int64_t{nSrc} * src.m_ImgInfo.nLineBytes <= nRoom;
        });
    const int nSrcLines = MostSourceLines(*job.pWork, bands);
    run.report.ExpectBands(bands.Count(), FileBytes(job.eTo, job.size));
    FillFrom(run, src, dst, *job.pWork, bands, watch);
    return watch.Plan(nSrcLines, bands);
}

} // namespace

void RunUnitScheme(const Run& run, const InputFile& input, const Job& job)
{
    run.report.BeginStep(job.szName);
    run.report.EndStep(job.bOneObject ? RunOneObject(run, input, job) : RunPair(run, input, job));
}
