// The store over an image of the host's: a file reached through mapped views, a file read and written through
// a band buffer, or a block. Writing the buffer to an output is retried while the disk is full.

#include "MemoryManager/CImageCtrlIO.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char kUnit[] = "MemoryManager/CImageCtrlIO";
constexpr char kMappingUnit[] = "MemoryManager/CImageCtrl";

// Statements that report to the error log.
constexpr int kLineReadWhole = 156;
constexpr int kLineWriteBack = 402;
constexpr int kLineMapping = 322; // in kMappingUnit

// Write-back gives up when the weights of its failed attempts add up to the limit.
constexpr int kWeightDiskFull = 1;
constexpr int kWeightOther = 60;
constexpr int kWeightLimit = 600;
constexpr DWORD kAttemptPauseMs = 100;

// Bytes ahead of a work buffer, which hold its size. As many as a cache line has, so that the buffer is
// aligned.
constexpr SIZE_T kWorkBufferHead = 64;

// Where the data byte nOffset of an output that is held whole goes: behind what the file held before the
// first of its bytes was written. pLength keeps that length with 1 added; null: nothing was written yet.
// None: there is no such place, with the reason as last error.
std::optional<DWORD> PlaceInFile(HANDLE hFile, void*& pLength, int nOffset)
{
    std::optional<DWORD> nLength = static_cast<DWORD>(reinterpret_cast<SIZE_T>(pLength) - 1);
    if (pLength == nullptr)
        nLength = FileLength(hFile);
    if (!nLength)
        return std::nullopt;
    pLength = reinterpret_cast<void*>(SIZE_T{*nLength} + 1);
    const LONGLONG nPlace = LONGLONG{*nLength} + nOffset;
    if (nPlace < LONGLONG{kAppend})
        return static_cast<DWORD>(nPlace);
    SetLastError(ERROR_FILE_TOO_LARGE);
    return std::nullopt;
}

} // namespace

CImageCtrlIO::CImageCtrlIO() : m_pTmpBuf(nullptr), m_nBandOffset(0), m_nBandSize(0) {}

CImageCtrlIO::CImageCtrlIO(const CImageCtrlIO& other) = default;
CImageCtrlIO& CImageCtrlIO::operator=(const CImageCtrlIO& other) = default;

// Operations of the base class that are exported under this class's name too.
void* CImageCtrlIO::GetFHandle() const
{
    return CImageCtrl::GetFHandle();
}

void CImageCtrlIO::SetFileHandle(void* hFile)
{
    CImageCtrl::SetFileHandle(hFile);
}

void CImageCtrlIO::SetFileSize(int nSize)
{
    CImageCtrl::SetFileSize(nSize);
}

void CImageCtrlIO::SetImageData(void* pData)
{
    CImageCtrl::SetImageData(pData);
}

void CImageCtrlIO::SetHederSize(int nSize)
{
    SetHdrSize(nSize);
}

DWORD CImageCtrlIO::Create(LONG nSize, LONG nLimit, int nSlots)
{
    if (nSize < 0 || nLimit < 0)
        return MM_NO_MEMORY;
    ReleaseBacking();
    m_nAllMapFlg = 0;
    m_bCreated = 0;
    m_nMapCnt = nSlots;
    if (m_nFileSize <= 0)
        m_nFileSize = nSize;

    const bool bWhole = nSize <= nLimit;
    DWORD nResult = MM_UNKNOWN_MODE;
    switch (m_eAcsType) {
    case ACS_MMF:
        nResult = CreateMapping(bWhole);
        break;
    case ACS_MEMORY: // the host's block holds the image: there is nothing to make
        m_nAllMapFlg = 1;
        return MM_SUCCESS;
    case ACS_FILEIO:
        nResult = CreateBuffer(BufferBytes(nSize, nLimit), bWhole);
        break;
    case ACS_NONE:
        break;
    }
    if (nResult != MM_SUCCESS) {
        ReleaseBacking();
        return nResult;
    }
    m_nAllMapFlg = bWhole ? 1 : 0;
    m_bCreated = 1;
    return MM_SUCCESS;
}

DWORD CImageCtrlIO::Destroy()
{
    ReleaseBacking();
    ReleaseWorkBuffer();
    return MM_SUCCESS;
}

void* CImageCtrlIO::MapBandAdress(DWORD nOffset, DWORD nBytes, int nSlot)
{
    const ULONGLONG nPos = ULONGLONG{static_cast<DWORD>(m_nHdrSize)} + nOffset;
    const DWORD nEnd = m_nFileSize > 0 ? static_cast<DWORD>(m_nFileSize) : DWORD{INT32_MAX};
    const bool bWhole = m_nAllMapFlg == 1;
    if ((!bWhole && !IsSlot(nSlot)) || nPos >= nEnd || nBytes > INT32_MAX)
        return nullptr;

    void* pBand = nullptr;
    if (m_eAcsType == ACS_FILEIO) {
        const SIZE_T nAt = bWhole ? static_cast<SIZE_T>(nPos) : 0; // the band's place in the buffer
        if ((!bWhole && nBytes == 0) || nAt + ULONGLONG{nBytes} > BufferCapacity())
            return nullptr;
        pBand = static_cast<BYTE*>(m_pMapAdr[0]) + nAt;
        if (!bWhole && m_eImgType == IMG_INPUT && !ReadAt(static_cast<DWORD>(nPos), nBytes))
            return nullptr;
    } else if (bWhole) {
        pBand = m_pMapAdr[0] != nullptr ? static_cast<BYTE*>(m_pMapAdr[0]) + nPos : nullptr;
    } else if (m_eAcsType == ACS_MMF) {
        pBand = ReadMMF(static_cast<DWORD>(nPos), nBytes, &m_pMapAdr[0]);
    }
    m_nBandOffset = static_cast<int>(nPos);
    m_nBandSize = static_cast<int>(nBytes);
    return pBand;
}

DWORD CImageCtrlIO::FreeBandAdress(int nSlot)
{
    if (!IsSlot(nSlot) && m_nAllMapFlg != 1)
        return MM_BAD_ARGUMENT;
    if (m_eAcsType == ACS_MMF) {
        if (nSlot == 0) {
            m_nAllMapFlg = 0; // without its whole view the store maps band by band
            m_nBandSize = 0;
        }
        return !IsSlot(nSlot) || ReleaseSlot(nSlot) ? MM_SUCCESS : MM_EXTERNAL_UNMAP;
    }
    if (m_eAcsType != ACS_FILEIO || m_eImgType != IMG_OUTPUT || m_nBandSize == 0)
        return MM_SUCCESS;
    return WriteBack();
}

DWORD CImageCtrlIO::CreateTMPBuf(int nBytes)
{
    ReleaseWorkBuffer();
    if (nBytes < 1)
        return MM_NO_MEMORY;
    const SIZE_T nSize = static_cast<SIZE_T>(nBytes);
    void* pBlock = AllocMemoryBlock(kWorkBufferHead + nSize, 0);
    if (pBlock == nullptr)
        return MM_NO_MEMORY;
    std::memcpy(pBlock, &nSize, sizeof nSize);
    m_pTmpBuf = static_cast<unsigned char*>(pBlock) + kWorkBufferHead;
    return MM_SUCCESS;
}

unsigned char* CImageCtrlIO::GetTMPBuf(int nOffset)
{
    return m_pTmpBuf != nullptr ? m_pTmpBuf + nOffset : nullptr;
}

unsigned char* CImageCtrlIO::GetTempBuf(int nOffset)
{
    return GetTMPBuf(nOffset);
}

unsigned char* CImageCtrlIO::GetWrtBuf(int nOffset)
{
    unsigned char* pStart = static_cast<unsigned char*>(m_pMapAdr[0]);
    if (pStart == nullptr)
        return nullptr;
    if (m_nAllMapFlg == 1 || m_eAcsType == ACS_MEMORY)
        return pStart + m_nHdrSize + nOffset;
    if (m_eAcsType == ACS_MMF)
        return pStart + static_cast<DWORD>(m_nBandOffset) % AllocationGranularity();
    return pStart;
}

bool CImageCtrlIO::HoldsAllotment(LONG nSize, LONG nLimit) const
{
    if (m_eAcsType == ACS_MEMORY)
        return m_nAllMapFlg == 1;
    const bool bWhole = nSize <= nLimit;
    if (m_bCreated == 0 || (m_nAllMapFlg == 1) != bWhole)
        return false;
    if (m_eAcsType == ACS_FILEIO)
        return BufferCapacity() == static_cast<SIZE_T>(BufferBytes(nSize, nLimit));
    return m_hMap != nullptr;
}

SIZE_T CImageCtrlIO::WorkBufferBytes() const
{
    SIZE_T nSize = 0;
    if (m_pTmpBuf != nullptr)
        std::memcpy(&nSize, m_pTmpBuf - kWorkBufferHead, sizeof nSize);
    return nSize;
}

// Maps the host's file. An output's file is extended; an input's must be long enough.
DWORD CImageCtrlIO::CreateMapping(bool bWhole)
{
    if (IsInputTooShort()) {
        SetLastError(kErrorEndOfFile);
        return FailFileAccess(kMappingUnit, kLineMapping);
    }
    if (const DWORD nResult = CreateMMF(m_nFileSize, 0); nResult != MM_SUCCESS)
        return nResult;
    if (!bWhole)
        return MM_SUCCESS;
    if (m_hMap == nullptr)
        return MM_NO_MAPPING;
    m_pMapAdr[0] = MapViewOfFileRetry(m_hMap, FILE_MAP_ALL_ACCESS, 0, 0, static_cast<SIZE_T>(m_nFileSize));
    return m_pMapAdr[0] != nullptr ? MM_SUCCESS : MM_EXTERNAL_VIEW;
}

// Commits the band buffer and fills it with an input that it holds whole.
DWORD CImageCtrlIO::CreateBuffer(LONG nBytes, bool bWhole)
{
    m_pMapAdr[0] = AllocMemoryBlock(static_cast<SIZE_T>(nBytes), 0);
    if (m_pMapAdr[0] == nullptr)
        return MM_NO_MEMORY;
    m_pMapAdr[1] = static_cast<BYTE*>(m_pMapAdr[0]) + nBytes;
    if (m_eImgType != IMG_INPUT)
        return MM_SUCCESS;

    if (IsInputTooShort()) {
        SetLastError(kErrorEndOfFile);
        return FailFileAccess(kUnit, kLineReadWhole);
    }
    if (bWhole && !ReadAt(0, static_cast<DWORD>(m_nFileSize)))
        return FailFileAccess(kUnit, kLineReadWhole);
    return MM_SUCCESS;
}

// Releases what Create made. The host's file and block stay as they are.
void CImageCtrlIO::ReleaseBacking()
{
    if (m_eAcsType == ACS_MMF) {
        UnmapSlots();
        CloseMapping();
    } else if (m_eAcsType == ACS_FILEIO && BufferCapacity() > 0) {
        FreeMemoryBlock(m_pMapAdr[0]);
        m_pMapAdr[0] = m_pMapAdr[1] = m_pMapAdr[2] = nullptr;
    }
    m_nBandSize = 0;
}

void CImageCtrlIO::ReleaseWorkBuffer()
{
    if (m_pTmpBuf != nullptr)
        FreeMemoryBlock(m_pTmpBuf - kWorkBufferHead);
    m_pTmpBuf = nullptr;
}

LONG CImageCtrlIO::BufferBytes(LONG nSize, LONG nLimit) const
{
    return nSize <= nLimit ? std::max<LONG>(nLimit, m_nFileSize) : nLimit;
}

SIZE_T CImageCtrlIO::BufferCapacity() const
{
    if (m_pMapAdr[1] == nullptr)
        return 0;
    return static_cast<SIZE_T>(static_cast<BYTE*>(m_pMapAdr[1]) - static_cast<BYTE*>(m_pMapAdr[0]));
}

bool CImageCtrlIO::IsInputTooShort() const
{
    return m_eImgType == IMG_INPUT &&
           FileLength(m_hFile).value_or(kLongestFile) < static_cast<DWORD>(m_nFileSize);
}

// Reads nBytes from the file position nPos to the start of the band buffer. Bytes behind the file's end are
// zero.
bool CImageCtrlIO::ReadAt(DWORD nPos, DWORD nBytes)
{
    DWORD nRead = 0;
    if (SetFilePointer(m_hFile, static_cast<LONG>(nPos), nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER ||
        !ReadFile(m_hFile, m_pMapAdr[0], nBytes, &nRead, nullptr))
        return false;
    std::memset(static_cast<BYTE*>(m_pMapAdr[0]) + nRead, 0, nBytes - nRead);
    return true;
}

// Writes the band on loan: to its own place behind what the file held when the image is held whole, else to
// the end of the file. The place is determined once and kept for the next call. An attempt that failed may
// have extended the file already, and a band that was then appended would leave a gap.
DWORD CImageCtrlIO::WriteBack()
{
    const bool bWhole = m_nAllMapFlg == 1;
    const BYTE* pSource = static_cast<BYTE*>(m_pMapAdr[0]) + (bWhole ? m_nBandOffset : 0);
    const DWORD nBytes = static_cast<DWORD>(std::abs(m_nBandSize));
    std::optional<DWORD> nPlace;
    if (!bWhole && m_nBandSize < 0)
        nPlace = static_cast<DWORD>(m_nBandOffset);
    for (int nCounter = 0; nCounter < kWeightLimit;) {
        if (!nPlace)
            nPlace =
                bWhole ? PlaceInFile(m_hFile, m_pMapAdr[2], m_nBandOffset - m_nHdrSize) : FileLength(m_hFile);
        DWORD nWritten = 0;
        if (nPlace && WriteFileByView(m_hFile, pSource, nBytes, &nWritten, *nPlace, kFlushLoadPercent)) {
            m_nBandSize = 0;
            return MM_SUCCESS;
        }
        const DWORD nError = GetLastError();
        ReportFileAccessErrorCounted(kUnit, kLineWriteBack, nError, nCounter);
        Sleep(kAttemptPauseMs);
        nCounter += nError == ERROR_DISK_FULL ? kWeightDiskFull : kWeightOther;
    }
    if (nPlace) {
        if (!bWhole)
            m_nBandOffset = static_cast<int>(*nPlace);
        m_nBandSize = -static_cast<int>(nBytes);
    }
    return MM_FILE_ACCESS;
}
