// Bands of external images: mapped through the store, converted into the object's layout, converted back
// and written.

#include "MemoryManager/CImageCtrlIO.h"
#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/ResultCodes.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

/// Byte range of a band in the external data, frame included.
struct ByteRange
{
    std::int64_t nStart;
    std::int64_t nBytes;
    std::int64_t nFrameBytes; // from there to the band's own first pixel
};

std::int64_t FrameBytes(const T_ImageLrg_tag& info)
{
    return (std::int64_t{info.nPixelBytes} + info.nLineBytes) * info.nFsize;
}

ByteRange BytesOfBand(const T_ImageLrg_tag& info, int nFirst, std::int64_t nLines)
{
    const std::int64_t nFrameBytes = FrameBytes(info);
    return {std::int64_t{info.nLineBytes} * nFirst - nFrameBytes,
            info.nLineBytes * (nLines + 2 * std::int64_t{info.nFsize}), nFrameBytes};
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
    int nFirst = nLine;
    int nLast = nLine;
    if (nDirection == MM_BAND_DOWNWARD)
        nLast = nLine + std::min(m_ImgInfoIO.nBandLines, m_ImgInfoIO.nHeight - nLine) - 1;
    else if (nDirection == MM_BAND_UPWARD)
        nFirst = nLine - std::min(m_ImgInfoIO.nBandLines, nLine + 1) + 1;
    else
        return MM_IO_NO_SUCH_DIRECTION;
    CImageCtrlIO* pStore = Store();
    if (!pStore)
        return MM_BAD_ARGUMENT;

    const int nLines = nLast - nFirst + 1;
    std::int64_t nFrameBytes = 0;
    if (m_nTmpBufMode == 0) {
        const ByteRange range = BytesOfBand(m_ImgInfoIO, nFirst, nLines);
        m_ImgInfoIO.pImage = MapExternal(range.nStart, range.nBytes, nSlot);
        nFrameBytes = range.nFrameBytes;
    } else {
        m_ImgInfoIO.pImage = pStore->GetTMPBuf(0);
        nFrameBytes = m_ImgInfoIO.nFsize != 0 ? FrameBytes(m_ImgInfo) : 0;
    }
    m_ImgInfoIO.nBandTop = m_ImgInfo.nBandTop = nFirst;
    m_ImgInfoIO.nBandBottom = m_ImgInfo.nBandBottom = nLast;
    m_ImgInfo.pImage = Behind(m_ImgInfoIO.pImage, nFrameBytes);
    *pBand = m_ImgInfo;
    pBand->nBandLines = nLines;
    if (pStore->GetImgType() != IMG_OUTPUT)
        ConvertToWorkBuffer(nFirst, nLast);
    return MM_SUCCESS;
}

DWORD CImageObjIO::MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot)
{
    if (nFirst > nLast)
        return MM_IO_RANGE_REVERSED;
    const std::int64_t nLines = std::int64_t{nLast} - nFirst + 1;
    const ByteRange range = BytesOfBand(m_ImgInfoIO, nFirst, nLines);
    m_ImgInfoIO.pImage = MapExternal(range.nStart, range.nBytes, nSlot);
    if (!m_ImgInfoIO.pImage)
        return MM_IO_RANGE_ADDRESS;

    const bool bOutput = Store()->GetImgType() == IMG_OUTPUT;
    m_ImgInfo.nBandTop = nFirst;
    m_ImgInfo.nBandBottom = nLast;
    if (!bOutput)
        m_ImgInfo.pImage = Behind(m_ImgInfoIO.pImage, range.nFrameBytes);
    *pBand = m_ImgInfo;
    pBand->nBandLines = static_cast<int>(nLines);
    if (!bOutput)
        ConvertToWorkBuffer(nFirst, nLast);
    return MM_SUCCESS;
}

DWORD CImageObjIO::MapBandRangeBuf(int nFirst, int nLast, unsigned char* pDst, T_ImageLrg_tag* pBand)
{
    if (nFirst < 0 || nFirst > nLast || nLast >= m_ImgInfoIO.nHeight)
        return MM_IO_BUFFER_ADDRESS;
    const std::int64_t nLines = std::int64_t{nLast} - nFirst + 1;
    m_ImgInfoIO.pImage =
        MapExternal(std::int64_t{m_ImgInfoIO.nLineBytes} * nFirst, nLines * m_ImgInfoIO.nLineBytes, 0);
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
    const std::int64_t nLines = std::int64_t{m_ImgInfo.nBandBottom} - m_ImgInfo.nBandTop + 1;
    if (!pBuffer && nLines * m_ImgInfo.nLineBytes <= static_cast<std::int64_t>(pStore->WorkBufferBytes()))
        pBuffer = pStore->GetTMPBuf(0);
    if (!pBuffer && m_nConvert == 1)
        return MM_BAD_ARGUMENT;
    // Lines go to their place in a whole image, else to the start of the band on loan. The two records may
    // name different bands, and the loan may be shorter than either.
    const bool bHasRoom = pStore->GetAllMapFlg() == 1 ? m_ImgInfoIO.nBandTop + nLines <= m_ImgInfoIO.nHeight
                                                      : nLines * m_ImgInfoIO.nLineBytes <=
                                                            std::abs(std::int64_t{pStore->m_nBandSize});
    if (m_nConvert == 1 && !bHasRoom)
        return MM_BAD_ARGUMENT; // still on loan: what was not converted is never written
    if (m_nConvert == 1) {
        unsigned char* pDst = pStore->GetWrtBuf(m_ImgInfoIO.nBandTop * m_ImgInfoIO.nLineBytes);
        if (pDst)
            ConvertOutData(m_ImgInfo.nBandTop, m_ImgInfo.nBandBottom, pBuffer, pDst, &m_ImgInfo,
                           &m_ImgInfoIO);
    }
    return pStore->FreeBandAdress(nSlot);
}

/// The store's address of a range of external bytes; null when there is no such range.
unsigned char* CImageObjIO::MapExternal(std::int64_t nOffset, std::int64_t nBytes, int nSlot)
{
    constexpr std::int64_t nMost = std::numeric_limits<DWORD>::max();
    if (!Store() || nOffset < 0 || nOffset > nMost || nBytes < 0 || nBytes > nMost)
        return nullptr;
    void* pBand = Store()->MapBandAdress(static_cast<DWORD>(nOffset), static_cast<DWORD>(nBytes), nSlot);
    return static_cast<unsigned char*>(pBand);
}

/// Converts an input band into the work buffer, where the object's line nFirst has its place; only when the
/// buffer holds those lines, behind the external band if that lies in the buffer itself.
void CImageObjIO::ConvertToWorkBuffer(int nFirst, int nLast)
{
    unsigned char* pWork = Store()->GetTMPBuf(0);
    const std::int64_t nStart = std::int64_t{m_ImgInfo.nLineBytes} * nFirst;
    const std::int64_t nEnd = std::int64_t{m_ImgInfo.nLineBytes} * (std::int64_t{nLast} + 1);
    const std::int64_t nTaken =
        m_ImgInfoIO.pImage == pWork ? m_ImgInfoIO.nLineBytes * (std::int64_t{nLast} - nFirst + 1) : 0;
    if (m_nConvert != 1 || !m_ImgInfoIO.pImage || nStart < nTaken || nLast >= m_ImgInfoIO.nHeight ||
        nEnd > static_cast<std::int64_t>(Store()->WorkBufferBytes()))
        return;
    ConvertInData(nFirst, nLast, m_ImgInfoIO.pImage, pWork + nStart, &m_ImgInfoIO, &m_ImgInfo);
}
