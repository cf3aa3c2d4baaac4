// I/O image objects: their set-up from the host's description, and what the planner asks of them.
// Sizes are checked before anything changes, so that a description that is refused leaves file and object as
// they were.

#include "MemoryManager/CImageObjIO.h"

#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/stores/StoreLifetime.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

constexpr char kUnit[] = "MemoryManager/CImageObjIO";

// Statements that report to the error log.
constexpr int kLineNoSignature = 189;
constexpr int kLineNoHeader = 199;

constexpr int kObjectMargin = 16; // pixels and lines around the object's image

void SetFormat(T_ImageLrg_tag& info, int nFormat, int nSamples)
{
    info.nFormat = nFormat;
    info.nSampleBytes = SampleBytesOf(nFormat);
    info.nSamples = nSamples;
    info.nPixelBytes = info.nSampleBytes * info.nSamples;
}

void SetSize(T_ImageLrg_tag& info, const T_ImgInf& inf, int nMarginX, int nMarginY, int nAlign)
{
    info.nWidth = inf.nWidth;
    info.nHeight = inf.nHeight;
    info.nMarginX = nMarginX;
    info.nMarginY = nMarginY;
    info.nAlignType = AlignTypeOf(nAlign);
}

/// Bytes that pad an external line: those that bring a bitmap's line of 3-byte pixels to a multiple of 4. The
/// line length of the description is not read; layout/UnitImages.h tells how long the lines of unit bands
/// are.
int LinePadOf(const T_ImgInf& inf, int nPixelBytes)
{
    if (inf.nFileType != MM_FILE_BITMAP || nPixelBytes != 3)
        return 0;
    return static_cast<int>((4 - std::int64_t{inf.nWidth} * 3 % 4) % 4);
}

/// Lays the external image out: packed lines, each followed by its padding. nBufSize stays, as it includes
/// the header, which is not known yet. False: the layout does not fit 32 bits.
bool LayOutExternal(T_ImageLrg_tag& info, int nLinePad)
{
    const auto layout = LayOutBuffer({info.nWidth, info.nHeight, info.nMarginX, info.nMarginY,
                                      info.nPixelBytes, info.nSamples, info.nSampleBytes, MM_ALIGN_PACKED});
    if (!layout || !Fits(std::int64_t{layout->nLineBytes} + nLinePad))
        return false;
    info.nAllocWidth = layout->nAllocWidth;
    info.nAllocHeight = layout->nAllocHeight;
    info.nLineBytes = layout->nLineBytes + nLinePad;
    info.nLineSamples = layout->nLineSamples;
    return true;
}

/// Bytes of an external image with its header.
std::int64_t ExternalSize(const T_ImageLrg_tag& info, std::int64_t nHeader)
{
    return nHeader + std::int64_t{info.nAllocHeight} * info.nLineBytes;
}

/// Gives the store the host's file or block.
void Bind(CImageCtrlIO& store, const T_ImgInf& inf, tag_E_IMGTYPE eRole)
{
    store.SetAcsType(inf.eAcsType);
    store.SetImgType(eRole);
    if (inf.eAcsType == ACS_MEMORY)
        store.SetImageData(inf.hData);
    else
        store.SetFileHandle(inf.hData);
}

/// Finds where a bitmap input's pixels begin, or writes a bitmap output's header.
/// @param nHeader  out: bytes ahead of the pixels; untouched when there is no header
DWORD SettleHeader(CImageCtrlIO& store, const T_ImgInf& inf, const T_ImageLrg_tag& info, int nSearch,
                   std::int64_t& nHeader)
{
    if (inf.nFileType != MM_FILE_BITMAP)
        return MM_SUCCESS;
    if (store.GetImgType() == IMG_INPUT) {
        if (HasFile(store))
            SeekFile(store.GetFHandle(), 0); // a failure shows as a signature that is not found
        const int nSignature = store.SchDIBHeader(info.nWidth, info.nHeight, info.nPixelBytes, nSearch);
        if (nSignature < 0)
            return FailFileAccess(kUnit, kLineNoSignature);
        nHeader = std::int64_t{nSignature} + inf.nOffset;
    } else if (store.GetImgType() == IMG_OUTPUT) {
        if (store.OutPutDIBHeader(info.nWidth, info.nHeight, info.nPixelBytes) == 0)
            return FailFileAccess(kUnit, kLineNoHeader);
        nHeader = MM_BITMAP_HEADER_BYTES;
    }
    return Fits(nHeader) && Fits(ExternalSize(info, nHeader)) ? MM_SUCCESS : MM_BAD_ARGUMENT;
}

/// How an area of memory is divided between the external band and the object's band.
struct AreaSplit
{
    LONG nExternal; ///< bytes for the external band
    LONG nObject;   ///< bytes for the object's band
    int nLines;     ///< lines for which both have room
};

/// Divides an area in the proportion of the line lengths; each part holds at least one line.
AreaSplit SplitArea(LONG nArea, const T_ImageLrg_tag& external, const T_ImageLrg_tag& object)
{
    const double fBoth = double(external.nLineBytes) + double(object.nLineBytes);
    const double fShare = fBoth > 0 ? double(external.nLineBytes) / fBoth : 0;
    AreaSplit split{static_cast<LONG>(fShare * double(nArea)), 0, external.nHeight};
    split.nObject = std::max<LONG>(nArea - split.nExternal, object.nLineBytes);
    split.nExternal = std::max<LONG>(split.nExternal, external.nLineBytes);
    if (external.nLineBytes > 0)
        split.nLines = static_cast<int>(split.nExternal / external.nLineBytes);
    if (object.nLineBytes > 0)
        split.nLines = std::min(split.nLines, static_cast<int>(split.nObject / object.nLineBytes));
    return split;
}

/// Whether the first object of a list has a store of this role.
bool HasRole(CImageObj** ppList, int nCount, tag_E_IMGTYPE eRole)
{
    return ppList && nCount > 0 && ppList[0] && ppList[0]->m_pImageCtrl &&
           ppList[0]->m_pImageCtrl->GetImgType() == eRole;
}

void ResetRatio(CImageObj** ppList, int nCount)
{
    if (ppList && nCount > 0 && ppList[0])
        ppList[0]->m_ImgInfo.nRatio = 100;
}

} // namespace

CImageObjIO::CImageObjIO()
    : m_ImgInfoIO{}, m_nBottomUp(0), m_nFileType(-1), m_nLinePad(0), m_nTmpBufMode(1), m_nConvert(1)
{
    m_ImgInfoIO.nRatio = 100;
}

CImageObjIO::CImageObjIO(const CImageObjIO& other) = default;
CImageObjIO& CImageObjIO::operator=(const CImageObjIO& other) = default;

CImageObjIO::~CImageObjIO()
{
    if (m_pImageCtrl)
        Destroy();
}

DWORD CImageObjIO::InitForUnify(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch,
                                int nAlign, int nBottomUp, int nTmpBufMode)
{
    const bool bInput = eRole == IMG_INPUT;
    const int nExternalFormat = bInput ? pInf->nSrcFormat : pInf->nDstFormat;
    const int nObjectFormat = bInput ? pInf->nDstFormat : pInf->nSrcFormat;

    T_ImageLrg_tag external = m_ImgInfoIO;
    SetSize(external, *pInf, nMarginX, nMarginY, nAlign);
    SetFormat(external, nExternalFormat, SamplesOf(nExternalFormat));
    external.nRatio = 100;
    external.nBufSize = 0;
    const int nLinePad = LinePadOf(*pInf, external.nPixelBytes);
    T_ImageLrg_tag object = m_ImgInfo;
    SetSize(object, *pInf, kObjectMargin, kObjectMargin, nAlign);
    SetFormat(object, nObjectFormat, SamplesOf(nObjectFormat));
    const bool bWritesHeader = eRole == IMG_OUTPUT && pInf->nFileType == MM_FILE_BITMAP;
    if (!LayOutExternal(external, nLinePad) ||
        !Fits(ExternalSize(external, bWritesHeader ? MM_BITMAP_HEADER_BYTES : 0)) ||
        CalcAlign(&object) != MM_SUCCESS)
        return MM_BAD_ARGUMENT;

    Destroy();
    CImageCtrlIO* pStore = NewStore<CImageCtrlIO>();
    if (!pStore)
        return MM_NO_MEMORY;
    m_pImageCtrl = pStore;
    m_ImgInfoIO = external;
    m_ImgInfo = object;
    m_nFileType = pInf->nFileType;
    m_nBottomUp = nBottomUp;
    m_nLinePad = nLinePad;
    m_nTmpBufMode = nTmpBufMode;
    Bind(*pStore, *pInf, eRole);

    std::int64_t nHeader = 0;
    if (const DWORD nResult = SettleHeader(*pStore, *pInf, external, nSearch, nHeader); nResult != MM_SUCCESS)
        return nResult;
    m_ImgInfoIO.nBufSize = static_cast<int>(ExternalSize(external, nHeader));
    pStore->SetHdrSize(static_cast<int>(nHeader));
    pStore->SetFileSize(m_ImgInfoIO.nBufSize);
    return MM_SUCCESS;
}

DWORD CImageObjIO::InitForUnit(T_ImgInf* pInf, tag_E_IMGTYPE, int nMarginX, int nMarginY, int, int nAlign,
                               int nBottomUp, int)
{
    m_nFileType = pInf->nFileType;
    m_nBottomUp = nBottomUp;
    m_nLinePad = 0;
    SetSize(m_ImgInfo, *pInf, nMarginX, nMarginY, nAlign);
    SetFormat(m_ImgInfo, pInf->nSrcFormat, kUnitSamples);
    return MM_SUCCESS;
}

DWORD CImageObjIO::InitForCMS(T_ImgInf* pInf, tag_E_IMGTYPE, int nMarginX, int nMarginY, int, int nAlign,
                              int nBottomUp, int)
{
    T_ImageLrg_tag info = m_ImgInfo;
    SetSize(info, *pInf, nMarginX, nMarginY, nAlign);
    SetFormat(info, pInf->nSrcFormat, SamplesOf(pInf->nSrcFormat));
    // A layout that is too large is refused. An unsupported alignment is not: the caller meets it later.
    if (CalcAlign(&info) != MM_SUCCESS && IsAlignmentSupported(info.nAlignType, info.nSampleBytes))
        return MM_BAD_ARGUMENT;
    info.pImage = static_cast<unsigned char*>(pInf->hData);
    if (pInf->nFileType == MM_FILE_BITMAP)
        info.pImage += MM_BITMAP_HEADER_BYTES;
    m_ImgInfo = info;
    m_nFileType = pInf->nFileType;
    m_nBottomUp = nBottomUp;
    m_nLinePad = LinePadOf(*pInf, info.nPixelBytes);
    return MM_SUCCESS;
}

DWORD CImageObjIO::MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut)
{
    if (!pRequest)
        return MM_BAD_ARGUMENT;
    ResetRatio(ppIn, pRequest->nInCnt);
    ResetRatio(ppOut, pRequest->nOutCnt);
    if (!HasRole(ppIn, pRequest->nInCnt, IMG_INPUT) || !HasRole(ppOut, pRequest->nOutCnt, IMG_WORK))
        return CImageObj::MemoryAlloc(pRequest, ppIn, ppOut, nullptr);
    tag_MemAlloc exchanged = *pRequest;
    std::swap(exchanged.nInCnt, exchanged.nOutCnt);
    return CImageObj::MemoryAlloc(&exchanged, ppOut, ppIn, nullptr);
}

void CImageObjIO::GetImageInfo(T_ImageLrg_tag* pInfo)
{
    GetImageInfoIO(pInfo);
}

int CImageObjIO::SetBandInfo(int nBand, int nCount)
{
    m_nAreaSize = SizeBand(m_ImgInfoIO, GetAreaSize(), nBand, ms_MinBand, nCount);
    return m_nAreaSize;
}

int CImageObjIO::GetAreaSize()
{
    if (m_nTmpBufMode == 0)
        return m_ImgInfo.nBufSize;
    const std::int64_t nBoth = std::int64_t{m_ImgInfoIO.nBufSize} + m_ImgInfo.nBufSize;
    return m_nTmpBufMode == 1 && Fits(nBoth) ? static_cast<int>(nBoth) : -1;
}

DWORD CImageObjIO::Create(LONG nSize, LONG nAllotted, int nSlots)
{
    CImageCtrlIO* pStore = Store();
    if (!pStore)
        return MM_BAD_ARGUMENT;
    if (m_nTmpBufMode != 1)
        return pStore->HoldsAllotment(nSize, nAllotted) ? MM_SUCCESS
                                                        : pStore->Create(nSize, nAllotted, nSlots);

    const AreaSplit split = SplitArea(nAllotted, m_ImgInfoIO, m_ImgInfo);
    int nLines = split.nLines;
    if (pStore->HoldsAllotment(nSize, split.nObject) &&
        pStore->WorkBufferBytes() == static_cast<SIZE_T>(split.nExternal)) {
        for (const int nLowered : {m_ImgInfo.nBandLines, m_ImgInfoIO.nBandLines})
            if (nLowered > 0) // 0: the step was cleared
                nLines = std::min(nLines, nLowered);
    } else {
        DWORD nResult = pStore->CreateTMPBuf(static_cast<int>(split.nExternal));
        if (nResult == MM_SUCCESS)
            nResult = pStore->Create(nSize, split.nObject, nSlots);
        if (nResult != MM_SUCCESS)
            return nResult;
    }
    m_ImgInfo.nBandLines = m_ImgInfoIO.nBandLines = nLines;
    return MM_SUCCESS;
}

int CImageObjIO::GetBandHeight()
{
    return m_ImgInfoIO.nBandLines;
}

void CImageObjIO::GetImageInfoIO(T_ImageLrg_tag* pInfo)
{
    *pInfo = m_ImgInfoIO;
}

void CImageObjIO::SetAlpha(int nAlpha)
{
    m_nAlpha = nAlpha;
}

CImageCtrlIO* CImageObjIO::Store() const
{
    return dynamic_cast<CImageCtrlIO*>(m_pImageCtrl);
}
