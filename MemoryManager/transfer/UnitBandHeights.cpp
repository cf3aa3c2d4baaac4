// Band heights of unit objects.
// Everything is computed in 64 bits. Heights below 0 count as 0; a line without bytes counts as one byte.

#include "MemoryManager/transfer/UnitBandHeights.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int kFourSamples = 0x400; // of a format code: what bands have, whatever the image has

/// Bytes that a unit band may use; below 0 when the budget is overdrawn.
std::int64_t UnitBudget()
{
    const LibraryLock lock;
    const LONG nFree = CImageObj::AskUseMemory();
    CImageObj::UpdateUseMemory(nFree);
    return std::min(nFree, CImageObj::ms_nUseMaxMemoryUnit);
}

/// Line length of a band with the samples of an external format.
DWORD BandLineBytes(CImageObj& object, int nWidth, int nMarginX, int nMarginY, int nFormat, int nAlign,
                    int& nLineBytes)
{
    int nBufferSize = 0, nBufferWidth = 0, nBufferHeight = 0;
    return object.CalcImgBufLrg(nBufferSize, nLineBytes, nBufferWidth, nBufferHeight, nWidth, 1, nMarginX,
                                nMarginY, SampleBytesOf(nFormat) | kFourSamples, nAlign);
}

std::int64_t StoredLineBytes(const T_ImgInf& out)
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
    const std::int64_t nStored = pOut && in.eAcsType != ACS_MEMORY ? StoredLineBytes(*pOut) : 0;
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
    // Lines that exceed the budget are all alike, and cutting them keeps the products within 64 bits.
    const std::int64_t nTooMuch = std::max<std::int64_t>(nBudget, 0) + 1;
    const std::int64_t nInBytes = std::min<std::int64_t>(nInLine, nTooMuch);
    const std::int64_t nOutBytes = std::min(nOutLine + StoredLineBytes(out), nTooMuch);
    const std::int64_t nInHeight = std::max(in.nHeight, 0), nOutHeight = std::max(out.nHeight, 0);
    if (nBudget > nInHeight * nInBytes + nOutHeight * nOutBytes) {
        SetUnitBandHeight(inObject, nInHeight);
        SetUnitBandHeight(outObject, nOutHeight);
        return MM_SUCCESS;
    }
    // One step: the fewest whole lines in the proportion of the heights.
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
