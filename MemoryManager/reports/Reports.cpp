// The reports that a host keeps of its steps: names of processes, memory use, threads and mappings.
// Keys and texts are code page 932 bytes. Sums are computed in 64 bits and clamped to the 32 bits of a
// table's numbers.

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

/// A report text with its numbers and texts filled in, cut to what a table's name holds.
class FilledText
{
public:
    template <class... Values> explicit FilledText(const char* pszFormat, Values... values)
    {
        std::snprintf(m_szText, sizeof(m_szText), pszFormat, values...);
    }
    operator const char*() const { return m_szText; }

private:
    char m_szText[MM_TABLE_NAME];
};

/// The start of a text for which a table's name has room beside nUsed bytes, cut between two characters. Null
/// counts as the empty text.
FilledText CutText(const char* pszText, std::size_t nUsed)
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
    return FilledText("%.*s", static_cast<int>(nLength), nLength > 0 ? pszText : "");
}

/// A key that ends with a text of the host's, cut so that the rest of the key stays whole.
template <class... Values>
FilledText KeyWithText(const char* pszFormat, const char* pszText, Values... values)
{
    const FilledText without(pszFormat, values..., "");
    return FilledText(pszFormat, values..., static_cast<const char*>(CutText(pszText, std::strlen(without))));
}

/// The keys of an image's three entries. %d in them stands for the image's number.
struct ImageKeys
{
    const char* pszMemory;
    const char* pszState;
    const char* pszInfo;
};

FilledText StateText(const CImageObj& image)
{
    const T_ImageLrg_tag& info = image.m_ImgInfo;
    if (info.nBandLines < info.nHeight)
        return FilledText(kTextBanded, info.nBandLines);
    const bool bFile = image.m_pImageCtrl && HasFile(*image.m_pImageCtrl);
    return FilledText("%s", bFile ? kTextWholeFileMapped : kTextOnMemory);
}

FilledText InfoText(const T_ImageLrg_tag& info)
{
    return FilledText("GW=%d,GH=%d,W=%d,H=%d,P=%d,F=%d,R=%d", info.nAllocWidth, info.nAllocHeight,
                      info.nWidth, info.nHeight, info.nPixelBytes, info.nFsize, info.nRatio);
}

/// Writes the entries of a step's inputs, outputs or temporaries, and adds their memory to the total. False:
/// a null image, or an entry that could not be written.
bool WriteImages(CWorkTableList& table, const char* pszStep, const ImageKeys& keys, CImageObj** ppImages,
                 int nCount, std::int64_t& nTotal)
{
    for (int i = 0; i < nCount; ++i) {
        if (ppImages == nullptr || ppImages[i] == nullptr)
            return false;
        const CImageObj& image = *ppImages[i];
        const int nNumber = i + 1;
        nTotal += image.m_nAreaSize;
        if (!table.KeyWriteInt(pszStep, FilledText(keys.pszMemory, nNumber), image.m_nAreaSize) ||
            !table.KeyWriteString(pszStep, FilledText(keys.pszState, nNumber), StateText(image)) ||
            !table.KeyWriteString(pszStep, FilledText(keys.pszInfo, nNumber), InfoText(image.m_ImgInfo)))
            return false;
    }
    return true;
}

/// Switches a list on that is off, and counts its entries from 0.
void BeginList(CWorkTableList*& pList, LONG& nCount)
{
    if (pList != nullptr)
        return;
    pList = new (std::nothrow) CWorkTableList;
    if (pList != nullptr)
        nCount = 0;
}

/// Appends a list to a file, if the file's folder exists, and switches the list off.
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
    const FilledText key = KeyWithText(kTextThreadKey, pszWork, static_cast<int>(ms_ThreadListCount),
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
    const FilledText key = KeyWithText(kTextMapKey, pszName, static_cast<int>(ms_MapListCount));
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
