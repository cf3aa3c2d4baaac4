// Making folders, the space on their disks, and searching them by a pattern.

#include "Platform/posix/PosixLayer.h"

#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

using namespace platform::posix;

namespace {

/// Whether two characters of nA and nB bytes are the same, without regard to the case of a to z. The second
/// byte of a character is no letter.
bool IsSame(const char* pA, int nA, const char* pB, int nB)
{
    return nA == nB && (nA == 1 ? SmallLetter(*pA) == SmallLetter(*pB)
                                : std::memcmp(pA, pB, static_cast<std::size_t>(nA)) == 0);
}

/// Whether a name matches a pattern, in which * stands for any number of characters and ? for one. The case
/// of the letters a to z does not matter.
bool Matches(const char* pszPattern, const char* pszName)
{
    const CharacterSet pattern(pszPattern), name(pszName);
    const char* pszStar = nullptr;  // the last star met
    const char* pszAfter = nullptr; // the first character of the name that this star does not stand for
    while (*pszName) {
        const int nPattern = pattern.Length(pszPattern), nName = name.Length(pszName);
        if (*pszPattern == '*') {
            pszStar = pszPattern++;
            pszAfter = pszName;
        } else if (*pszPattern && (*pszPattern == '?' || IsSame(pszPattern, nPattern, pszName, nName))) {
            pszPattern += nPattern;
            pszName += nName;
        } else if (pszStar) {
            pszPattern = pszStar + 1;
            pszAfter += name.Length(pszAfter);
            pszName = pszAfter;
        } else {
            return false;
        }
    }
    while (*pszPattern == '*')
        ++pszPattern;
    return *pszPattern == 0;
}

/// An open search of FindFirstFileA; its address is the handle.
struct Search
{
    DIR* pFolder;
    char szGiven[PATH_MAX];  ///< the folder as the caller wrote it, with its last separator; may be empty
    char szFolder[PATH_MAX]; ///< the same with slashes
    char szPattern[MAX_PATH];
    char szUndotted[MAX_PATH]; ///< the pattern without a ".*" at its end, which names without a dot match too

    Search(DIR* pOpened, const char* pszGiven, const char* pszFolder, const char* pszPattern)
        : pFolder(pOpened), szGiven{}, szFolder{}, szPattern{}, szUndotted{}
    {
        std::strcpy(szFolder, pszFolder);
        std::memcpy(szGiven, pszGiven, std::strlen(pszFolder));
        const std::size_t nLength = std::strlen(pszPattern);
        std::memcpy(szPattern, pszPattern, nLength + 1);
        std::memcpy(szUndotted, pszPattern, nLength + 1);
        if (nLength >= 2 && std::strcmp(szUndotted + nLength - 2, ".*") == 0)
            szUndotted[nLength - 2] = 0;
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;
    ~Search() { closedir(pFolder); }

    /// Whether the caller's folder followed by this name is a path to the name in this folder. A name may
    /// contain backslashes, which a path takes for separators: a deletion would then go to another folder.
    bool IsExpressible(const char* pszName) const
    {
        char szPath[PATH_MAX];
        const int nLength = std::snprintf(szPath, sizeof szPath, "%s%s", szGiven, pszName);
        if (nLength < 0 || nLength >= PATH_MAX)
            return false;
        BackslashesToSlashes(szPath);
        const std::size_t nFolder = std::strlen(szFolder);
        return std::memcmp(szPath, szFolder, nFolder) == 0 && std::strcmp(szPath + nFolder, pszName) == 0;
    }

    /// Finds the next name that matches. False: 18 there is none, or the reason why the folder cannot be
    /// read.
    bool Next(WIN32_FIND_DATAA* pData)
    {
        for (;;) {
            errno = 0;
            const dirent* pEntry = readdir(pFolder);
            if (!pEntry)
                return errno == 0 ? Fail(ERROR_NO_MORE_FILES) : FailErrno();
            if (!Matches(szPattern, pEntry->d_name) && !Matches(szUndotted, pEntry->d_name))
                continue;
            if (!IsExpressible(pEntry->d_name))
                continue;
            std::snprintf(pData->cFileName, sizeof pData->cFileName, "%s", pEntry->d_name);
            return true;
        }
    }
};

} // namespace

BOOL CreateDirectoryA(LPCSTR pszPath, void* pSecurity)
{
    if (pSecurity)
        return Fail(ERROR_INVALID_PARAMETER);
    const NativePath path(pszPath);
    if (!path.IsValid())
        return 0;
    if (mkdir(path.Text(), 0777) == 0)
        return 1;
    switch (errno) {
    case EEXIST:
        return Fail(ERROR_ALREADY_EXISTS);
    case ENOENT:
        return Fail(ERROR_PATH_NOT_FOUND); // a folder that leads to it is missing
    default:
        return FailErrno();
    }
}

BOOL GetDiskFreeSpaceExA(LPCSTR pszFolder, ULARGE_INTEGER* pnCaller, ULARGE_INTEGER* pnTotal,
                         ULARGE_INTEGER* pnFree)
{
    const NativePath path(pszFolder);
    struct statvfs disk = {};
    if (!path.IsValid())
        return 0;
    if (Uninterrupted([&] { return statvfs(path.Text(), &disk); }) != 0)
        return FailErrno();
    const auto nBlock = static_cast<ULONGLONG>(disk.f_frsize);
    if (pnCaller)
        pnCaller->QuadPart = disk.f_bavail * nBlock;
    if (pnTotal)
        pnTotal->QuadPart = disk.f_blocks * nBlock;
    if (pnFree)
        pnFree->QuadPart = disk.f_bfree * nBlock;
    return 1;
}

HANDLE FindFirstFileA(LPCSTR pszPattern, WIN32_FIND_DATAA* pData)
{
    NativePath path(pszPattern);
    if (!path.IsValid())
        return INVALID_HANDLE_VALUE;
    char* pszSlash = std::strrchr(path.Text(), '/');
    char* pszLast = pszSlash ? pszSlash + 1 : path.Text();
    if (std::strlen(pszLast) >= MAX_PATH) {
        Fail(ERROR_FILENAME_EXCED_RANGE);
        return INVALID_HANDLE_VALUE;
    }
    char szLast[MAX_PATH];
    std::strcpy(szLast, pszLast);
    *pszLast = 0; // leaves the folder
    DIR* pFolder = nullptr;
    do
        pFolder = opendir(pszSlash ? path.Text() : ".");
    while (!pFolder && errno == EINTR);
    if (!pFolder) {
        Fail(errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorOf(errno));
        return INVALID_HANDLE_VALUE;
    }
    auto* pSearch = new (std::nothrow) Search(pFolder, pszPattern, path.Text(), szLast);
    if (!pSearch) {
        closedir(pFolder);
        Fail(ERROR_NOT_ENOUGH_MEMORY);
        return INVALID_HANDLE_VALUE;
    }
    if (!pSearch->Next(pData)) {
        delete pSearch;
        if (GetLastError() == ERROR_NO_MORE_FILES)
            Fail(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return pSearch;
}

BOOL FindNextFileA(HANDLE hFind, WIN32_FIND_DATAA* pData)
{
    return static_cast<Search*>(hFind)->Next(pData);
}

BOOL FindClose(HANDLE hFind)
{
    delete static_cast<Search*>(hFind);
    return 1;
}
