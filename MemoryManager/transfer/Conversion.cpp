// Converting bands between an external layout and the object's: the rule that a pixel follows, and the walk
// over the lines. layout/SampleLines converts each line.

#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/layout/SampleLines.h"

#include <cstddef>
#include <cstring>
#include <optional>

namespace {

constexpr int kBitmapSample = 1; // bytes
constexpr int kRawSample = 2;

/// How an external pixel becomes an object pixel. None: the combination is not supported.
/// @param nExternal, nObject  bytes of a pixel
std::optional<PixelRule> InputRule(int nFileType, int nExternal, int nObject)
{
    if (nFileType == MM_FILE_BITMAP) {
        if (nExternal != 3 && nExternal != 4)
            return std::nullopt;
        if (nObject == 8)
            return WidenSamples(nExternal);
        if (nObject == 4 || nObject == nExternal)
            return KeepSamples(nExternal, nObject, kBitmapSample, false);
    }
    if (nFileType == MM_FILE_RAW && (nExternal == 6 || nExternal == 8))
        return KeepSamples(nExternal, nObject, kRawSample, false);
    return std::nullopt;
}

/// How an object pixel becomes an external pixel. None: the combination is not supported, or the external
/// pixel has four samples and nAlpha does not tell what the fourth receives.
/// @param nExternal, nObject  bytes of a pixel
std::optional<PixelRule> OutputRule(int nFileType, int nExternal, int nObject, int nAlpha)
{
    const bool bBitmap = nFileType == MM_FILE_BITMAP;
    const int nSample = bBitmap ? kBitmapSample : kRawSample;
    if (!bBitmap && nFileType != MM_FILE_RAW)
        return std::nullopt;
    if (nExternal == 3 * nSample)
        return KeepSamples(nObject, nExternal, nSample, false);
    if (nExternal == 4 * nSample && (nAlpha == 0 || nAlpha == 1))
        return KeepSamples(nObject, nExternal, nSample, nAlpha == 1);
    return std::nullopt;
}

/// A band's first line on both sides, and the bytes from each line to the next: negative where the lines are
/// walked from the last to the first.
struct LineWalk
{
    const unsigned char* pSrc;
    std::ptrdiff_t nSrcStep;
    unsigned char* pDst;
    std::ptrdiff_t nDstStep;
};

/// Converts nLines lines of nWidth pixels and puts nPad zero bytes behind the pixels of each.
void ConvertLines(const PixelRule& rule, const LineWalk& walk, std::ptrdiff_t nLines, int nWidth, int nPad)
{
    if (nWidth < 1)
        return;
    const auto nPixels = static_cast<std::size_t>(nWidth);
    const std::size_t nPixelBytes = nPixels * static_cast<std::size_t>(rule.nDstBytes);
    const auto pConvert = BestKernelFor(rule).pRun;
    for (std::ptrdiff_t i = 0; i < nLines; ++i) {
        unsigned char* pDst = walk.pDst + i * walk.nDstStep;
        pConvert(rule, pDst, walk.pSrc + i * walk.nSrcStep, nPixels);
        std::memset(pDst + nPixelBytes, 0, static_cast<std::size_t>(nPad));
    }
}

/// In bottom-up order the first source line becomes the last destination line.
LineWalk WalkBand(const unsigned char* pSrc, const T_ImageLrg_tag& src, unsigned char* pDst,
                  const T_ImageLrg_tag& dst, std::ptrdiff_t nLines, bool bBottomUp)
{
    const std::ptrdiff_t nStep = dst.nLineBytes;
    if (bBottomUp)
        return {pSrc, src.nLineBytes, pDst + (nLines - 1) * nStep, -nStep};
    return {pSrc, src.nLineBytes, pDst, nStep};
}

} // namespace

void CImageObjIO::ConvertInData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                                T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo)
{
    const auto nLines = static_cast<std::ptrdiff_t>(LineRange{nFirst, nLast}.Count());
    const auto rule = InputRule(m_nFileType, m_ImgInfoIO.nPixelBytes, m_ImgInfo.nPixelBytes);
    if (nLines < 1 || !rule)
        return;
    const LineWalk walk = WalkBand(pSrc, *pSrcInfo, pDst, *pDstInfo, nLines, m_nBottomUp == 1);
    ConvertLines(*rule, walk, nLines, pSrcInfo->nWidth, 0);
}

void CImageObjIO::ConvertOutData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                                 T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo)
{
    const auto nLines = static_cast<std::ptrdiff_t>(LineRange{nFirst, nLast}.Count());
    const auto rule = OutputRule(m_nFileType, m_ImgInfoIO.nPixelBytes, m_ImgInfo.nPixelBytes, m_nAlpha);
    if (nLines < 1 || !rule)
        return;
    const LineWalk walk = WalkBand(pSrc, *pSrcInfo, pDst, *pDstInfo, nLines, m_nBottomUp == 1);
    ConvertLines(*rule, walk, nLines, pDstInfo->nWidth, m_nLinePad);
}
