// The table as text. Its exact size is counted first, then the text is made in memory and appended to the
// file in one piece. Lines end with CR LF on every system; names and values keep their bytes.

#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/base/ReportTexts.h"
#include "Platform/Platform.h"

#include <cstdint>
#include <cstring>
#include <limits>

namespace {

constexpr char kOpen[] = "[", kClose[] = "]\r\n", kAssign[] = "\t=\t", kLineEnd[] = "\r\n";

/// Bytes of the forced maximum's name that are compared: the maximum's name and the lead byte of the bracket
/// that follows it.
constexpr std::size_t kForcedBytes = 17;

/// Whether a section is written: it has keys, and is not the section of the maximum, which only KeyReadInt
/// reads.
bool IsWritten(const _SECTION& section)
{
    if (!section.pKey)
        return false;
    const char* pszFirst = section.pKey[0].szName;
    return std::strcmp(pszFirst, kTextMaximum) != 0 &&
           std::strncmp(pszFirst, kTextMaximumForced, kForcedBytes) != 0;
}

bool IsDeleted(const _KEY& key)
{
    return key.szName[0] == '\0';
}

std::uint64_t TextBytes(const _SECTION& section)
{
    std::uint64_t nBytes = std::strlen(kOpen) + std::strlen(section.szName) + std::strlen(kClose);
    for (int i = 0; i < section.nKeyCnt; ++i) {
        const _KEY& key = section.pKey[i];
        if (!IsDeleted(key))
            nBytes += std::strlen(key.szName) + std::strlen(kAssign) +
                      (key.pszValue ? std::strlen(key.pszValue) : 0) + std::strlen(kLineEnd);
    }
    return nBytes + std::strlen(kLineEnd);
}

/// Appends the text to a file, which is created if need be. False: not opened or not written.
bool AppendToFile(const char* pszPath, const char* pText, DWORD nBytes)
{
    const HANDLE hFile = CreateFileA(pszPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (!hFile || hFile == INVALID_HANDLE_VALUE)
        return false;
    const bool bDone = AppendByViews(hFile, pText, nBytes);
    CloseHandle(hFile);
    return bDone;
}

} // namespace

int CWorkTableList::FlushData(const char* pszPath)
{
    if (!m_pSection)
        return 0;
    std::uint64_t nBytes = 0;
    for (int i = 0; i < m_nSectionCnt; ++i)
        if (IsWritten(m_pSection[i]))
            nBytes += TextBytes(m_pSection[i]);
    if (nBytes >= std::numeric_limits<DWORD>::max())
        return 0;
    char* pText = static_cast<char*>(LocalAlloc(LMEM_FIXED, static_cast<SIZE_T>(nBytes) + 1));
    if (!pText)
        return 0;

    char* pEnd = pText;
    for (int i = 0; i < m_nSectionCnt; ++i) {
        const _SECTION& section = m_pSection[i];
        if (!IsWritten(section))
            continue;
        pEnd = StrCpy(StrCpy(StrCpy(pEnd, kOpen), section.szName), kClose);
        for (int j = 0; j < section.nKeyCnt; ++j) {
            const _KEY& key = section.pKey[j];
            if (!IsDeleted(key))
                pEnd = StrCpy(StrCpy(StrCpy(StrCpy(pEnd, key.szName), kAssign), key.pszValue), kLineEnd);
        }
        pEnd = StrCpy(pEnd, kLineEnd);
    }
    const bool bDone = AppendToFile(pszPath, pText, static_cast<DWORD>(nBytes));
    LocalFree(pText);
    return bDone ? 1 : 0;
}

char* CWorkTableList::StrCpy(char* pszTo, const char* pszFrom)
{
    const std::size_t nBytes = pszFrom ? std::strlen(pszFrom) : 0;
    if (nBytes > 0)
        std::memcpy(pszTo, pszFrom, nBytes);
    pszTo[nBytes] = '\0';
    return pszTo + nBytes;
}
