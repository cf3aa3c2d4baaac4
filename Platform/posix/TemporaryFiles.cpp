// The temporary folder, names in it that nobody else has, and searches in a folder.

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

/// A number that other threads and processes hardly have, so that the first name is nearly always free.
DWORD NextNumber()
{
    static std::atomic<std::uint64_t> nCounter{0};
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::uint64_t n =
        static_cast<std::uint64_t>(now.tv_sec) * 1000000000u + static_cast<std::uint64_t>(now.tv_nsec);
    n += (static_cast<std::uint64_t>(getpid()) << 40) + (++nCounter << 20);
    n = (n ^ n >> 31) * 0x9E3779B97F4A7C15u; // spreads what differs over all bits
    return static_cast<DWORD>(n >> 32) | 1;  // never 0, which means failure
}

char Folded(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether two characters of these lengths are the same but for the case of a to z. The second byte of a
/// character is no letter.
bool IsSame(const char* pA, int nA, const char* pB, int nB)
{
    return nA == nB &&
           (nA == 1 ? Folded(*pA) == Folded(*pB) : std::memcmp(pA, pB, static_cast<std::size_t>(nA)) == 0);
}

/// * stands for any characters, ? for one; case of the letters a to z does not matter.
bool Matches(const char* pszPattern, const char* pszName)
{
    const CharacterSet pattern(pszPattern), name(pszName);
    const char* pszStar = nullptr; // last star met, and the first character that it does not stand for
    const char* pszAfter = nullptr;
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
            pszName = pszAfter += name.Length(pszAfter);
        } else {
            return false;
        }
    }
    while (*pszPattern == '*')
        ++pszPattern;
    return *pszPattern == 0;
}

struct Search
{
    DIR* pFolder;
    char szGiven[PATH_MAX];  ///< the folder as the caller writes it, up to its last separator; may be empty
    char szFolder[PATH_MAX]; ///< the same with slashes
    char szPattern[MAX_PATH];
    char szUndotted[MAX_PATH]; ///< the pattern without ".*" at its end, which also stands for no ending

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

    /// Whether the caller's folder with this name behind it still leads to this name in this folder. Names
    /// may hold backslashes here: as separators they would lead a deletion out of the folder.
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

    /// The next name that matches; false: 18 there is none, or why the folder cannot be read.
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
    path.Text()[pszLast - path.Text()] = 0; // what is left is the folder
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
