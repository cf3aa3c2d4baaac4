// The life of an image object: construction, geometry, settings, store, exchange and release. The charge in
// m_nAreaSize is taken from the budget: an operation that clears it gives it back.

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/image/UnitObject.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "MemoryManager/stores/StoreLifetime.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace {

/// Marks a geometry that has no layout: the planner refuses it, and its bands are empty.
void ClearLayout(T_ImageLrg_tag& info)
{
    info.nBufSize = -1;
    info.nLineBytes = info.nAllocWidth = info.nAllocHeight = info.nLineSamples = 0;
}

/// Lays out the lines of an image that is too large for one buffer. False: a line is too large as well.
bool LayOutLines(T_ImageLrg_tag& info)
{
    const auto line = LayOutBuffer({info.nWidth, 1, info.nMarginX, 0, info.nPixelBytes, info.nSamples,
                                    info.nSampleBytes, info.nAlignType});
    const std::int64_t nLines = info.nHeight + 2 * std::int64_t{info.nMarginY};
    if (!line || info.nHeight < 0 || info.nMarginY < 0 || nLines > std::numeric_limits<int>::max())
        return false;
    info.nBufSize = -1;
    info.nLineBytes = line->nLineBytes;
    info.nAllocWidth = line->nAllocWidth;
    info.nAllocHeight = static_cast<int>(nLines);
    info.nLineSamples = line->nLineSamples;
    return true;
}

} // namespace

CImageObj::CImageObj()
    : m_nAreaSize(0), m_pImageCtrl(nullptr), m_ImgInfo{}, m_nAlpha(1), m_nUnitBottomUp(0), m_nUnitMode(0),
      m_nUnitBandHeight(0), m_InImgInf{}, m_OutImgInf{}, m_nUnitType(0), m_hInMap(nullptr),
      m_hOutMap(nullptr), m_nOnMemory(0), m_nKeepStore(0), m_nReserveTaken(0)
{
    m_ImgInfo.nRatio = 100;
}

CImageObj::CImageObj(CImageObj* pSrc) : CImageObj()
{
    m_ImgInfo = pSrc->m_ImgInfo;
    m_pImageCtrl = NewStore<CImageCtrl>();
    InitObj();
}

CImageObj::CImageObj(CImageObj* pSrc, int nWidth, int nHeight, int nPixelBytes) : CImageObj(pSrc)
{
    if (nWidth > 0)
        m_ImgInfo.nWidth = nWidth;
    if (nHeight > 0)
        m_ImgInfo.nHeight = nHeight;
    if (nPixelBytes > 0)
        m_ImgInfo.nPixelBytes = nPixelBytes;
    m_ImgInfo.nSampleBytes = SampleBytesOf(m_ImgInfo.nFormat);
    m_ImgInfo.nSamples = SamplesOf(m_ImgInfo.nFormat);
    if (CalcAlign(&m_ImgInfo) != MM_SUCCESS)
        ClearLayout(m_ImgInfo);
}

CImageObj::CImageObj(CImageObj* pSrc, int nWidth, int nHeight, int nMarginX, int nMarginY, int nFormat,
                     int nAlign)
    : CImageObj(pSrc)
{
    if (nWidth > 0)
        m_ImgInfo.nWidth = nWidth;
    if (nHeight > 0)
        m_ImgInfo.nHeight = nHeight;
    m_ImgInfo.nMarginX = nMarginX;
    m_ImgInfo.nMarginY = nMarginY;
    m_ImgInfo.nSampleBytes = SampleBytesOf(nFormat);
    m_ImgInfo.nSamples = SamplesOf(nFormat);
    m_ImgInfo.nPixelBytes = m_ImgInfo.nSampleBytes * m_ImgInfo.nSamples;
    m_ImgInfo.nAlignType = AlignTypeOf(nAlign);
    if (CalcAlign(&m_ImgInfo) != MM_SUCCESS)
        ClearLayout(m_ImgInfo);
}

CImageObj::CImageObj(const CImageObj& other) = default;
CImageObj& CImageObj::operator=(const CImageObj& other) = default;

CImageObj::~CImageObj()
{
    if (m_nReserveTaken == 1) {
        const LibraryLock lock; // another thread may size the reserve anew
        ReturnToBudget(ms_ReserveMemory);
    }
    if (m_pImageCtrl)
        Destroy();
    DropUnitBand(*this);
    CloseUnitMappings(*this);
}

void CImageObj::InitObj()
{
    m_ImgInfo.nRatio = 100;
    m_ImgInfo.nBandLines = 0;
    m_ImgInfo.nBandTop = 0;
    m_ImgInfo.nBandBottom = 0;
    m_ImgInfo.nFsize = 0;
    m_ImgInfo.nFrameMode = 0;
}

DWORD CImageObj::SetImageInfo(T_ImageLrg_tag* pInfo)
{
    T_ImageLrg_tag info = *pInfo;
    if (m_nUnitMode == 0) {
        info.nSamples = SamplesOf(info.nFormat);
    } else {
        if (m_ImgInfo.pBase)
            return MM_BAD_ARGUMENT; // the buffer of the held band has the old geometry
        info.nSamples = kUnitSamples;
        info.nBandLines = m_ImgInfo.nBandLines;
    }
    info.nSampleBytes = SampleBytesOf(info.nFormat);
    info.nPixelBytes = info.nSamples * info.nSampleBytes;
    // A layout that is too large is refused. An alignment that is not supported is not: the record then keeps
    // the layout that the caller filled in.
    if (CalcAlign(&info) != MM_SUCCESS && IsAlignmentSupported(info.nAlignType, info.nSampleBytes) &&
        (m_nUnitMode == 0 || !LayOutLines(info)))
        return MM_BAD_ARGUMENT;
    if (!m_pImageCtrl)
        m_pImageCtrl = NewStore<CImageCtrl>();
    if (!m_pImageCtrl)
        return MM_NO_MEMORY;
    *pInfo = info;
    m_ImgInfo = info;
    ForgetBuffer(*this); // a buffer that the caller's record names is not a band of this object
    return MM_SUCCESS;
}

void CImageObj::GetImageInfo(T_ImageLrg_tag* pInfo)
{
    if (m_nUnitMode == 1 && m_nUnitBandHeight != 0)
        m_ImgInfo.nBandLines = m_nUnitBandHeight;
    *pInfo = m_ImgInfo;
}

int CImageObj::SetBandInfo(int nBand, int nCount)
{
    m_nAreaSize = SizeBand(m_ImgInfo, m_ImgInfo.nBufSize, nBand, ms_MinBand, nCount);
    return m_nAreaSize;
}

int CImageObj::GetAreaSize()
{
    return m_ImgInfo.nBufSize;
}

DWORD CImageObj::Create(LONG nSize, LONG nAllotted, int nSlots)
{
    if (!m_pImageCtrl || IsTooShort(*m_pImageCtrl, m_ImgInfo))
        return MM_BAD_ARGUMENT;
    if (HasFile(*m_pImageCtrl)) {
        if (nSize > nAllotted)
            return MM_SUCCESS;
        return m_pImageCtrl->MapBandAll(0, static_cast<DWORD>(m_ImgInfo.nBufSize), 0);
    }
    if (m_pImageCtrl->IsCreated())
        return MM_SUCCESS;
    return m_pImageCtrl->Create(nSize, nAllotted, nSlots);
}

int CImageObj::GetBandHeight()
{
    return m_ImgInfo.nBandLines;
}

DWORD CImageObj::SetBandHeight(int nLines)
{
    if (nLines < 0 || nLines > m_ImgInfo.nBandLines)
        return MM_BAD_BAND_HEIGHT;
    m_ImgInfo.nBandLines = nLines;
    if (m_nUnitMode == 1)
        m_nUnitBandHeight = nLines;
    return MM_SUCCESS;
}

DWORD CImageObj::SetFsize(int nSize)
{
    if (nSize < 0 || nSize > m_ImgInfo.nMarginX)
        return MM_BAD_FRAME_SIZE;
    m_ImgInfo.nFsize = nSize;
    return MM_SUCCESS;
}

DWORD CImageObj::SetRatio(int nPercent)
{
    if (nPercent < 0)
        return MM_BAD_RATIO;
    m_ImgInfo.nRatio = nPercent;
    return MM_SUCCESS;
}

void CImageObj::SetOnMemory()
{
    m_nOnMemory = 1;
}

int CImageObj::IsOnMemory()
{
    return m_ImgInfo.nBufSize <= m_nAreaSize ? 1 : 0;
}

DWORD CImageObj::Destroy()
{
    ReturnToBudget(std::exchange(m_nAreaSize, 0));
    if (!m_pImageCtrl || m_nKeepStore != 0)
        return MM_SUCCESS;
    const DWORD nResult = m_pImageCtrl->Destroy();
    DeleteStore(std::exchange(m_pImageCtrl, nullptr));
    return nResult;
}

DWORD CImageObj::CnvFileImg()
{
    CImageCtrl none; // reports that there is nothing to convert
    CImageCtrl& store = m_pImageCtrl ? *m_pImageCtrl : none;
    const DWORD nResult = store.ConvertFile(m_ImgInfo.nBufSize);
    if (nResult != MM_SUCCESS)
        return nResult;
    ReturnToBudget(std::exchange(m_nAreaSize, 0));
    m_ImgInfo.nBandLines = 0;
    return MM_SUCCESS;
}

void CImageObj::ExchangeImg(CImageObj* pOther)
{
    if (pOther == this)
        return;
    if (pOther->m_pImageCtrl && HasFile(*pOther->m_pImageCtrl))
        ReturnToBudget(std::exchange(pOther->m_nAreaSize, 0));
    DropUnitBand(*this);
    DropUnitBand(*pOther);
    std::swap(m_ImgInfo, pOther->m_ImgInfo);
    ForgetBuffer(*this);
    ForgetBuffer(*pOther);
    std::swap(m_pImageCtrl, pOther->m_pImageCtrl);
    std::swap(m_nAreaSize, pOther->m_nAreaSize);
    if (m_nReserveTaken != 1)
        m_nReserveTaken = std::exchange(pOther->m_nReserveTaken, 0);
}

void CImageObj::ExchangeImg(CImageObj* pTarget, CImageObj* pSource)
{
    pSource->Destroy();
    if (pTarget == pSource)
        return;
    CloseUnitMappings(*pTarget);
    const bool bTaken = pTarget->m_nReserveTaken == 1; // then each of the two gives its own back
    *pTarget = *pSource;
    (bTaken ? pTarget : pSource)->m_nReserveTaken = bTaken ? 1 : 0;
    pSource->m_hInMap = nullptr;
    pSource->m_hOutMap = nullptr;
    ForgetBuffer(*pSource); // a held band now belongs to the target
}
