// The folder of the temporary files: finding it, and deleting what earlier runs left in it, once per process.
// The two text helpers ignore case; no operation of the library calls them.

#include "MemoryManager/CImageCtrl.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/LibraryLock.h"
#include "Platform/Platform.h"

#include <cctype>
#include <cstdio>

char CImageCtrl::ms_TempDirctoryName[261] = "";
int CImageCtrl::ms_ExecuteFlg = 0;

namespace {

constexpr DWORD kPathChars = 260;

volatile LONG s_lCleanTempFlg = 0; // 1 once CleanTempFolder has started

// False when folder and name together are too long for a path.
bool JoinPath(char (&szPath)[kPathChars], const char* pszFolder, const char* pszName)
{
    return std::snprintf(szPath, kPathChars, "%s%s", pszFolder, pszName) < static_cast<int>(kPathChars);
}

int Lower(char chByte)
{
    return std::tolower(static_cast<unsigned char>(chByte));
}

} // namespace

DWORD CImageCtrl::GetTempDirctoryName()
{
    if (ms_ExecuteFlg != 0)
        return MM_BAD_ARGUMENT;
    if (IsTempFolderKnown())
        return MM_SUCCESS;

    char szFolder[kPathChars + 1] = {};
    const DWORD nChars = GetTempPathA(kPathChars, szFolder);
    if (nChars == 0 || nChars >= kPathChars) // for a longer folder the system returns the length it needs
        return MM_BAD_ARGUMENT;

    const LibraryLock lock;
    if (ms_TempDirctoryName[0] == '\0') // set only once: stores read a known name without the lock
        std::snprintf(ms_TempDirctoryName, sizeof(ms_TempDirctoryName), "%s", szFolder);
    return MM_SUCCESS;
}

DWORD CImageCtrl::CleanTempFolder()
{
    if (InterlockedCompareExchange(&s_lCleanTempFlg, 1, 0) != 0)
        return MM_SUCCESS;
    const DWORD nResult = GetTempDirctoryName();
    if (nResult == MM_SUCCESS)
        RemoveTmpFiles();
    return nResult;
}

bool CImageCtrl::IsTempFolderKnown()
{
    const LibraryLock lock;
    return ms_TempDirctoryName[0] != '\0';
}

void CImageCtrl::RemoveTmpFiles()
{
    char szPath[kPathChars];
    if (!JoinPath(szPath, ms_TempDirctoryName, "LRG*.*"))
        return;
    WIN32_FIND_DATAA entry{};
    const HANDLE hFind = FindFirstFileA(szPath, &entry);
    if (hFind == INVALID_HANDLE_VALUE)
        return;
    do {
        if (JoinPath(szPath, ms_TempDirctoryName, entry.cFileName))
            DeleteFileA(szPath); // fails for folders and for files that a process still uses
    } while (FindNextFileA(hFind, &entry));
    FindClose(hFind);
}

char* CImageCtrl::strchri(const char* pszText, int nChar)
{
    const int nWanted = Lower(static_cast<char>(nChar));
    for (;; ++pszText) {
        if (Lower(*pszText) == nWanted)
            return const_cast<char*>(pszText);
        if (*pszText == '\0')
            return nullptr;
    }
}

int CImageCtrl::strncmpi(const char* pszA, const char* pszB, unsigned int nCount)
{
    for (; nCount > 0; --nCount, ++pszA, ++pszB) {
        const int nA = Lower(*pszA);
        const int nB = Lower(*pszB);
        if (nA != nB)
            return nA > nB ? 1 : -1;
        if (*pszA == '\0')
            return 0;
    }
    return 0;
}
