// Bitmap headers of external images: writing the header of a new output, finding where the header of an input
// begins. The pixels behind an output's header follow later, band by band.

#include "MemoryManager/CImageCtrlIO.h"

#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/layout/BitmapHeader.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// Bytes of the picture's lines with their padding. Negative: a size is negative, or the bytes exceed
// INT32_MAX.
LONGLONG PictureBytes(int nWidth, int nHeight, int nPixelBytes)
{
    if (nWidth < 0 || nHeight < 0)
        return -1;
    const LONGLONG nLineBytes = PaddedLine(LONGLONG{nWidth} * nPixelBytes);
    return nHeight > INT32_MAX / std::max<LONGLONG>(nLineBytes, 1) ? -1 : nLineBytes * nHeight;
}

// Position of the first "BM" whose 'B' is among the first nScan bytes that next(BYTE&) delivers; -1: none.
template <class Next> int FindSignature(int nScan, Next next)
{
    bool bAfterB = false;
    for (int n = 0; n < nScan || bAfterB; ++n) {
        BYTE nByte = 0;
        if (!next(nByte))
            return -1;
        if (bAfterB && nByte == 'M')
            return n - 1;
        bAfterB = nByte == 'B' && n < nScan;
    }
    return -1;
}

int FindSignatureIn(const void* pBytes, SIZE_T nBytes, int nScan)
{
    const BYTE* pNext = static_cast<const BYTE*>(pBytes);
    const BYTE* pEnd = pNext + nBytes;
    return FindSignature(nScan, [&](BYTE& nByte) {
        if (pNext == pEnd)
            return false;
        nByte = *pNext++;
        return true;
    });
}

} // namespace

int CImageCtrlIO::OutPutDIBHeader(int nWidth, int nHeight, int nPixelBytes)
{
    const int nPixel = nPixelBytes == 4 ? 4 : 3;
    const LONGLONG nPicture = PictureBytes(nWidth, nHeight, nPixel);
    if (nPicture < 0 || nPicture > INT32_MAX - MM_BITMAP_HEADER_BYTES) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const BitmapHeader header = MakeBitmapHeader(nWidth, nHeight, nPixel);
    switch (m_eAcsType) {
    case ACS_MMF:
        return WriteHeaderView(header.data(), header.size());
    case ACS_FILEIO:
        return AppendByViews(m_hFile, header.data(), MM_BITMAP_HEADER_BYTES) ? 1 : 0;
    case ACS_MEMORY:
        if (m_pMapAdr[0] != nullptr) {
            std::memcpy(m_pMapAdr[0], header.data(), header.size());
            return 1;
        }
        break;
    case ACS_NONE:
        break;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
}

int CImageCtrlIO::SchDIBHeader(int nWidth, int nHeight, int nPixelBytes, int)
{
    const LONGLONG nData = PictureBytes(nWidth, nHeight, nPixelBytes == 3 ? 3 : 4);
    const int nScan = static_cast<int>(std::min<LONGLONG>(nData, AllocationGranularity()));
    if (nScan < 1)
        return -1;
    if (m_eAcsType == ACS_MMF)
        return ScanMapping(static_cast<DWORD>(nData), nScan);
    if (m_eAcsType == ACS_FILEIO)
        return ScanFile(nScan);
    if (m_pMapAdr[0] == nullptr)
        return -1;
    return FindSignatureIn(m_pMapAdr[0], static_cast<SIZE_T>(nScan) + 1, nScan);
}

// Writes the header to the host's empty file through a view. When no view could be mapped, the mapping is
// left for Destroy to close.
int CImageCtrlIO::WriteHeaderView(const void* pHeader, SIZE_T nBytes)
{
    m_hMap = CreateFileMappingA(m_hFile, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(nBytes), nullptr);
    if (m_hMap == nullptr)
        return 0;
    void* pView = MapViewOfFileRetry(m_hMap, FILE_MAP_ALL_ACCESS, 0, 0, nBytes);
    if (pView == nullptr)
        return 0;
    std::memcpy(pView, pHeader, nBytes);
    UnmapView(pView);
    CloseMapping();
    return 1;
}

// Looks for the signature through a read-only view. A file that is shorter than the nData bytes of its
// picture cannot be mapped.
int CImageCtrlIO::ScanMapping(DWORD nData, int nScan)
{
    // One byte more where the file has it: a signature may start in the last byte scanned.
    const DWORD nLength = FileLength(m_hFile).value_or(kLongestFile);
    const DWORD nMapped = nLength > nData ? nData + 1 : nData;
    m_hMap = CreateFileMappingA(m_hFile, nullptr, PAGE_READONLY, 0, nMapped, nullptr);
    if (m_hMap == nullptr)
        return -1;
    const SIZE_T nView = std::min<SIZE_T>(static_cast<SIZE_T>(nScan) + 1, nMapped);
    void* pView = MapViewOfFileRetry(m_hMap, FILE_MAP_READ, 0, 0, nView);
    if (pView == nullptr)
        return -1;
    const int nFound = FindSignatureIn(pView, nView, nScan);
    CloseMapping(); // ahead of the view, whose error is the one to be reported
    return UnmapView(pView) != 0 ? nFound : -1;
}

// Looks for the signature byte by byte, so that the file's position ends right behind it.
int CImageCtrlIO::ScanFile(int nScan)
{
    return FindSignature(nScan, [this](BYTE& nByte) {
        DWORD nRead = 0;
        return ReadFile(m_hFile, &nByte, 1, &nRead, nullptr) && nRead == 1;
    });
}
