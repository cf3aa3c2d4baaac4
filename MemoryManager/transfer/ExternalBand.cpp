// Bands of external images: mapped through the store and converted into the object's layout, then converted
// back and written.

#include "MemoryManager/CImageCtrlIO.h"
#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/bands/LineRange.h"
#include "MemoryManager/layout/BandBytes.h"

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

/// The bytes of a band in the external data, which has no margins. The start of a band whose frame reaches
/// ahead of the data is negative, and no store has an address for it.
BandBytes BytesInExternal(const T_ImageLrg_tag& info, LineRange lines)
{
    return BytesWithFrame(info, std::int64_t{info.nLineBytes} * lines.nFirst, lines.Count());
}

unsigned char* Behind(unsigned char* pStart, std::int64_t nBytes)
{
    return pStart ? pStart + nBytes : nullptr;
}

} // namespace

DWORD CImageObjIO::MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot)
{
    if (nLine < 0 || nLine >= m_ImgInfoIO.nHeight)
        return MM_IO_LINE_OUTSIDE;
    if (nDirection != MM_BAND_DOWNWARD && nDirection != MM_BAND_UPWARD)
        return MM_IO_NO_SUCH_DIRECTION;
    const LineRange lines = nDirection == MM_BAND_DOWNWARD
                                ? BandDownFrom(nLine, m_ImgInfoIO.nBandLines, m_ImgInfoIO.nHeight)
                                : BandUpTo(nLine, m_ImgInfoIO.nBandLines);
    CImageCtrlIO* pStore = Store();
    if (!pStore)
        return MM_BAD_ARGUMENT;

    std::int64_t nFrameBytes = 0;
    if (m_nTmpBufMode == 0) {
        const BandBytes bytes = BytesInExternal(m_ImgInfoIO, lines);
        m_ImgInfoIO.pImage = MapExternal(bytes.nStart, bytes.nBytes, nSlot);
        nFrameBytes = bytes.nFrameBytes;
    } else {
        const std::int64_t nLineBytes = m_ImgInfoIO.nLineBytes;
        if (pStore->GetAllMapFlg() == 1) // the band's own place, into which it is converted when it ends
            MapExternal(nLineBytes * lines.nFirst, nLineBytes * lines.Count(), nSlot);
        m_ImgInfoIO.pImage = pStore->GetTMPBuf(0);
        nFrameBytes = m_ImgInfoIO.nFsize != 0 ? BytesWithFrame(m_ImgInfo, 0, 0).nFrameBytes : 0;
    }
    m_ImgInfoIO.nBandTop = m_ImgInfo.nBandTop = lines.nFirst;
    m_ImgInfoIO.nBandBottom = m_ImgInfo.nBandBottom = lines.nLast;
    m_ImgInfo.pImage = Behind(m_ImgInfoIO.pImage, nFrameBytes);
    *pBand = m_ImgInfo;
    pBand->nBandLines = static_cast<int>(lines.Count());
    if (pStore->GetImgType() != IMG_OUTPUT)
        ConvertToWorkBuffer(lines.nFirst, lines.nLast);
    return MM_SUCCESS;
}

DWORD CImageObjIO::MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot)
{
    if (nFirst > nLast)
        return MM_IO_RANGE_REVERSED;
    const LineRange lines{nFirst, nLast};
    const BandBytes bytes = BytesInExternal(m_ImgInfoIO, lines);
    m_ImgInfoIO.pImage = MapExternal(bytes.nStart, bytes.nBytes, nSlot);
    if (!m_ImgInfoIO.pImage)
        return MM_IO_RANGE_ADDRESS;

    const bool bOutput = Store()->GetImgType() == IMG_OUTPUT;
    m_ImgInfo.nBandTop = nFirst;
    m_ImgInfo.nBandBottom = nLast;
    if (!bOutput)
        m_ImgInfo.pImage = Behind(m_ImgInfoIO.pImage, bytes.nFrameBytes);
    *pBand = m_ImgInfo;
    pBand->nBandLines = static_cast<int>(lines.Count());
    if (!bOutput)
        ConvertToWorkBuffer(nFirst, nLast);
    return MM_SUCCESS;
}

DWORD CImageObjIO::MapBandRangeBuf(int nFirst, int nLast, unsigned char* pDst, T_ImageLrg_tag* pBand)
{
    if (nFirst < 0 || nFirst > nLast || nLast >= m_ImgInfoIO.nHeight)
        return MM_IO_BUFFER_ADDRESS;
    const std::int64_t nLineBytes = m_ImgInfoIO.nLineBytes;
    m_ImgInfoIO.pImage =
        MapExternal(nLineBytes * nFirst, nLineBytes * LineRange{nFirst, nLast}.Count(), kSlot);
    if (!m_ImgInfoIO.pImage)
        return MM_IO_BUFFER_ADDRESS;
    if (m_nConvert == 1)
        ConvertInData(nFirst, nLast, m_ImgInfoIO.pImage, pDst, &m_ImgInfoIO, &m_ImgInfo);
    m_ImgInfoIO.nBandTop = pBand->nBandTop = nFirst;
    m_ImgInfoIO.nBandBottom = pBand->nBandBottom = nLast;
    pBand->pImage = pDst;
    return MM_SUCCESS;
}

DWORD CImageObjIO::UnmapBand(int nSlot)
{
    return Store() ? Store()->FreeBandAdress(nSlot) : DWORD{MM_BAD_ARGUMENT};
}

DWORD CImageObjIO::UnmapBand(unsigned char* pBuffer, int nSlot)
{
    CImageCtrlIO* pStore = Store();
    if (!pStore)
        return MM_BAD_ARGUMENT;
    const std::int64_t nLines = LineRange{m_ImgInfo.nBandTop, m_ImgInfo.nBandBottom}.Count();
    if (!pBuffer && nLines * m_ImgInfo.nLineBytes <= static_cast<std::int64_t>(pStore->WorkBufferBytes()))
        pBuffer = pStore->GetTMPBuf(0);
    if (!pBuffer && m_nConvert == 1)
        return MM_BAD_ARGUMENT;
    if (m_nConvert == 1) {
        if (!LendsRoomFor(nLines))
            return MM_BAD_ARGUMENT; // the band stays on loan: lines that were not converted are never written
        unsigned char* pDst = pStore->GetWrtBuf(static_cast<int>(FirstLineOnLoan(nLines)));
        if (pDst)
            ConvertOutData(m_ImgInfo.nBandTop, m_ImgInfo.nBandBottom, pBuffer, pDst, &m_ImgInfo,
                           &m_ImgInfoIO);
    }
    return pStore->FreeBandAdress(nSlot);
}

unsigned char* CImageObjIO::MapExternal(std::int64_t nOffset, std::int64_t nBytes, int nSlot)
{
    constexpr std::int64_t nMost = std::numeric_limits<DWORD>::max();
    if (!Store() || nOffset < 0 || nOffset > nMost || nBytes < 0 || nBytes > nMost)
        return nullptr;
    void* pBand = Store()->MapBandAdress(static_cast<DWORD>(nOffset), static_cast<DWORD>(nBytes), nSlot);
    return static_cast<unsigned char*>(pBand);
}

bool CImageObjIO::LendsRoomFor(std::int64_t nLines) const
{
    const CImageCtrlIO& store = *Store();
    const std::int64_t nLineBytes = m_ImgInfoIO.nLineBytes;
    const std::int64_t nEnd = FirstLineOnLoan(nLines) + nLines * nLineBytes;
    const bool bInImage = store.GetAllMapFlg() != 1 || nEnd <= nLineBytes * m_ImgInfoIO.nHeight;
    return bInImage && nLines * nLineBytes <= std::abs(std::int64_t{store.m_nBandSize});
}

std::int64_t CImageObjIO::FirstLineOnLoan(std::int64_t nLines) const
{
    const CImageCtrlIO& store = *Store();
    const BandBytes framed = BytesWithFrame(m_ImgInfoIO, 0, nLines);
    const bool bFramed = framed.nBytes == std::abs(std::int64_t{store.m_nBandSize});
    return std::int64_t{store.m_nBandOffset} - store.GetHdrSize() + (bFramed ? framed.nFrameBytes : 0);
}

void CImageObjIO::ConvertToWorkBuffer(int nFirst, int nLast)
{
    unsigned char* pWork = Store()->GetTMPBuf(0);
    const std::int64_t nLineBytes = m_ImgInfo.nLineBytes;
    const std::int64_t nStart = nLineBytes * nFirst;
    const std::int64_t nEnd = nLineBytes * (std::int64_t{nLast} + 1);
    const std::int64_t nTaken =
        m_ImgInfoIO.pImage == pWork ? m_ImgInfoIO.nLineBytes * LineRange{nFirst, nLast}.Count() : 0;
    const bool bHasRoom = nStart >= nTaken && nEnd <= static_cast<std::int64_t>(Store()->WorkBufferBytes());
    if (m_nConvert == 1 && m_ImgInfoIO.pImage && nLast < m_ImgInfoIO.nHeight && bHasRoom)
        ConvertInData(nFirst, nLast, m_ImgInfoIO.pImage, pWork + nStart, &m_ImgInfoIO, &m_ImgInfo);
}
