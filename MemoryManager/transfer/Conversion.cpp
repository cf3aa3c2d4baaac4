// Bands converted between an external layout and the object's: which rule a pixel follows, and the walk over
// the lines. The work on a line is SampleLines'.

#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/layout/SampleLines.h"

#include <cstddef>
#include <cstring>
#include <optional>

namespace {

constexpr int kBitmapSample = 1; // bytes
constexpr int kRawSample = 2;

/// What becomes of an external pixel of a file type, in an object pixel; none: not supported.
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

/// What becomes of an object pixel in an external pixel. A four-sample output needs to know what its fourth
/// sample receives.
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

/// The lines of a band on both sides: the first ones, and the bytes from one to the next. A step is negative
/// where lines are walked backwards.
struct LineWalk
{
    const unsigned char* pSrc;
    std::ptrdiff_t nSrcStep;
    unsigned char* pDst;
    std::ptrdiff_t nDstStep;
};

/// nPad zero bytes follow the pixels of each destination line.
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

std::ptrdiff_t LinesOf(int nFirst, int nLast)
{
    return nFirst <= nLast ? static_cast<std::ptrdiff_t>(nLast) - nFirst + 1 : 0;
}

} // namespace

void CImageObjIO::ConvertInData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                                T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo)
{
    const std::ptrdiff_t nLines = LinesOf(nFirst, nLast);
    const auto rule = InputRule(m_nFileType, m_ImgInfoIO.nPixelBytes, m_ImgInfo.nPixelBytes);
    if (nLines < 1 || !rule)
        return;
    const LineWalk walk = WalkBand(pSrc, *pSrcInfo, pDst, *pDstInfo, nLines, m_nBottomUp == 1);
    ConvertLines(*rule, walk, nLines, pSrcInfo->nWidth, 0);
}

void CImageObjIO::ConvertOutData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                                 T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo)
{
    const std::ptrdiff_t nLines = LinesOf(nFirst, nLast);
    const auto rule = OutputRule(m_nFileType, m_ImgInfoIO.nPixelBytes, m_ImgInfo.nPixelBytes, m_nAlpha);
    if (nLines < 1 || !rule)
        return;
    const LineWalk walk = WalkBand(pSrc, *pSrcInfo, pDst, *pDstInfo, nLines, m_nBottomUp == 1);
    ConvertLines(*rule, walk, nLines, pDstInfo->nWidth, m_nLinePad);
}
