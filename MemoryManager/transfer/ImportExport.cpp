// Moving whole images into and out of image objects, band by band through an I/O object that lives for one
// call. An import goes through the object's lines from top to bottom, an export through the external ones.
// When the external lines are stored bottom-up, the other side's bands go from bottom to top.

#include "MemoryManager/ImgObjUty.h"

#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/base/FirstFailure.h"
#include "MemoryManager/base/ReportTexts.h"
#include "MemoryManager/image/RecordOf.h"
#include "MemoryManager/image/UnitObject.h"
#include "Platform/Platform.h"

#include <algorithm>

namespace {

// Kinds of log entries. Those of a process are also the identifiers of the processing steps.
constexpr int kLogEnd = 0;
constexpr int kLogConversionStart = 50;
constexpr int kLogConversionEnd = 66;
constexpr int kProcessRead = 0x8000;
constexpr int kProcessWrite = 0x8100;

constexpr char kVersionText[] = "[VMOX/A/_C_XXXX] 2003.08.14.0";
constexpr char kNoText[] = "";

/// Pushes the entries of one transfer onto the host's log stack, if there is one.
class TransferLog
{
public:
    TransferLog(T_LOG_STACK_tag** ppNext, const T_ImgInf& inf, int nProcess)
        : m_ppNext(ppNext), m_nWidth(inf.nWidth), m_nHeight(inf.nHeight), m_nProcess(nProcess)
    {
    }

    void Start(const char* pszConversion) { PushBoth(kLogConversionStart, pszConversion, kVersionText); }
    void End() { PushBoth(kLogConversionEnd, kNoText, kNoText); }

private:
    void PushBoth(int nKind, const char* pszConversion, const char* pszProcess)
    {
        if (!m_ppNext)
            return;
        LARGE_INTEGER nCount{};
        QueryPerformanceCounter(&nCount);
        Push(nKind, pszConversion, static_cast<int>(nCount.QuadPart),
             static_cast<int>(nCount.QuadPart >> 32));
        Push(m_nProcess, pszProcess, m_nWidth, m_nHeight);
    }

    /// Fills the next free entry, and marks the one behind it as the end of the stack.
    void Push(int nCode, const char* pszText, int nData1, int nData2)
    {
        T_LOG_STACK_tag* pEntry = (*m_ppNext)++;
        pEntry->nLogCode = nCode;
        pEntry->pszLogText = pszText;
        pEntry->nLogData1 = nData1;
        pEntry->nLogData2 = nData2;
        (*m_ppNext)->nLogCode = kLogEnd;
    }

    T_LOG_STACK_tag** m_ppNext;
    int m_nWidth;
    int m_nHeight;
    int m_nProcess;
};

/// The same lines of the picture, counted from the other end of the image.
LineRange FromOtherEnd(LineRange lines, int nHeight)
{
    return {nHeight - 1 - lines.nLast, nHeight - 1 - lines.nFirst};
}

/// Plans both images as one step.
DWORD Plan(int nProcess, CImageObj* pIn, CImageObj* pOut)
{
    tag_MemAlloc request;
    request.nOutCnt = 1;
    request.nIpNo = nProcess;
    return CImageObjIO::MemoryAlloc(&request, &pIn, &pOut);
}

/// Converts external lines into the object's lines. The object's band is released whatever happens.
DWORD ImportBand(CImageObj& image, LineRange lines, CImageObjIO& io, LineRange ioLines)
{
    T_ImageLrg_tag band{};
    if (const DWORD nResult = image.MapBandRange(lines.nFirst, lines.nLast, &band, kSlot);
        nResult != MM_SUCCESS)
        return nResult;
    T_ImageLrg_tag ioBand{};
    DWORD nResult = io.MapBandRangeBuf(ioLines.nFirst, ioLines.nLast, band.pImage, &ioBand);
    if (nResult == MM_SUCCESS)
        nResult = io.UnmapBand(kSlot);
    return FirstFailure(nResult, image.UnmapBand(kSlot));
}

/// Converts the object's lines into the external band that starts at nIoLine, and writes it. The object's
/// band is released whatever happens. An external band without an address is not written.
DWORD ExportBand(CImageObj& image, LineRange lines, CImageObjIO& io, int nIoLine)
{
    T_ImageLrg_tag band{};
    if (const DWORD nResult = image.MapBandRange(lines.nFirst, lines.nLast, &band, kSlot);
        nResult != MM_SUCCESS)
        return nResult;
    T_ImageLrg_tag ioBand{};
    DWORD nResult = io.MapBand(nIoLine, &ioBand, MM_BAND_DOWNWARD, kSlot);
    if (nResult == MM_SUCCESS && !ioBand.pImage)
        nResult = MM_IO_BUFFER_ADDRESS;
    if (nResult == MM_SUCCESS)
        nResult = io.UnmapBand(band.pImage, kSlot);
    return FirstFailure(nResult, image.UnmapBand(kSlot));
}

DWORD ImportBands(CImageObj& image, CImageObjIO& io, bool bBottomUp)
{
    const int nHeight = image.m_ImgInfo.nHeight;
    const int nBand = std::max(std::min(io.GetBandHeight(), image.GetBandHeight()), 1);
    for (LineRange lines{0, -1}; lines.nLast < nHeight - 1;) {
        lines = BandDownFrom(lines.nLast + 1, nBand, nHeight);
        const LineRange ioLines = bBottomUp ? FromOtherEnd(lines, nHeight) : lines;
        if (const DWORD nResult = ImportBand(image, lines, io, ioLines); nResult != MM_SUCCESS)
            return nResult;
    }
    return MM_SUCCESS;
}

/// Gives both sides the smaller one's band height, so that their bands match. At least one line, or the
/// export would never come to its end.
int LowerBands(CImageObj& image, CImageObjIO& io)
{
    const int nBand = std::max(std::min(RecordOf(image).nBandLines, io.GetBandHeight()), 1);
    image.SetBandHeight(nBand);
    io.m_ImgInfo.nBandLines = nBand;
    io.m_ImgInfoIO.nBandLines = nBand;
    return nBand;
}

DWORD ExportBands(CImageObj& image, CImageObjIO& io, bool bBottomUp)
{
    const int nHeight = io.m_ImgInfoIO.nHeight;
    const int nBand = LowerBands(image, io);
    for (LineRange ioLines{0, -1}; ioLines.nLast < nHeight - 1;) {
        ioLines = BandDownFrom(ioLines.nLast + 1, nBand, nHeight);
        const LineRange lines = bBottomUp ? FromOtherEnd(ioLines, nHeight) : ioLines;
        if (const DWORD nResult = ExportBand(image, lines, io, ioLines.nFirst); nResult != MM_SUCCESS)
            return nResult;
    }
    return MM_SUCCESS;
}

} // namespace

DWORD ImportImg(CImageObj* pObj, T_ImgInf* pInf, int nBottomUp, T_LOG_STACK_tag** ppLog)
{
    TransferLog log(ppLog, *pInf, kProcessRead);
    log.Start(kTextImport);
    pObj->Destroy();
    DropUnitBand(*pObj);
    CloseUnitMappings(*pObj);
    pObj->m_nUnitType = 0;
    pObj->m_nUnitMode = 0; // from here on the object has a store of its own

    CImageObjIO io;
    DWORD nResult = io.InitForUnify(pInf, IMG_INPUT, 0, 0, pInf->nDstFormat, MM_ALIGN_LINES, nBottomUp, 0);
    if (nResult != MM_SUCCESS)
        return nResult;
    T_ImageLrg_tag info = io.m_ImgInfo;
    nResult = pObj->SetImageInfo(&info);
    if (nResult == MM_SUCCESS)
        nResult = Plan(kProcessRead, &io, pObj);
    if (nResult == MM_SUCCESS)
        nResult = ImportBands(*pObj, io, nBottomUp == 1);
    if (nResult == MM_SUCCESS)
        log.End();
    return nResult;
}

DWORD ExportImg(CImageObj* pObj, T_ImgInf* pInf, int nBottomUp, T_LOG_STACK_tag** ppLog, int nAlpha)
{
    TransferLog log(ppLog, *pInf, kProcessWrite);
    log.Start(kTextExport);

    if (pInf->nWidth > pObj->m_ImgInfo.nWidth || pInf->nHeight > pObj->m_ImgInfo.nHeight)
        return MM_BAD_ARGUMENT;
    T_ImgInf inf = *pInf;
    inf.nSrcFormat = pObj->m_ImgInfo.nFormat; // whatever the host's description says of the object
    CImageObjIO io;
    DWORD nResult = io.InitForUnify(&inf, IMG_OUTPUT, 0, 0, inf.nSrcFormat, MM_ALIGN_LINES, nBottomUp, 0);
    if (nResult != MM_SUCCESS)
        return nResult;
    io.SetAlpha(nAlpha);
    io.m_ImgInfo = pObj->m_ImgInfo;
    nResult = Plan(kProcessWrite, pObj, &io);
    if (nResult == MM_SUCCESS)
        nResult = ExportBands(*pObj, io, nBottomUp == 1);
    pObj->Destroy();
    if (nResult == MM_SUCCESS)
        log.End();
    return nResult;
}
