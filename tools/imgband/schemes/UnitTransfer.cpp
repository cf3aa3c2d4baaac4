// Unit objects over input and output, and the loops over their bands.

#include "schemes/UnitTransfer.h"

#include "pictures/Formats.h"
#include "pixels/FrameFill.h"
#include "report/Step.h"
#include "schemes/BandLoop.h"
#include "schemes/ExternalPlan.h"

#include <algorithm>

namespace {

/// A buffer of the tool's own for a band and its frame, charged to the budget.
class BandBuffer
{
public:
    BandBuffer(const Run& run, const CImageObj& object, int nLines, const std::string& szStep)
    {
        const T_ImageLrg_tag& info = object.m_ImgInfo;
        m_record.nRatio = 100;
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
                .eRole = ImageRole::Temporary,
                .info = m_record,
                .szPlace = "memory",
                .nBytes = m_record.nBufSize,
                .nBandLines = m_record.nHeight,
                .nBands = 1,
                .nCharged = m_record.nBufSize};
    }

private:
    T_ImageLrg_tag m_record = {};
};

/// Bytes of the budget that the band of a unit object takes.
LONG HeldBytes(const CImageObj& object)
{
    return object.m_ImgInfo.pBase ? object.m_ImgInfo.nBufSize : 0;
}

/// Lines that the library reads for a band: those of the frame come from the image as far as it has them.
std::int64_t LinesRead(const T_ImageLrg_tag& band)
{
    const int nFirst = std::max(band.nBandTop - band.nFsize, 0);
    const int nLast = std::min(band.nBandBottom + band.nFsize, band.nHeight - 1);
    return nLast - nFirst + 1;
}

/// Turns what the library returns or only records into failures of input or output, and tells the report of
/// the bands: the step's plan is what they took of the budget at most.
class UnitWatch final : public BandWatch
{
public:
    UnitWatch(const Run& run, const InputFile& input, const Job& job, const CImageObj& src,
              const CImageObj& dst, Step& step)
        : m_run(run), m_input(input), m_job(job), m_src(src), m_dst(dst), m_step(step)
    {
    }

    void CheckSource(DWORD nCode) override
    {
        if (m_run.settings.eAccess != Access::Memory)
            m_input.CheckWhole();
        m_run.lib.CheckRead(WithRecorded(nCode), m_input.Path());
    }

    void CheckDestination(DWORD nCode) override
    {
        if (m_run.settings.bPlan)
            return m_run.lib.CheckStep(nCode, m_job.szName, 0);
        m_run.lib.CheckExport(
            WithRecorded(nCode), m_run.pOutput->Path(),
            {static_cast<std::uintmax_t>(FileBytes(m_job.eTo, m_job.size)), m_run.pOutput->AvailableBytes()});
    }

    /// To be called ahead of the first band.
    /// @param nSrcLines  of the source's bands, without their frames
    /// @param pCopy      null when there is none
    void Begin(int nSrcLines, Bands bands, const BandBuffer* pCopy)
    {
        m_nSrcLines = nSrcLines;
        m_bands = bands;
        m_pCopy = pCopy;
        m_step.ExpectBands(bands.Count(), FileBytes(m_job.eTo, m_job.size));
        NoteCharges();
    }

    void NoteMapped(const T_ImageLrg_tag& from, const T_ImageLrg_tag& to) override
    {
        if (m_run.lib.Taken() > m_nBudget) {
            m_nBudget = m_run.lib.Taken();
            m_nSource = HeldBytes(m_src);
            m_nDestination = IsPair() ? HeldBytes(m_dst) : 0;
            m_step.Plan(Images(), m_nBudget);
        }
        NoteCharges();
        m_step.NoteBand(ImageRole::Input, from);
        if (IsPair())
            m_step.NoteBand(ImageRole::Output, to);
        m_step.Count(
            {.nRead = LinesRead(from) * LineBytes(m_input.Facts().eFormat, m_input.Facts().size.nWidth)});
        m_nLines = to.nBandBottom - to.nBandTop + 1;
    }

    void NoteEnded() override
    {
        NoteCharges();
        m_step.Count({.nWritten = m_nLines * LineBytes(m_job.eTo, m_job.size.nWidth)});
        m_step.BandDone();
    }

private:
    bool IsPair() const { return &m_src != &m_dst; }

    void NoteCharges() const
    {
        m_step.NoteCharges({.nInput = HeldBytes(m_src),
                            .nOutput = IsPair() ? HeldBytes(m_dst) : 0,
                            .nTemporary = m_pCopy ? m_pCopy->Record().nBufSize : 0});
    }

    /// The step's images as their bands are.
    std::vector<ImagePlan> Images() const
    {
        const Access eAccess = m_run.settings.eAccess;
        const PictureFacts& facts = m_input.Facts();
        ImagePlan in = ExternalPlan(ImageRole::Input, facts.eFormat, facts.size, eAccess);
        in.info.nFsize = m_job.nFrame;
        in.nBandLines = m_nSrcLines;
        in.nCharged = m_nSource;
        ImagePlan out = ExternalPlan(ImageRole::Output, m_job.eTo, m_job.size, eAccess);
        out.nBandLines = m_bands.nLines;
        out.nCharged = m_nDestination;
        in.nBands = out.nBands = m_bands.Count();
        std::vector<ImagePlan> images{in, out};
        if (m_pCopy)
            images.push_back(m_pCopy->Plan());
        return images;
    }

    // What a mapped view could not take or give is in the library's log only.
    DWORD WithRecorded(DWORD nCode) const
    {
        const bool bLook = nCode == MM_SUCCESS && m_run.settings.eAccess == Access::Mmap;
        return bLook && m_run.lib.HasRecordedError() ? DWORD{MM_FILE_ACCESS} : nCode;
    }

    const Run& m_run;
    const InputFile& m_input;
    const Job& m_job;
    const CImageObj& m_src;
    const CImageObj& m_dst;
    Step& m_step;
    int m_nSrcLines = 0;
    Bands m_bands{};
    const BandBuffer* m_pCopy = nullptr;
    LONG m_nSource = 0; // charges at the fullest moment
    LONG m_nDestination = 0;
    LONG m_nBudget = 0;
    int m_nLines = 0; // of the destination's band that is mapped
};

/// The descriptions that the objects are set up with: a planned run has no output.
T_ImgInf OutputInf(const Run& run)
{
    T_ImgInf out = run.pair.Output();
    if (run.settings.bPlan)
        out.eAcsType = ACS_NONE;
    return out;
}

/// The header's word on where the pixels begin counts, and a planned run reads none.
void SettleSource(const Run& run, const InputFile& input, CImageObj& reader)
{
    reader.m_InImgInf.nOffset = static_cast<int>(input.Facts().nOffset);
    if (run.settings.bPlan)
        reader.m_InImgInf.eAcsType = ACS_NONE;
}

/// A band of the object becomes a band of the result, in place.
void WorkInPlace(const Run& run, const Job& job, const T_ImageLrg_tag& band, const BandBuffer& buffer)
{
    const bool bMirrored = job.LeftToWork(Scheme::Unit).bPixels;
    const T_ImageLrg_tag copy = CopyFramedBand(band, buffer.Record(), bMirrored, run.workers);
    job.pWork->Run(copy, band, run.workers);
}

void RunOneObject(const Run& run, const InputFile& input, const Job& job, Step& step)
{
    CImageObj object;
    UnitWatch watch(run, input, job, object, object, step);
    T_ImgInf out = OutputInf(run);
    object.m_ImgInfo.nMarginX = object.m_ImgInfo.nMarginY = job.nFrame;
    watch.CheckDestination(ImportImgForUnit(&object, &run.pair.Input(), &out, job.order.bLines ? 1 : 0,
                                            nullptr, MM_ALIGN_LINES, job.bOwnAlpha ? 0 : 1));
    SettleSource(run, input, object);
    object.SetFsize(job.nFrame);
    watch.CheckSource(object.SetFrameColor(job.frame.nMode, static_cast<int>(job.frame.nColor)));

    // The library's band height leaves room for two buffers.
    const Bands bands{job.size.nHeight, object.GetBandHeight()};
    std::optional<BandBuffer> copy;
    if (job.pWork)
        copy.emplace(run, object, bands.nLines, job.szName);
    watch.Begin(bands.nLines, bands, copy ? &*copy : nullptr);
    for (int i = 0; i < bands.Count(); ++i) {
        MappedBand band(object, bands.At(i));
        watch.CheckSource(band.Result());
        watch.NoteMapped(band.Record(), band.Record());
        if (job.pWork && !run.settings.bPlan)
            WorkInPlace(run, job, band.Record(), *copy);
        watch.CheckDestination(band.End());
        watch.NoteEnded();
    }
}

void RunPair(const Run& run, const InputFile& input, const Job& job, Step& step)
{
    CImageObj src;
    CImageObj dst;
    UnitWatch watch(run, input, job, src, dst, step);
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
    watch.Begin(MostSourceLines(*job.pWork, bands), bands, nullptr);
    FillFrom(run, src, dst, *job.pWork, bands, watch);
}

} // namespace

void RunUnitScheme(const Run& run, const InputFile& input, const Job& job)
{
    Step step(run.report, job.szName, job.nIpNo);
    if (job.bOneObject)
        RunOneObject(run, input, job, step);
    else
        RunPair(run, input, job, step);
    step.NoteCharges({});
    step.End();
}
