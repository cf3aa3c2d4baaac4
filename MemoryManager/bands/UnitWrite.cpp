// Writing unit bands to their external destination: the band's own lines and pixels, without its frame, in
// upright order.

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

#include <cstddef>
#include <cstdint>

namespace {

constexpr char kUnit[] = "MemoryManager/CImageObj";

// Statements that report to the error log.
constexpr int kLineDestinationView = 810;
constexpr int kLineDestinationSeek = 862;
constexpr int kLineDestinationAppend = 884;

constexpr int kOpaque = 1; // value of m_nAlpha: the fourth sample becomes all ones

PixelRule RuleFor(const T_ImgInf& out, const T_ImageLrg_tag& band, int nAlpha)
{
    const int nSample = SampleBytesOf(out.nDstFormat);
    return KeepSamples(band.nPixelBytes, nSample * SamplesOf(out.nDstFormat), nSample, nAlpha == kOpaque);
}

/// Bytes from the start of the band's first line to the end of the last line's last pixel.
std::int64_t BytesOfLines(const PixelRule& rule, const T_ImageLrg_tag& band, std::int64_t nStep)
{
    return (LinesOf(band) - 1) * nStep + std::int64_t{band.nWidth} * rule.nDstBytes;
}

/// Converts the band's lines to lines that start nStep bytes apart. Bytes behind a line's pixels stay.
void ConvertBand(const PixelRule& rule, const T_ImageLrg_tag& band, unsigned char* pDst, std::int64_t nStep)
{
    const auto pConvert = BestKernelFor(rule).pRun;
    for (std::ptrdiff_t k = 0; k < LinesOf(band); ++k)
        pConvert(rule, pDst + k * static_cast<std::ptrdiff_t>(nStep), band.pImage + k * band.nLineBytes,
                 static_cast<std::size_t>(band.nWidth));
}

} // namespace

DWORD CImageObj::WriteDataMem(int nPosition)
{
    const std::int64_t nStep = DestinationLineBytes(m_OutImgInf);
    const PixelRule rule = RuleFor(m_OutImgInf, m_ImgInfo, m_nAlpha);
    auto nStart = static_cast<DWORD>(nPosition);
    // 16-bit samples of a block lie at even addresses: a band at an odd one is written one byte before it.
    if (m_OutImgInf.eAcsType == ACS_MEMORY && SampleBytesOf(m_OutImgInf.nDstFormat) == 2 && nStart > 0)
        nStart -= static_cast<DWORD>((reinterpret_cast<std::uintptr_t>(m_OutImgInf.hData) + nStart) % 2);
    const ExternalBytes destination(m_OutImgInf, m_hOutMap, nStart, BytesOfLines(rule, m_ImgInfo, nStep),
                                    true);
    if (!destination.Data()) {
        FailFileAccess(kUnit, kLineDestinationView);
        return MM_NO_MEMORY;
    }
    ConvertBand(rule, m_ImgInfo, destination.Data(), nStep);
    return MM_SUCCESS;
}

DWORD CImageObj::WriteDataFile(int nPosition)
{
    const std::int64_t nStep = DestinationLineBytes(m_OutImgInf);
    const std::int64_t nBytes = LinesOf(m_ImgInfo) * nStep;
    const ScratchBlock run(nBytes); // zero-filled, as the padding of the lines has to be
    if (!run.Data())
        return MM_NO_MEMORY;
    // The lines are appended. Where they are converted, the file pointer is set to their place all the same.
    const bool bConverts = SamplesOf(m_OutImgInf.nDstFormat) != kUnitSamples || m_nAlpha == kOpaque;
    if (bConverts && !SeekFile(m_OutImgInf.hData, static_cast<DWORD>(nPosition)))
        return FailFileAccess(kUnit, kLineDestinationSeek);
    ConvertBand(RuleFor(m_OutImgInf, m_ImgInfo, m_nAlpha), m_ImgInfo, run.Data(), nStep);
    if (!AppendByViews(m_OutImgInf.hData, run.Data(), static_cast<DWORD>(nBytes)))
        return FailFileAccess(kUnit, kLineDestinationAppend);
    return MM_SUCCESS;
}
