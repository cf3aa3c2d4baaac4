// The life of a table, and its named sections and keys: adding, finding by hash and name, reading and
// writing. A slot is counted only when all of its parts exist, so that a failed addition leaves the table as
// it was.

#include "MemoryManager/CWorkTableList.h"

#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace {

/// Makes room for one more element, which is zero-filled. False: no memory, and the array is as it was.
template <class Element> bool AddSlot(Element*& pArray, int nCount, int& nMax)
{
    if (nCount < nMax)
        return true;
    const SIZE_T nBytes = sizeof(Element) * (static_cast<SIZE_T>(nMax) + 1);
    void* pGrown = pArray ? LocalReAlloc(pArray, nBytes, LMEM_MOVEABLE) : LocalAlloc(LMEM_FIXED, nBytes);
    if (!pGrown)
        return false;
    pArray = static_cast<Element*>(pGrown);
    pArray[nMax++] = Element{};
    return true;
}

char* NewText(const char* pszText)
{
    const SIZE_T nBytes = std::strlen(pszText) + 1;
    void* pText = LocalAlloc(LMEM_FIXED, nBytes);
    return pText ? static_cast<char*>(std::memcpy(pText, pszText, nBytes)) : nullptr;
}

void CutName(char (&szName)[MM_TABLE_NAME], const char* pszName)
{
    std::strncpy(szName, pszName, MM_TABLE_NAME - 1);
    szName[MM_TABLE_NAME - 1] = '\0';
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// The number at the start of a text: 0 when there is none, the nearest that fits for one that is too large.
int NumberAt(const char* pszText)
{
    using Int = std::numeric_limits<int>;
    return static_cast<int>(
        std::clamp<long long>(std::strtoll(pszText, nullptr, 10), Int::min(), Int::max()));
}

void FreeKeys(_SECTION& section)
{
    for (int i = 0; i < section.nKeyCnt; ++i)
        LocalFree(section.pKey[i].pszValue);
    LocalFree(std::exchange(section.pKey, nullptr));
    section.nKeyCnt = section.nKeyMax = 0;
}

} // namespace

CWorkTableList::CWorkTableList()
    : m_pSection(nullptr), m_nSectionCnt(0), m_nSectionMax(0), m_pWorkMem(nullptr), m_nTotalSize(0)
{
}

CWorkTableList::CWorkTableList(const CWorkTableList& other) = default;
CWorkTableList& CWorkTableList::operator=(const CWorkTableList& other) = default;

CWorkTableList::~CWorkTableList()
{
    Destroy();
}

int CWorkTableList::KeyReadInt(const char* pszSection, const char* pszKey, int nDefault)
{
    const int nSection = FindSection(pszSection);
    if (nSection < 0)
        return nDefault;
    const int nKey = FindKey(&m_pSection[nSection], pszKey);
    const char* pszValue = nKey < 0 ? nullptr : m_pSection[nSection].pKey[nKey].pszValue;
    if (!pszValue)
        return nDefault;
    while (IsBlank(*pszValue))
        ++pszValue;
    return NumberAt(*pszValue == '"' ? pszValue + 1 : pszValue); // a closing quote ends the number
}

int CWorkTableList::KeyWriteInt(const char* pszSection, const char* pszKey, int nValue)
{
    char szValue[16];
    std::snprintf(szValue, sizeof(szValue), "%d", nValue);
    return KeyWriteData(pszSection, pszKey, szValue);
}

int CWorkTableList::KeyWriteString(const char* pszSection, const char* pszKey, const char* pszValue)
{
    return KeyWriteData(pszSection, pszKey, pszValue ? pszValue : "");
}

void CWorkTableList::List_Free()
{
    if (!m_pSection)
        return;
    std::for_each_n(m_pSection, m_nSectionCnt, FreeKeys);
    LocalFree(std::exchange(m_pSection, nullptr));
    m_nSectionCnt = m_nSectionMax = 0;
    FreeMemoryBlock(std::exchange(m_pWorkMem, nullptr));
    m_nTotalSize = 0;
}

void CWorkTableList::Destroy()
{
    List_Free();
}

int CWorkTableList::AddSection(const char* pszName)
{
    if (!pszName || !AddSlot(m_pSection, m_nSectionCnt, m_nSectionMax))
        return 0;
    _SECTION& section = m_pSection[m_nSectionCnt++];
    CutName(section.szName, pszName);
    Trim(section.szName);
    section.nHash = str2hash(section.szName);
    return 1;
}

int CWorkTableList::AddSection(unsigned char** ppBuf)
{
    if (!ppBuf || !AddSlot(m_pSection, m_nSectionCnt, m_nSectionMax))
        return 0;
    m_pSection[m_nSectionCnt++].ppBuf = ppBuf;
    return 1;
}

int CWorkTableList::FindSection(const char* pszName)
{
    if (!m_pSection || !pszName)
        return -1;
    const int nHash = str2hash(pszName);
    for (int i = 0; i < m_nSectionCnt; ++i)
        if (m_pSection[i].nHash == nHash && lstrcmpiA(m_pSection[i].szName, pszName) == 0)
            return i;
    return -1;
}

int CWorkTableList::FindSection(unsigned char** ppBuf)
{
    for (int i = 0; i < m_nSectionCnt; ++i)
        if (m_pSection[i].ppBuf == ppBuf)
            return i;
    return -1;
}

int CWorkTableList::AddKey(_SECTION* pSection, const char* pszName, const char* pszValue)
{
    if (!pszName || *pszName == '\0' || !pszValue)
        return 0;
    if (!AddSlot(pSection->pKey, pSection->nKeyCnt, pSection->nKeyMax))
        return 0;
    char* pszCopy = NewText(pszValue);
    if (!pszCopy)
        return 0;
    _KEY& key = pSection->pKey[pSection->nKeyCnt++];
    CutName(key.szName, pszName);
    Trim(key.szName);
    key.pszValue = pszCopy;
    key.nHash = str2hash(key.szName);
    return 1;
}

int CWorkTableList::FindKey(_SECTION* pSection, const char* pszName)
{
    if (!pSection->pKey || !pszName || *pszName == '\0')
        return -1;
    const int nHash = str2hash(pszName);
    for (int i = 0; i < pSection->nKeyCnt; ++i)
        if (pSection->pKey[i].nHash == nHash && lstrcmpiA(pSection->pKey[i].szName, pszName) == 0)
            return i;
    return -1;
}

int CWorkTableList::KeyWriteData(const char* pszSection, const char* pszKey, const char* pszValue)
{
    if (!pszSection)
        return 0;
    int nSection = FindSection(pszSection);
    if (nSection < 0) {
        if (!AddSection(pszSection))
            return 0;
        nSection = m_nSectionCnt - 1;
    }
    _SECTION& section = m_pSection[nSection];
    if (!pszKey) {
        FreeKeys(section);
        return 1;
    }
    const int nKey = FindKey(&section, pszKey);
    if (nKey < 0)
        return AddKey(&section, pszKey, pszValue);

    _KEY& key = section.pKey[nKey];
    LocalFree(std::exchange(key.pszValue, nullptr));
    if (!pszValue) {
        key.szName[0] = '\0';
        return 1;
    }
    key.pszValue = NewText(pszValue);
    return key.pszValue ? 1 : 0;
}

int CWorkTableList::Trim(char* pszText)
{
    const char* pFirst = pszText;
    while (IsBlank(*pFirst))
        ++pFirst;
    const char* pEnd = pFirst + std::strlen(pFirst);
    while (pEnd > pFirst && IsBlank(pEnd[-1]))
        --pEnd;
    std::memmove(pszText, pFirst, static_cast<std::size_t>(pEnd - pFirst));
    pszText[pEnd - pFirst] = '\0';
    return 1;
}

int CWorkTableList::str2hash(const char* pszText)
{
    std::uint32_t nHash = 0;
    for (; *pszText != '\0'; ++pszText) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): a character counts as a signed one on every target
        const int c = static_cast<signed char>(*pszText);
        nHash = 2 * nHash + static_cast<std::uint32_t>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
    }
    return static_cast<int>(nHash);
}
