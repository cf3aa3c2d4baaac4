// Sizing the bands of unit objects: as many lines as the memory that they may use has room for.
// All numbers are computed in 64 bits. Heights below 0 count as 0, and lines without bytes as one byte.

#include "MemoryManager/transfer/UnitBandHeights.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int kUnitSamplesCode = kUnitSamples << 8; // as a format code tells the samples of a pixel

/// Bytes that a unit band may use; negative when the budget is overdrawn.
std::int64_t UnitBudget()
{
    const LibraryLock lock;
    return std::min(CImageObj::AskFreeMemory(), CImageObj::ms_nUseMaxMemoryUnit);
}

/// The line length of a band whose samples are as wide as those of an external format.
/// @return 0; 18 no buffer has such lines
DWORD BandLineBytes(CImageObj& object, int nWidth, int nMarginX, int nMarginY, int nFormat, int nAlign,
                    int& nLineBytes)
{
    int nBufferSize = 0, nBufferWidth = 0, nBufferHeight = 0;
    return object.CalcImgBufLrg(nBufferSize, nLineBytes, nBufferWidth, nBufferHeight, nWidth, 1, nMarginX,
                                nMarginY, SampleBytesOf(nFormat) | kUnitSamplesCode, nAlign);
}

/// Bytes that one destination line is counted with. An estimate, which the heights of bands depend on: unlike
/// DestinationLineBytes it also counts formats that are never written, and pads the lines of bitmaps only.
std::int64_t EstimatedLineBytes(const T_ImgInf& out)
{
    const int nSamples = SamplesOf(out.nDstFormat);
    if (out.nFileType == MM_FILE_BITMAP && nSamples == 3)
        return PaddedLine(std::int64_t{out.nWidth} * 3);
    return std::int64_t{out.nWidth} * nSamples * SampleBytesOf(out.nDstFormat);
}

void SetUnitBandHeight(CImageObj& object, std::int64_t nLines)
{
    object.m_nUnitBandHeight = object.m_ImgInfo.nBandLines = static_cast<int>(nLines);
}

} // namespace

DWORD CalcUnitBandHeight(CImageObj& object, const T_ImgInf& in, const T_ImgInf* pOut, int nAlign)
{
    const int nMarginY = object.m_ImgInfo.nMarginY;
    int nBandLine = 0;
    if (const DWORD nResult = BandLineBytes(object, in.nWidth, object.m_ImgInfo.nMarginX, nMarginY,
                                            in.nSrcFormat, nAlign, nBandLine);
        nResult != MM_SUCCESS)
        return nResult;
    const std::int64_t nStored = pOut && in.eAcsType != ACS_MEMORY ? EstimatedLineBytes(*pOut) : 0;
    const std::int64_t nOneLine = std::max<std::int64_t>(2 * std::int64_t{nBandLine} + nStored, 1);
    const std::int64_t nMargins = 2 * (2 * std::int64_t{nMarginY} * nBandLine + kSpareBytes);
    const std::int64_t nFit = (UnitBudget() - nMargins) / nOneLine;
    SetUnitBandHeight(object,
                      std::min<std::int64_t>(std::max<std::int64_t>(nFit, 1), std::max(in.nHeight, 0)));
    return MM_SUCCESS;
}

DWORD CalcEnlargeBandHeights(CImageObj& inObject, const T_ImgInf& in, CImageObj& outObject,
                             const T_ImgInf& out, int nAlign)
{
    int nInLine = 0, nOutLine = 0;
    DWORD nResult = BandLineBytes(inObject, in.nWidth, 0, 0, in.nSrcFormat, nAlign, nInLine);
    if (nResult == MM_SUCCESS)
        nResult = BandLineBytes(outObject, out.nWidth, 0, 0, out.nDstFormat, nAlign, nOutLine);
    if (nResult != MM_SUCCESS)
        return nResult;

    const std::int64_t nBudget = UnitBudget();
    // No line longer than the budget fits, however long it is: cutting it keeps the products within 64 bits.
    const std::int64_t nTooMuch = std::max<std::int64_t>(nBudget, 0) + 1;
    const std::int64_t nInBytes = std::min<std::int64_t>(nInLine, nTooMuch);
    const std::int64_t nOutBytes = std::min(nOutLine + EstimatedLineBytes(out), nTooMuch);
    const std::int64_t nInHeight = std::max(in.nHeight, 0), nOutHeight = std::max(out.nHeight, 0);
    if (nBudget > nInHeight * nInBytes + nOutHeight * nOutBytes) {
        SetUnitBandHeight(inObject, nInHeight);
        SetUnitBandHeight(outObject, nOutHeight);
        return MM_SUCCESS;
    }
    // The bands grow in steps: the fewest whole lines of both in the proportion of the heights.
    constexpr std::int64_t nOne = 1;
    const std::int64_t nInStep = std::max(nInHeight / std::max(nOutHeight, nOne), nOne);
    const std::int64_t nOutStep = std::max(nOutHeight / std::max(nInHeight, nOne), nOne);
    const std::int64_t nStepBytes = std::max(nInStep * nInBytes + nOutStep * nOutBytes, nOne);
    const std::int64_t nFit = std::min({nBudget / nStepBytes, nInHeight / nInStep, nOutHeight / nOutStep});
    const std::int64_t nSteps = std::max(nFit, nOne);
    SetUnitBandHeight(inObject, nSteps * nInStep);
    SetUnitBandHeight(outObject, nSteps * nOutStep);
    return MM_SUCCESS;
}
