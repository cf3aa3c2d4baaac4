// What the tool asks about its process and surroundings on POSIX systems.

#include "system/Files.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace os {
namespace {

/// A field of the process's status; below 0 when it is not there.
std::int64_t BytesOf(const char* pszStatus, const char* pszField)
{
    const char* pszFound = std::strstr(pszStatus, pszField);
    return pszFound ? std::int64_t{1024} * std::atoll(pszFound + std::strlen(pszField)) : -1;
}

} // namespace

std::uintmax_t FileSizeLimit()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY ? limit.rlim_cur
                                                                                   : UINTMAX_MAX;
}

std::optional<std::string> LibraryFolder(const std::string& szFolder)
{
    return szFolder;
}

std::string TemporaryFolder()
{
    const char* pszFolder = std::getenv("TMPDIR");
    return pszFolder && *pszFolder ? pszFolder : "/tmp";
}

bool SetTemporaryFolder(const std::string& szFolder)
{
    return setenv("TMPDIR", szFolder.c_str(), 1) == 0;
}

std::string RuntimeFolder()
{
    const char* pszOwn = std::getenv("XDG_RUNTIME_DIR");
    for (const char* pszFolder : {pszOwn ? pszOwn : "", "/dev/shm"})
        if (access(pszFolder, W_OK | X_OK) == 0)
            return pszFolder;
    return TemporaryFolder();
}

void Print(std::FILE* pStream, const std::string& szText)
{
    std::fputs(szText.c_str(), pStream);
}

bool IsTerminal(std::FILE* pStream)
{
    return isatty(fileno(pStream)) == 1;
}

int ProcessorCount()
{
    cpu_set_t processors;
    if (sched_getaffinity(0, sizeof processors, &processors) == 0)
        return std::max(CPU_COUNT(&processors), 1);
    return 1;
}

int ProcessNumber()
{
    return getpid();
}

bool IsRunning(int nProcess)
{
    return kill(nProcess, 0) == 0 || errno == EPERM;
}

ResidentMemory Resident() noexcept
{
    // Open for the process's life: a thread that opened it each time could be given a number that is about
    // to be closed a second time, as happens after a failed mapping.
    static const int nFile = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    char szStatus[4096];
    const ssize_t nRead = pread(nFile, szStatus, sizeof szStatus - 1, 0);
    if (nRead <= 0)
        return {};
    szStatus[nRead] = 0;
    const std::int64_t nAnonymous = BytesOf(szStatus, "RssAnon:");
    const std::int64_t nFiles = BytesOf(szStatus, "RssFile:");
    const std::int64_t nShared = BytesOf(szStatus, "RssShmem:");
    return {nAnonymous, nFiles < 0 || nShared < 0 ? -1 : nFiles + nShared};
}

} // namespace os
