// The temporary folder, unused names in it, and searching a folder by a pattern.

#include "Platform/posix/PosixLayer.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

using namespace platform::posix;

namespace {

constexpr int kNameTries = 1000;

/// A number that other threads and processes are unlikely to get, so that the first name made of it is nearly
/// always free.
DWORD NextNumber()
{
    static std::atomic<std::uint64_t> nCounter{0};
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::uint64_t n =
        static_cast<std::uint64_t>(now.tv_sec) * 1000000000u + static_cast<std::uint64_t>(now.tv_nsec);
    n += (static_cast<std::uint64_t>(getpid()) << 40) + (++nCounter << 20);
    n = (n ^ n >> 31) * 0x9E3779B97F4A7C15u; // spreads every difference over all bits
    return static_cast<DWORD>(n >> 32) | 1;  // never 0, which would mean failure
}

char Folded(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether two characters of nA and nB bytes are the same, without regard to the case of a to z. The second
/// byte of a character is no letter.
bool IsSame(const char* pA, int nA, const char* pB, int nB)
{
    return nA == nB &&
           (nA == 1 ? Folded(*pA) == Folded(*pB) : std::memcmp(pA, pB, static_cast<std::size_t>(nA)) == 0);
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

DWORD GetTempPathA(DWORD nChars, LPSTR pszPath)
{
    const char* pszFolder = std::getenv("TMPDIR");
    if (!pszFolder || *pszFolder == 0)
        pszFolder = "/tmp";
    const NativePath folder(pszFolder);
    if (!folder.IsValid())
        return 0;
    const std::size_t nLength = std::strlen(folder.Text());
    const bool bSlash = folder.EndsInSlash();
    const std::size_t nWanted = nLength + (bSlash ? 0 : 1);
    if (nWanted >= nChars)
        return static_cast<DWORD>(nWanted + 1); // with the terminator
    std::memcpy(pszPath, folder.Text(), nLength);
    pszPath[nLength] = bSlash ? 0 : '/';
    pszPath[nWanted] = 0;
    return static_cast<DWORD>(nWanted);
}

DWORD GetTempFileNameA(LPCSTR pszFolder, LPCSTR pszPrefix, DWORD nUnique, LPSTR pszName)
{
    if (!pszFolder || !pszPrefix || nUnique != 0 || !pszName)
        return Fail(ERROR_INVALID_PARAMETER);
    if (*pszFolder == 0)
        return Fail(ERROR_PATH_NOT_FOUND);
    const NativePath folder(pszFolder);
    if (!folder.IsValid())
        return 0;
    for (int nTry = 0; nTry < kNameTries; ++nTry) {
        const DWORD nNumber = NextNumber();
        char szName[MAX_PATH];
        const int nLength =
            std::snprintf(szName, sizeof szName, "%s%s%.3s%04X.tmp", folder.Text(),
                          folder.EndsInSlash() ? "" : "/", pszPrefix, static_cast<unsigned>(nNumber));
        if (nLength < 0 || nLength >= MAX_PATH)
            return Fail(ERROR_FILENAME_EXCED_RANGE);
        const NativePath path(szName);
        if (OpenDescriptor(path.Text(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW)) {
            std::memcpy(pszName, szName, static_cast<std::size_t>(nLength) + 1);
            return nNumber;
        }
        if (errno != EEXIST)
            return FailErrno();
    }
    return Fail(ERROR_FILE_EXISTS);
}

HANDLE FindFirstFileA(LPCSTR pszPattern, WIN32_FIND_DATAA* pData)
{
    NativePath path(pszPattern);
    if (!path.IsValid())
        return INVALID_HANDLE_VALUE;
    char* pszSlash = std::strrchr(path.Text(), '/');
    const char* pszLast = pszSlash ? pszSlash + 1 : path.Text();
    if (std::strlen(pszLast) >= MAX_PATH) {
        Fail(ERROR_FILENAME_EXCED_RANGE);
        return INVALID_HANDLE_VALUE;
    }
    char szLast[MAX_PATH];
    std::strcpy(szLast, pszLast);
    path.Text()[pszLast - path.Text()] = 0; // leaves the folder
    DIR* pFolder = opendir(pszSlash ? path.Text() : ".");
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
