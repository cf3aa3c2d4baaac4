// Unit objects over input and output, and the loops over their bands.

#include "schemes/UnitTransfer.h"

#include "pictures/Formats.h"
#include "pixels/FrameFill.h"
#include "report/Step.h"
#include "schemes/BandLoop.h"
#include "schemes/ExternalPlan.h"

#include <algorithm>

namespace {

/// The tool's own buffer for a band and its frame, charged to the budget.
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

/// Bytes of the buffer that a band of nLines lines takes.
std::int64_t BufferBytes(const CImageObj& object, int nLines)
{
    const T_ImageLrg_tag& info = object.m_ImgInfo;
    int nBytes = INT32_MAX, nLineBytes = 0, nWidth = 0, nHeight = 0;
    CImageObj().CalcImgBufLrg(nBytes, nLineBytes, nWidth, nHeight, info.nWidth, nLines, info.nMarginX,
                              info.nMarginY, ObjectFormat(info.nSampleBytes), info.nAlignType);
    return nBytes;
}

/// Bytes of stored lines that are held beside a band's buffer: of files one that was read, and those that are
/// written together; of mapped files none; in memory all.
std::int64_t StoredBytes(const Run& run, const InputFile& input, const Job& job, int nLines)
{
    if (run.settings.eAccess != Access::File)
        return run.pair.Blocks().Sum();
    return LineBytes(input.Facts().eFormat, input.Facts().size.nWidth) +
           nLines * LineBytes(job.eTo, job.size.nWidth);
}

/// Lines that the library reads for a band: its own, and those of its frame that lie in the image.
std::int64_t LinesRead(const T_ImageLrg_tag& band)
{
    const int nFirst = std::max(band.nBandTop - band.nFsize, 0);
    const int nLast = std::min(band.nBandBottom + band.nFsize, band.nHeight - 1);
    return nLast - nFirst + 1;
}

/// Turns what the library returns, or only records, into failures of input or output.
class UnitChecks
{
public:
    UnitChecks(const Run& run, const InputFile& input, const Job& job)
        : m_run(run), m_input(input), m_job(job)
    {
    }

    void CheckSource(DWORD nCode) const
    {
        CheckInput();
        m_run.lib.CheckRead(WithRecorded(nCode), m_input.Path());
    }

    void CheckDestination(DWORD nCode) const
    {
        if (m_run.settings.bPlan)
            return m_run.lib.CheckStep(nCode, m_job.szName, 0);
        if (nCode != MM_SUCCESS)
            CheckInput(); // the set-up looks at both files
        m_run.lib.CheckExport(
            WithRecorded(nCode), m_run.pOutput->Path(),
            {static_cast<std::uintmax_t>(FileBytes(m_job.eTo, m_job.size)), m_run.pOutput->AvailableBytes()});
    }

private:
    void CheckInput() const
    {
        if (m_run.settings.eAccess != Access::Memory)
            m_input.CheckWhole();
    }

    // A mapped view's failures are in the library's log only.
    DWORD WithRecorded(DWORD nCode) const
    {
        const bool bLook = nCode == MM_SUCCESS && m_run.settings.eAccess == Access::Mmap;
        return bLook && m_run.lib.HasRecordedError() ? DWORD{MM_FILE_ACCESS} : nCode;
    }

    const Run& m_run;
    const InputFile& m_input;
    const Job& m_job;
};

/// Unit objects and their bands. With one object, source and destination are the same.
struct UnitBands
{
    const CImageObj& src;
    const CImageObj& dst;
    int nSrcLines; ///< of the source's bands, without their frames
    Bands bands;
    const BandBuffer* pCopy; ///< null when there is none

    bool IsPair() const { return &src != &dst; }
};

/// Tells the step of its bands. Its plan is what they took of the budget at the fullest moment.
class UnitWatch final : public BandWatch
{
public:
    UnitWatch(const Run& run, const InputFile& input, const Job& job, const UnitBands& unit, Step& step)
        : m_run(run), m_input(input), m_job(job), m_checks(run, input, job), m_unit(unit), m_step(step),
          m_bands(step, unit.bands.Count(), FileBytes(job.eTo, job.size))
    {
        NoteCharges();
    }

    void CheckSource(DWORD nCode) override { m_checks.CheckSource(nCode); }
    void CheckDestination(DWORD nCode) override { m_checks.CheckDestination(nCode); }

    void NoteMapped(const T_ImageLrg_tag& from, const T_ImageLrg_tag& to) override
    {
        if (m_run.lib.Taken() > m_nMost) {
            m_nMost = m_run.lib.Taken();
            m_most = ChargesNow();
            m_step.Plan(Images(), m_nMost);
        }
        NoteCharges();
        m_bands.Note(ImageRole::Input, from);
        if (m_unit.IsPair())
            m_bands.Note(ImageRole::Output, to);
        m_step.Count(
            {.nRead = LinesRead(from) * LineBytes(m_input.Facts().eFormat, m_input.Facts().size.nWidth)});
        m_nLines = to.nBandBottom - to.nBandTop + 1;
    }

    void NoteEnded() override
    {
        NoteCharges();
        m_step.Count({.nWritten = m_nLines * LineBytes(m_job.eTo, m_job.size.nWidth)});
        m_bands.Done();
    }

private:
    Charges ChargesNow() const
    {
        const BlockBytes& blocks = m_run.pair.Blocks();
        return {.nInput = HeldBytes(m_unit.src) + static_cast<LONG>(blocks.nInput),
                .nOutput = (m_unit.IsPair() ? HeldBytes(m_unit.dst) : 0) + static_cast<LONG>(blocks.nOutput),
                .nTemporary = m_unit.pCopy ? m_unit.pCopy->Record().nBufSize : 0};
    }

    void NoteCharges() { m_step.NoteCharges(ChargesNow()); }

    /// The step's images, as they were at the fullest moment.
    std::vector<ImagePlan> Images() const
    {
        const Access eAccess = m_run.settings.eAccess;
        const PictureFacts& facts = m_input.Facts();
        ImagePlan in = ExternalPlan(ImageRole::Input, facts.eFormat, facts.size, eAccess);
        in.info.nFsize = m_job.nFrame;
        in.nBandLines = m_unit.nSrcLines;
        in.nCharged = m_most.nInput;
        ImagePlan out = ExternalPlan(ImageRole::Output, m_job.eTo, m_job.size, eAccess);
        out.nBandLines = m_unit.bands.nLines;
        out.nCharged = m_most.nOutput;
        in.nBands = out.nBands = m_unit.bands.Count();
        std::vector<ImagePlan> images{in, out};
        if (m_unit.pCopy)
            images.push_back(m_unit.pCopy->Plan());
        return images;
    }

    const Run& m_run;
    const InputFile& m_input;
    const Job& m_job;
    UnitChecks m_checks;
    UnitBands m_unit;
    Step& m_step;
    StepBands m_bands;
    Charges m_most;   // at the fullest moment
    LONG m_nMost = 0; // of the budget then
    int m_nLines = 0; // of the destination's band that is mapped
};

/// The output's description, with which the objects are set up. A planned run has no output.
T_ImgInf OutputInf(const Run& run)
{
    T_ImgInf out = run.pair.Output();
    if (run.settings.bPlan)
        out.eAcsType = ACS_NONE;
    return out;
}

/// The pixels begin where the file's header says. A planned run reads none.
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
    const UnitChecks checks(run, input, job);
    T_ImgInf out = OutputInf(run);
    object.m_ImgInfo.nMarginX = object.m_ImgInfo.nMarginY = job.nFrame;
    checks.CheckDestination(ImportImgForUnit(&object, &run.pair.Input(), &out, job.order.bLines ? 1 : 0,
                                             nullptr, MM_ALIGN_LINES, job.bOwnAlpha ? 0 : 1));
    SettleSource(run, input, object);
    object.SetFsize(job.nFrame);
    checks.CheckSource(object.SetFrameColor(job.frame.nMode, static_cast<int>(job.frame.nColor)));

    // The library's band height leaves room for two buffers.
    const Bands bands{job.size.nHeight, object.GetBandHeight()};
    run.lib.CheckBudget(job.szName, (job.pWork ? 2 : 1) * BufferBytes(object, bands.nLines) +
                                        StoredBytes(run, input, job, bands.nLines));
    std::optional<BandBuffer> copy;
    if (job.pWork)
        copy.emplace(run, object, bands.nLines, job.szName);
    UnitWatch watch(run, input, job, {object, object, bands.nLines, bands, copy ? &*copy : nullptr}, step);
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
    T_ImgInf out = OutputInf(run);
    UnitChecks(run, input, job)
        .CheckDestination(
            ImportImgForUnitEnLarge(&dst, &out, &src, &run.pair.Input(), 0, nullptr, job.bOwnAlpha ? 0 : 1));
    SettleSource(run, input, src);

    // The library plans for whole source lines and all that becomes of them. But an interpolation needs their
    // neighbours too, and with a large factor a band takes only a part of what becomes of a line.
    const std::int64_t nRoom = std::min(CImageObj::AskFreeMemory(), CImageObj::ms_nUseMaxMemoryUnit);
    const std::int64_t nDstLine = dst.m_ImgInfo.nLineBytes + LineBytes(job.eTo, job.size.nWidth);
    const Bands bands =
        FittingBands(*job.pWork, job.size.nHeight, dst.GetBandHeight(), [&](int nDst, int nSrc) {
            return nDst * nDstLine + std::int64_t{nSrc} * src.m_ImgInfo.nLineBytes <= nRoom;
        });
    const int nSrcLines = MostSourceLines(*job.pWork, bands);
    run.lib.CheckBudget(job.szName, BufferBytes(src, nSrcLines) + BufferBytes(dst, bands.nLines) +
                                        StoredBytes(run, input, job, bands.nLines));
    UnitWatch watch(run, input, job, {src, dst, nSrcLines, bands, nullptr}, step);
    FillFrom(run, src, dst, *job.pWork, bands, watch);
}

} // namespace

void RunUnitScheme(const Run& run, const InputFile& input, const Job& job)
{
    Step step(run.steps, job.szName, job.nIpNo);
    if (job.bOneObject)
        RunOneObject(run, input, job, step);
    else
        RunPair(run, input, job, step);
    step.NoteCharges({});
    step.End();
}
