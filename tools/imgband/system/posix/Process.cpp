// The tool's own process on POSIX systems.

#include "system/Process.h"

#include "system/posix/InterruptsHeld.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sched.h>
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

void PrepareProcess()
{
    int nFile;
    do
        nFile = open("/dev/null", O_RDWR);
    while (nFile >= 0 && nFile <= 2);
    if (nFile > 2)
        close(nFile);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

std::vector<std::string> Arguments(int nArguments, char** ppArguments)
{
    return {ppArguments + std::min(nArguments, 1), ppArguments + nArguments};
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

std::jthread StartThread(std::function<void(std::stop_token)> fnRun)
{
    const InterruptsHeld held; // a thread begins with the mask of its maker
    return std::jthread(std::move(fnRun));
}

} // namespace os
