// The temporary folder, and creating files there under unused names.

#include "Platform/posix/PosixLayer.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
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

} // namespace

DWORD GetTempPathA(DWORD nChars, LPSTR pszPath)
try {
    const char* pszFolder = std::getenv("TMPDIR");
    if (!pszFolder || *pszFolder == 0)
        pszFolder = "/tmp";
    const NativePath folder(pszFolder);
    if (!folder.IsValid())
        return 0;
    const std::string szPath = FromRoot(folder.Text()) + (folder.EndsInSlash() ? "" : "/");
    if (szPath.size() >= nChars)
        return static_cast<DWORD>(szPath.size() + 1); // with the terminator
    std::memcpy(pszPath, szPath.c_str(), szPath.size() + 1);
    return static_cast<DWORD>(szPath.size());
} catch (const std::bad_alloc&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
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
