// Reading unit bands from their external source. A band and the lines of its frame are one run of stored
// lines, and each stored line becomes one line of the band's buffer.

#include "MemoryManager/CImageObj.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/UnitBandLines.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/base/ScratchBlock.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/layout/SampleLines.h"
#include "MemoryManager/layout/UnitImages.h"
#include "MemoryManager/stores/ExternalBytes.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

constexpr char kUnit[] = "MemoryManager/CImageObj";

// Statements that report to the error log.
constexpr int kLineSourceView = 610;
constexpr int kLineSourceSeek = 655;
constexpr int kLineSourceRead = 668;

/// How a stored line of the source becomes a line of the band.
///
/// A band narrower than the source takes the first pixels of a stored line, or the last ones when the source
/// is turned by 180 degrees. They are converted in stored order and then turned within the band line. Upright
/// lines whose pixels already have the band's four samples are copied byte by byte as far as the band line
/// reaches, padding included.
class LineReader
{
public:
    LineReader(const T_ImgInf& in, const T_ImageLrg_tag& band, bool bTurned)
        : m_nBandPixelBytes(static_cast<std::size_t>(band.nPixelBytes)), m_bTurned(bTurned),
          m_bCopied(!bTurned && SamplesOf(in.nSrcFormat) == kUnitSamples)
    {
        const int nSample = SampleBytesOf(in.nSrcFormat);
        const auto nPixel = static_cast<std::size_t>(nSample * SamplesOf(in.nSrcFormat));
        const auto nStored = static_cast<std::size_t>(in.nWidth);
        m_nPixels = std::min(nStored, static_cast<std::size_t>(band.nWidth));
        m_rule = KeepSamples(static_cast<int>(nPixel), band.nPixelBytes, nSample, false);
        m_rule.nFixed = 0; // samples that the source lacks stay zero, as the fresh buffer has them
        m_pConvert = BestKernelFor(m_rule).pRun;
        m_nSkipped = bTurned ? (nStored - m_nPixels) * nPixel : 0;
        m_nUsed = m_nSkipped + m_nPixels * nPixel;
        if (m_bCopied)
            m_nUsed = static_cast<std::size_t>(
                std::min(in.nLineBytes, band.nLineBytes - band.nMarginX * band.nPixelBytes));
    }

    bool IsCopied() const { return m_bCopied; }

    /// Bytes from the stored line's start to the last one that is used.
    std::size_t UsedBytes() const { return m_nUsed; }

    void Read(unsigned char* pBandLine, const unsigned char* pStored) const
    {
        if (m_bCopied) {
            std::memcpy(pBandLine, pStored, m_nUsed);
            return;
        }
        m_pConvert(m_rule, pBandLine, pStored + m_nSkipped, m_nPixels);
        if (!m_bTurned)
            return;
        if (m_nBandPixelBytes == sizeof(std::uint32_t))
            Turn(reinterpret_cast<std::uint32_t*>(pBandLine));
        else
            Turn(reinterpret_cast<std::uint64_t*>(pBandLine));
    }

private:
    template <class Pixel> void Turn(Pixel* pLine) const { std::reverse(pLine, pLine + m_nPixels); }

    PixelRule m_rule{};
    decltype(LineKernel::pRun) m_pConvert = nullptr;
    std::size_t m_nBandPixelBytes;
    std::size_t m_nPixels = 0;
    std::size_t m_nSkipped = 0;
    std::size_t m_nUsed = 0;
    bool m_bTurned;
    bool m_bCopied;
};

/// The stored lines of a band and its frame, in storage order.
class StoredRun
{
public:
    /// @param nPosition  position of the first stored line of the band itself
    /// @param nClass     StoredPlace of the band
    StoredRun(const T_ImageLrg_tag& band, bool bTurned, int nLineBytes, int nPosition, int nClass)
        : m_band(band), m_bTurned(bTurned), m_nLineBytes(nLineBytes)
    {
        // Frame lines are read where the source has lines: ahead of the band unless it starts the stored
        // data, and behind the band unless it ends the data. Lines ahead of it lie above it; in a
        // turned source they lie below it.
        const auto ePlace = static_cast<StoredPlace>(nClass);
        const bool bAhead = ePlace == StoredPlace::Inside || ePlace == StoredPlace::End;
        const bool bBehind = ePlace == StoredPlace::Inside || ePlace == StoredPlace::Start;
        m_nAbove = (bTurned ? bBehind : bAhead) ? FrameLinesAbove(band) : 0;
        m_nBelow = (bTurned ? bAhead : bBehind) ? FrameLinesBelow(band) : 0;
        const std::int64_t nAhead = bTurned ? m_nBelow : m_nAbove;
        m_nStart = static_cast<DWORD>(nPosition) - static_cast<DWORD>(nAhead * nLineBytes);
    }

    int Lines() const { return m_nAbove + LinesOf(m_band) + m_nBelow; }

    /// The position of the run's i-th line.
    DWORD Position(int i) const { return m_nStart + static_cast<DWORD>(std::int64_t{i} * m_nLineBytes); }

    /// The band line that the run's i-th line becomes.
    unsigned char* BandLine(int i) const
    {
        const int nLine = m_bTurned ? LinesOf(m_band) - 1 + m_nBelow - i : i - m_nAbove;
        return m_band.pImage + std::ptrdiff_t{nLine} * m_band.nLineBytes;
    }

private:
    const T_ImageLrg_tag& m_band;
    bool m_bTurned;
    int m_nLineBytes;
    int m_nAbove;
    int m_nBelow;
    DWORD m_nStart;
};

/// Reads the run line by line with file reads. Bytes behind the file's end become zero, so that no line shows
/// what was read before it.
DWORD ReadLines(const T_ImgInf& in, const StoredRun& run, const LineReader& reader)
{
    const bool bDirect = reader.IsCopied();
    const auto nRead = bDirect ? static_cast<std::int64_t>(reader.UsedBytes()) : SourceLineBytes(in);
    const ScratchBlock scratch(bDirect ? 0 : nRead);
    if (!bDirect && !scratch.Data())
        return MM_NO_MEMORY;
    for (int i = 0; i < run.Lines(); ++i) {
        if ((i == 0 || nRead != in.nLineBytes) && !SeekFile(in.hData, run.Position(i)))
            return FailFileAccess(kUnit, kLineSourceSeek);
        unsigned char* pLine = bDirect ? run.BandLine(i) : scratch.Data();
        DWORD nDone = 0;
        if (!ReadFile(in.hData, pLine, static_cast<DWORD>(nRead), &nDone, nullptr))
            return FailFileAccess(kUnit, kLineSourceRead);
        std::memset(pLine + nDone, 0, static_cast<std::size_t>(nRead) - nDone);
        if (!bDirect)
            reader.Read(run.BandLine(i), pLine);
    }
    return MM_SUCCESS;
}

} // namespace

void CImageObj::ReadDataMem(int nLineBytes, int nPosition, int nClass, int nExtra)
{
    if (SourceLineBytes(m_InImgInf) != 0) {
        const bool bTurned = m_nUnitBottomUp == 1;
        const LineReader reader(m_InImgInf, m_ImgInfo, bTurned);
        const StoredRun run(m_ImgInfo, bTurned, nLineBytes, nPosition, nClass);
        const std::int64_t nBytes =
            std::int64_t{run.Lines() - 1} * nLineBytes + static_cast<std::int64_t>(reader.UsedBytes());
        const ExternalBytes source(m_InImgInf, m_hInMap, run.Position(0), nBytes, false);
        const int nLines = source.Data() ? run.Lines() : 0;
        if (!source.Data())
            FailFileAccess(kUnit, kLineSourceView); // the band stays zero
        for (int i = 0; i < nLines; ++i)
            reader.Read(run.BandLine(i), source.Data() + std::ptrdiff_t{i} * nLineBytes);
    }
    SetFrameColorForUnit(m_ImgInfo.nFrameMode, nExtra);
}

DWORD CImageObj::ReadDataFile(int nLineBytes, int nPosition, int nClass, int nExtra)
{
    if (SourceLineBytes(m_InImgInf) != 0) {
        const bool bTurned = m_nUnitBottomUp == 1;
        const LineReader reader(m_InImgInf, m_ImgInfo, bTurned);
        const StoredRun run(m_ImgInfo, bTurned, nLineBytes, nPosition, nClass);
        if (const DWORD nResult = ReadLines(m_InImgInf, run, reader); nResult != MM_SUCCESS)
            return nResult;
    }
    SetFrameColorForUnit(m_ImgInfo.nFrameMode, nExtra);
    return MM_SUCCESS;
}
