// The backing store of one image object: a committed block, or a temporary file reached through mapped views.
// Create decides between the two by the sizes it is given; ConvertFile and MapBandAll change the decision
// later.

#include "MemoryManager/CImageCtrl.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr char kUnit[] = "MemoryManager/CImageCtrl";

// Statements of this unit that report to the error log.
constexpr int kLineTempName = 287;
constexpr int kLineTempFile = 303;
constexpr int kLineMapping = 322;
constexpr int kLineConvertName = 1005;
constexpr int kLineConvertFile = 1019;
constexpr int kLineConvertWrite = 1026;
constexpr int kLineConvertReopen = 1043;
constexpr int kLineConvertMapping = 1057;
constexpr int kLineDebugName = 842;
constexpr int kLineDebugFile = 856;
constexpr int kLineDebugHeader = 865;
constexpr int kLineDebugWrite = 872;
constexpr int kLineDebugReopen = 889;
constexpr int kLineDebugMapping = 907;

constexpr BYTE kBlankHeader[100] = {};

HANDLE MapWritable(HANDLE hFile, int nSize)
{
    return CreateFileMappingA(hFile, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(nSize), nullptr);
}

// Opens a temporary file that other handles may read and write, and that stays when this handle is closed.
HANDLE OpenSharedFile(const char* pszPath, DWORD nCreation)
{
    return CreateFileA(pszPath, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                       nCreation, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Closes a file, if there is one. The last error stays: it is still to be reported.
void CloseFile(HANDLE& hFile)
{
    const DWORD nError = GetLastError();
    if (hFile != INVALID_HANDLE_VALUE)
        CloseHandle(hFile);
    hFile = INVALID_HANDLE_VALUE;
    SetLastError(nError);
}

} // namespace

// What a named temporary file is made of, and the line of the log entry for each step that may fail.
struct CImageCtrl::TempFile
{
    DWORD nHeader; // zero bytes ahead of the data
    const void* pData;
    DWORD nData;
    int nFileSize; // what follows the data is zero
    int nNameLine, nFileLine, nHeaderLine, nDataLine, nReopenLine, nMappingLine;
};

CImageCtrl::CImageCtrl()
    : m_szFileName{}, m_hFile(INVALID_HANDLE_VALUE), m_hMap(nullptr), m_pMapAdr{}, m_nMapCnt(1),
      m_nAllMapFlg(0), m_nFileSize(0), m_eAcsType(ACS_NONE), m_nHdrSize(0), m_eImgType(IMG_WORK),
      m_bCreated(0)
{
}

CImageCtrl::CImageCtrl(const CImageCtrl& other) = default;
CImageCtrl& CImageCtrl::operator=(const CImageCtrl& other) = default;

DWORD CImageCtrl::Create(LONG nSize, LONG nLimit, int nSlots)
{
    const LONGLONG nFileSize = LONGLONG{m_nHdrSize} + nSize;
    if (nSize < 0)
        return MM_NO_MEMORY;
    if (m_nHdrSize < 0 || nFileSize > INT32_MAX)
        return MM_BAD_ARGUMENT;
    m_nFileSize = static_cast<int>(nFileSize);
    m_nMapCnt = nSlots;

    const bool bHasFile = m_hFile != INVALID_HANDLE_VALUE;
    if (bHasFile && m_hMap != nullptr) // a file that ConvertFile made has no header
        m_nFileSize = static_cast<int>(
            std::min(static_cast<DWORD>(m_nFileSize), FileLength(m_hFile).value_or(kLongestFile)));
    if (nSize > nLimit) {
        if (!bHasFile) {
            m_eAcsType = ACS_MMF;
            if (const DWORD nResult = CreateMMF(m_nFileSize, 1); nResult != MM_SUCCESS)
                return nResult;
        }
        m_nAllMapFlg = m_pMapAdr[0] != nullptr ? 1 : 0;
        m_bCreated = 1;
        return MM_SUCCESS;
    }

    const SIZE_T nBytes = static_cast<SIZE_T>(m_nFileSize);
    if (bHasFile && m_hMap != nullptr && m_pMapAdr[0] == nullptr) {
        m_pMapAdr[0] = MapViewOfFileRetry(m_hMap, FILE_MAP_ALL_ACCESS, 0, 0, nBytes);
        if (m_pMapAdr[0] == nullptr)
            return MM_STORE_VIEW;
    } else {
        m_eAcsType = ACS_MEMORY;
        m_pMapAdr[0] = AllocMemoryBlock(nBytes, 0);
        if (m_pMapAdr[0] == nullptr)
            return MM_NO_MEMORY;
    }
    m_nAllMapFlg = 1;
    m_bCreated = 1;
    return MM_SUCCESS;
}

DWORD CImageCtrl::Destroy()
{
    if (m_eAcsType == ACS_MEMORY || m_eAcsType == ACS_FILEIO) {
        FreeMemoryBlock(m_pMapAdr[0]);
        m_pMapAdr[0] = nullptr;
    } else if (m_eAcsType == ACS_MMF) {
        UnmapSlots();
        CloseMapping();
        CloseFile(m_hFile);
    }
    return MM_SUCCESS;
}

void* CImageCtrl::MapBandAdress(DWORD nOffset, DWORD nBytes, int nSlot)
{
    const ULONGLONG nPos = ULONGLONG{static_cast<DWORD>(m_nHdrSize)} + nOffset;
    if (m_nAllMapFlg == 1) {
        const bool bBehind = m_nFileSize > 0 && nPos >= static_cast<DWORD>(m_nFileSize);
        return m_pMapAdr[0] != nullptr && !bBehind ? static_cast<BYTE*>(m_pMapAdr[0]) + nPos : nullptr;
    }
    if (!IsSlot(nSlot) || nPos >= static_cast<DWORD>(m_nFileSize))
        return nullptr;
    return ReadMMF(static_cast<DWORD>(nPos), nBytes, &m_pMapAdr[nSlot]);
}

DWORD CImageCtrl::FreeBandAdress(int nSlot)
{
    if (m_eAcsType != ACS_MMF || m_nAllMapFlg == 1)
        return MM_SUCCESS;
    if (!IsSlot(nSlot))
        return MM_BAD_ARGUMENT;
    return ReleaseSlot(nSlot) ? MM_SUCCESS : MM_STORE_UNMAP;
}

DWORD CImageCtrl::MapBandAll(DWORD, DWORD nBytes, int)
{
    // All addresses will be counted from the view in slot 0, so it must start at the start of the file.
    if (m_nAllMapFlg != 1 && m_nHdrSize >= static_cast<int>(AllocationGranularity()))
        return MM_STORE_NOT_MAPPED;
    const void* pData = MapBandAdress(0, nBytes, 0);
    const bool bMapped = pData != nullptr || m_pMapAdr[0] != nullptr;
    m_nAllMapFlg = bMapped ? 1 : 0;
    return bMapped ? MM_SUCCESS : MM_STORE_NOT_MAPPED;
}

DWORD CImageCtrl::ConvertFile(int nSize)
{
    if (m_eAcsType == ACS_MMF && m_hFile != INVALID_HANDLE_VALUE) {
        ReleaseSlot(0);
        m_nAllMapFlg = 0;
        return MM_SUCCESS;
    }
    // The block in slot 0 is the store's to release only if Create made it; else it is the host's.
    const bool bHasBlock = m_eAcsType == ACS_MEMORY && m_bCreated != 0 && m_pMapAdr[0] != nullptr;
    if (!bHasBlock || nSize <= 0 || nSize > m_nFileSize) {
        SetLastError(bHasBlock ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
        return FailFileAccess(kUnit, kLineConvertWrite);
    }
    const DWORD nResult = WriteTempFile({.nHeader = 0,
                                         .pData = m_pMapAdr[0],
                                         .nData = static_cast<DWORD>(nSize),
                                         .nFileSize = nSize,
                                         .nNameLine = kLineConvertName,
                                         .nFileLine = kLineConvertFile,
                                         .nHeaderLine = kLineConvertWrite,
                                         .nDataLine = kLineConvertWrite,
                                         .nReopenLine = kLineConvertReopen,
                                         .nMappingLine = kLineConvertMapping});
    if (nResult != MM_SUCCESS)
        return nResult;

    FreeMemoryBlock(m_pMapAdr[0]);
    m_pMapAdr[0] = nullptr;
    m_nAllMapFlg = 0;
    m_nFileSize = nSize;
    m_eAcsType = ACS_MMF;
    return MM_SUCCESS;
}

DWORD CImageCtrl::DebugConvertWrite(T_Image_tag* pFlat, LONG nTotalBytes, LONG nHeaderBytes)
{
    const LONGLONG nData = LONGLONG{nTotalBytes} - nHeaderBytes;
    if (pFlat == nullptr || pFlat->pBase == nullptr || nData < 0 || nData > pFlat->nBufSize ||
        nHeaderBytes < 0 || nHeaderBytes > LONG{sizeof(kBlankHeader)})
        return MM_BAD_ARGUMENT;
    if (m_hFile != INVALID_HANDLE_VALUE || m_pMapAdr[0] != nullptr)
        return MM_BAD_ARGUMENT; // what the store holds would be lost

    const int nFileSize = std::max(int{nTotalBytes}, static_cast<int>(AllocationGranularity()));
    const DWORD nResult = WriteTempFile({.nHeader = static_cast<DWORD>(nHeaderBytes),
                                         .pData = pFlat->pBase,
                                         .nData = static_cast<DWORD>(nData),
                                         .nFileSize = nFileSize,
                                         .nNameLine = kLineDebugName,
                                         .nFileLine = kLineDebugFile,
                                         .nHeaderLine = kLineDebugHeader,
                                         .nDataLine = kLineDebugWrite,
                                         .nReopenLine = kLineDebugReopen,
                                         .nMappingLine = kLineDebugMapping});
    if (nResult != MM_SUCCESS)
        return nResult;
    m_nFileSize = nFileSize;
    m_nMapCnt = 1;
    m_nAllMapFlg = 0;
    m_eAcsType = ACS_MMF;
    m_bCreated = 1;
    return MM_SUCCESS;
}

void* CImageCtrl::GetMemPtr() const
{
    return m_pMapAdr[0];
}

void CImageCtrl::SetImageData(void* pData)
{
    m_pMapAdr[0] = pData;
}

void* CImageCtrl::GetFHandle() const
{
    return m_hFile;
}

void CImageCtrl::SetFileHandle(void* hFile)
{
    m_hFile = hFile;
}

void CImageCtrl::SetFileSize(int nSize)
{
    m_nFileSize = nSize;
}

void CImageCtrl::SetHdrSize(int nSize)
{
    m_nHdrSize = nSize;
}

int CImageCtrl::GetHdrSize() const
{
    return m_nHdrSize;
}

tag_E_ACSTYPE CImageCtrl::GetAcsType() const
{
    return m_eAcsType;
}

void CImageCtrl::SetAcsType(tag_E_ACSTYPE eType)
{
    m_eAcsType = eType;
}

tag_E_IMGTYPE CImageCtrl::GetImgType() const
{
    return m_eImgType;
}

void CImageCtrl::SetImgType(tag_E_IMGTYPE eType)
{
    m_eImgType = eType;
}

int CImageCtrl::GetAllMapFlg() const
{
    return m_nAllMapFlg;
}

int CImageCtrl::IsCreated() const
{
    return m_bCreated;
}

DWORD CImageCtrl::CreateMMF(int nSize, int bNewFile)
{
    if (bNewFile == 1) {
        if (!MakeTempName())
            return FailFileAccess(kUnit, kLineTempName);
        m_hFile = CreateFileA(m_szFileName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (m_hFile == INVALID_HANDLE_VALUE)
            return GiveUpTempFile(kLineTempFile);
    }
    if (m_hFile == INVALID_HANDLE_VALUE) { // by an earlier failure; Windows would map memory
        SetLastError(ERROR_INVALID_HANDLE);
        return FailFileAccess(kUnit, kLineMapping);
    }
    m_hMap = MapWritable(m_hFile, nSize);
    if (m_hMap != nullptr)
        return MM_SUCCESS;
    CloseFile(m_hFile); // a new file disappears with its handle
    return FailFileAccess(kUnit, kLineMapping);
}

void* CImageCtrl::ReadMMF(DWORD nPos, DWORD nBytes, void** ppView)
{
    if (m_hMap == nullptr)
        return nullptr;
    const ViewRange range = CoverRange(nPos, nBytes, static_cast<DWORD>(m_nFileSize));
    *ppView = nullptr;
    if (range.nBytes > 0) // to the platform, a length of 0 means the rest of the mapping
        *ppView = MapViewOfFileRetry(m_hMap, FILE_MAP_ALL_ACCESS, 0, range.nStart, range.nBytes);
    return *ppView != nullptr ? static_cast<BYTE*>(*ppView) + range.nDelta : nullptr;
}

bool CImageCtrl::ReleaseSlot(int nSlot)
{
    void* pView = m_pMapAdr[nSlot];
    m_pMapAdr[nSlot] = nullptr;
    return pView == nullptr || UnmapView(pView) != 0;
}

void CImageCtrl::UnmapSlots()
{
    for (int nSlot = 0; nSlot < MM_SLOT_COUNT; ++nSlot)
        ReleaseSlot(nSlot);
}

void CImageCtrl::CloseMapping()
{
    if (m_hMap != nullptr)
        CloseHandle(m_hMap);
    m_hMap = nullptr;
}

// Creates an empty file in the temporary folder and puts its path into m_szFileName.
bool CImageCtrl::MakeTempName()
{
    if (GetTempDirctoryName() != MM_SUCCESS && !IsTempFolderKnown()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return false;
    }
    return GetTempFileNameA(ms_TempDirctoryName, "LRG", 0, m_szFileName) != 0;
}

// Reports why the temporary file could not be finished, and deletes it so that it takes no room on a full
// disk.
DWORD CImageCtrl::GiveUpTempFile(int nLine)
{
    CloseFile(m_hFile);
    const DWORD nResult = FailFileAccess(kUnit, nLine);
    DeleteFileA(m_szFileName);
    return nResult;
}

// Writes a named temporary file and maps it. When that fails, the file is deleted.
DWORD CImageCtrl::WriteTempFile(const TempFile& file)
{
    if (!MakeTempName())
        return FailFileAccess(kUnit, file.nNameLine);
    m_hFile = OpenSharedFile(m_szFileName, CREATE_ALWAYS);
    if (m_hFile == INVALID_HANDLE_VALUE)
        return GiveUpTempFile(file.nFileLine);
    if (!AppendByViews(m_hFile, kBlankHeader, file.nHeader))
        return GiveUpTempFile(file.nHeaderLine);
    if (!AppendByViews(m_hFile, file.pData, file.nData))
        return GiveUpTempFile(file.nDataLine);

    CloseHandle(m_hFile);
    m_hFile = OpenSharedFile(m_szFileName, OPEN_EXISTING);
    if (m_hFile == INVALID_HANDLE_VALUE)
        return GiveUpTempFile(file.nReopenLine);
    m_hMap = MapWritable(m_hFile, file.nFileSize);
    return m_hMap != nullptr ? MM_SUCCESS : GiveUpTempFile(file.nMappingLine);
}
