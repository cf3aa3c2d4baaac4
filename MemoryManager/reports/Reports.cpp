// The reports that a host keeps of its steps: names of processes, memory use, threads and mappings.
// Keys and texts are code page 932 bytes. Sums are made wide and clamped into what a table's number holds.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/base/Cp932.h"
#include "MemoryManager/base/ReportTexts.h"
#include "MemoryManager/image/Budget.h"
#include "MemoryManager/reports/ProcessNames.h"
#include "MemoryManager/stores/StoreLifetime.h"
#include "Platform/Platform.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

char g_szIpName[kProcessNameSize];

/// A report text with its numbers and texts filled in.
class Text
{
public:
    template <class... Values> explicit Text(const char* pszFormat, Values... values)
    {
        std::snprintf(m_szText, sizeof(m_szText), pszFormat, values...);
    }
    operator const char*() const { return m_szText; }

private:
    char m_szText[MM_TABLE_NAME];
};

/// A text as far as a table's name has room for it beside nUsed bytes, cut at a whole character; of null
/// none.
Text CutText(const char* pszText, std::size_t nUsed)
{
    std::size_t nLength = 0;
    while (pszText != nullptr && pszText[nLength] != '\0') {
        const bool bDouble =
            cp932::IsLeadByte(static_cast<unsigned char>(pszText[nLength])) && pszText[nLength + 1] != '\0';
        const std::size_t nNext = nLength + (bDouble ? 2 : 1);
        if (nUsed + nNext >= MM_TABLE_NAME)
            break;
        nLength = nNext;
    }
    return Text("%.*s", static_cast<int>(nLength), nLength > 0 ? pszText : "");
}

/// A key that ends with a text of the host's, which is cut where the key would become too long.
template <class... Values> Text KeyWithText(const char* pszFormat, const char* pszText, Values... values)
{
    const Text without(pszFormat, values..., "");
    return Text(pszFormat, values..., static_cast<const char*>(CutText(pszText, std::strlen(without))));
}

/// Keys of an image's entries; %d is its number.
struct ImageKeys
{
    const char* pszMemory;
    const char* pszState;
    const char* pszInfo;
};

Text StateText(const CImageObj& image)
{
    const T_ImageLrg_tag& info = image.m_ImgInfo;
    if (info.nBandLines < info.nHeight)
        return Text(kTextBanded, info.nBandLines);
    const bool bFile = image.m_pImageCtrl && HasFile(*image.m_pImageCtrl);
    return Text("%s", bFile ? kTextWholeFileMapped : kTextOnMemory);
}

Text InfoText(const T_ImageLrg_tag& info)
{
    return Text("GW=%d,GH=%d,W=%d,H=%d,P=%d,F=%d,R=%d", info.nAllocWidth, info.nAllocHeight, info.nWidth,
                info.nHeight, info.nPixelBytes, info.nFsize, info.nRatio);
}

/// Writes the entries of a step's images of one kind, and adds their memory to the total.
bool WriteImages(CWorkTableList& table, const char* pszStep, const ImageKeys& keys, CImageObj** ppImages,
                 int nCount, std::int64_t& nTotal)
{
    for (int i = 0; i < nCount; ++i) {
        if (ppImages == nullptr || ppImages[i] == nullptr)
            return false;
        const CImageObj& image = *ppImages[i];
        const int nNumber = i + 1;
        nTotal += image.m_nAreaSize;
        if (!table.KeyWriteInt(pszStep, Text(keys.pszMemory, nNumber), image.m_nAreaSize) ||
            !table.KeyWriteString(pszStep, Text(keys.pszState, nNumber), StateText(image)) ||
            !table.KeyWriteString(pszStep, Text(keys.pszInfo, nNumber), InfoText(image.m_ImgInfo)))
            return false;
    }
    return true;
}

/// Starts a list that is off, with no entries counted.
void BeginList(CWorkTableList*& pList, LONG& nCount)
{
    if (pList != nullptr)
        return;
    pList = new (std::nothrow) CWorkTableList;
    if (pList != nullptr)
        nCount = 0;
}

/// Writes a list to a file, where its folder exists, and switches it off.
void EndList(CWorkTableList*& pList, const char* pszPath)
{
    if (pList == nullptr)
        return;
    pList->FlushData(pszPath);
    delete pList;
    pList = nullptr;
}

} // namespace

CWorkTableList* CImageObj::ms_WorkList = nullptr;
CWorkTableList* CImageObj::ms_ThreadList = nullptr;
LONG CImageObj::ms_ThreadListCount = 0;
CWorkTableList* CImageObj::ms_MapList = nullptr;
LONG CImageObj::ms_MapListCount = 0;

char* CImageObj::GetIpName(int nIpNo)
{
    return std::strcpy(g_szIpName, FindProcessName(nIpNo));
}

int CImageObj::UseMemoryListImg(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut,
                                CImageObj** ppTmp)
{
    if (ms_WorkList == nullptr)
        return 1;
    if (pRequest == nullptr)
        return 0;
    const char* pszStep = FindProcessName(pRequest->nIpNo);
    std::int64_t nTotal = 0;
    const bool bWritten =
        WriteImages(*ms_WorkList, pszStep, {kTextInputMemory, kTextInputState, kTextInputInfo}, ppIn,
                    pRequest->nInCnt, nTotal) &&
        WriteImages(*ms_WorkList, pszStep, {kTextOutputMemory, kTextOutputState, kTextOutputInfo}, ppOut,
                    pRequest->nOutCnt, nTotal) &&
        WriteImages(*ms_WorkList, pszStep, {kTextTemporaryMemory, kTextTemporaryState, kTextTemporaryInfo},
                    ppTmp, pRequest->nTmpCnt, nTotal);
    return bWritten && UseMemoryListMax(pRequest->nIpNo, HeldWithinLong(nTotal)) > 0;
}

int CImageObj::UseMemoryListMax(LONG nIpNo, LONG nUsed)
{
    if (ms_WorkList == nullptr)
        return 1;
    const char* pszStep = FindProcessName(nIpNo);
    const std::int64_t nImages = std::int64_t{ms_WorkList->KeyReadInt(pszStep, kTextStepImages, 0)} + nUsed;
    if (!ms_WorkList->KeyWriteInt(pszStep, kTextStepImages, HeldWithinLong(nImages)) ||
        !ms_WorkList->KeyWriteInt(pszStep, kTextStepWork, ms_nWorkMemory) ||
        !ms_WorkList->KeyWriteInt(pszStep, kTextMemoryLeft, ms_FreeMemory))
        return 0;
    const LONG nStep = HeldWithinLong(nImages + ms_nWorkMemory);
    if (ms_WorkList->KeyReadInt(kTextMaximum, kTextMaximum, 0) >= nStep)
        return 1;
    return ms_WorkList->KeyWriteInt(kTextMaximum, kTextMaximum, nStep);
}

int CImageObj::ThreadList(LONG nIpNo, LONG bLeave, const char* pszWork)
{
    if (ms_ThreadList == nullptr)
        return 1;
    const Text key = KeyWithText(kTextThreadKey, pszWork, static_cast<int>(ms_ThreadListCount),
                                 static_cast<int>(GetCurrentThreadId()), FindProcessName(nIpNo));
    if (!ms_ThreadList->KeyWriteString(kTextThreadSection, key, bLeave ? "Leave" : "Enter"))
        return 0;
    ++ms_ThreadListCount;
    return 1;
}

int CImageObj::MapList(void* pAddress, const char* pszName)
{
    if (ms_MapList == nullptr)
        return 1;
    const Text key = KeyWithText(kTextMapKey, pszName, static_cast<int>(ms_MapListCount));
    const LONG nAddress = static_cast<LONG>(reinterpret_cast<std::uintptr_t>(pAddress));
    if (!ms_MapList->KeyWriteInt(kTextMapSection, key, nAddress % 16))
        return 0;
    ++ms_MapListCount;
    return 1;
}

void CImageObj::DbgCImgLogInit()
{
    BeginList(ms_ThreadList, ms_ThreadListCount);
    BeginList(ms_MapList, ms_MapListCount);
}

void CImageObj::DbgCImgLogEnd()
{
    EndList(ms_ThreadList, "..\\logdata\\trace\\debugthread.txt");
    EndList(ms_MapList, "..\\logdata\\trace\\debugmap.txt");
}
