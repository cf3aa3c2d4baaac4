// Files, interrupts and threads on POSIX systems.

#include "system/Files.h"

#include "system/Paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace os {
namespace {

// The last one comes from a mapped picture whose file became shorter, or could not be read.
constexpr int kInterrupts[] = {SIGHUP, SIGINT, SIGTERM, SIGBUS};
constexpr std::size_t kMostArguments = 8;

// What the interrupt handler uses. Everything here is complete before the handler can see it.
std::string g_szProvisional;
std::vector<std::string> g_arguments; // program, command, status, further arguments
std::array<char*, kMostArguments + 1> g_argv;
char g_szStatus[4];

[[noreturn]] void ThrowLastError(const char* pszCall)
{
    throw std::system_error(errno, std::system_category(), pszCall);
}

HANDLE HandleOf(int nFile)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(nFile));
}

int DescriptorOf(HANDLE hFile)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(hFile));
}

sigset_t InterruptSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int nSignal : kInterrupts)
        sigaddset(&set, nSignal);
    return set;
}

/// Interrupts wait for the end of the scope, so that the handler never sees half a change.
class InterruptsHeld
{
public:
    InterruptsHeld()
    {
        const sigset_t set = InterruptSet();
        pthread_sigmask(SIG_BLOCK, &set, &m_before);
    }
    ~InterruptsHeld() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    InterruptsHeld(const InterruptsHeld&) = delete;
    InterruptsHeld& operator=(const InterruptsHeld&) = delete;

private:
    sigset_t m_before;
};

/// The current folder is the same at the end of the scope, even if it has another name then.
class FolderKept
{
public:
    FolderKept() : m_nFolder(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC))
    {
        if (m_nFolder < 0)
            ThrowLastError("open");
    }
    ~FolderKept()
    {
        [[maybe_unused]] const int nResult = fchdir(m_nFolder); // it was entered before
        close(m_nFolder);
    }
    FolderKept(const FolderKept&) = delete;
    FolderKept& operator=(const FolderKept&) = delete;

private:
    int m_nFolder;
};

// Only calls that are allowed in a handler. The locks and data of the library's temporary files end with
// this program's image; their empty names are what the new image cleans up.
void OnInterrupt(int nSignal)
{
    if (!g_szProvisional.empty())
        unlink(g_szProvisional.c_str());
    const int nStatus = 128 + nSignal;
    g_szStatus[0] = static_cast<char>('0' + nStatus / 100);
    g_szStatus[1] = static_cast<char>('0' + nStatus / 10 % 10);
    g_szStatus[2] = static_cast<char>('0' + nStatus % 10);
    execv("/proc/self/exe", g_argv.data());
    _exit(nStatus);
}

void SyncFolderOf(const std::string& szPath)
{
    const std::string szFolder = TextOf(PathOf(szPath).parent_path());
    const int nFolder = open(szFolder.empty() ? "." : szFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (nFolder < 0)
        return;
    fsync(nFolder); // best effort: the file is complete under its name whatever this says
    close(nFolder);
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

void RestartOnInterrupt(const std::string& szCommand, const std::vector<std::string>& arguments)
{
    const InterruptsHeld held;
    g_arguments = {"imgband", szCommand, ""};
    g_arguments.insert(g_arguments.end(), arguments.begin(), arguments.end());
    g_argv.fill(nullptr);
    for (std::size_t i = 0; i < std::min(g_arguments.size(), kMostArguments); ++i)
        g_argv[i] = g_arguments[i].data();
    g_argv[2] = g_szStatus;

    struct sigaction action = {};
    action.sa_handler = OnInterrupt;
    action.sa_mask = InterruptSet();
    for (const int nSignal : kInterrupts) {
        struct sigaction before = {};
        sigaction(nSignal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) // whoever started us wants it ignored: nohup, a background job
            sigaction(nSignal, &action, nullptr);
    }
}

void SettleOutcome() {} // an interrupt stops the only thread that tells

File File::OpenForReading(const std::string& szPath, bool bAlsoWrite)
{
    // A named pipe without a writer would make the call wait for one.
    const int nFile = open(szPath.c_str(), (bAlsoWrite ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK);
    if (nFile < 0)
        ThrowLastError("open");
    return File(HandleOf(nFile));
}

File File::CreateProvisional(const std::string& szFolder, std::string& szPath)
{
    const InterruptsHeld held;
    int nFile;
    do {
        szPath = szFolder + "/" + UnusedName(".imgband-");
        nFile = open(szPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (nFile < 0 && errno == EEXIST);
    if (nFile < 0)
        ThrowLastError("create");
    g_szProvisional = szPath;
    return File(HandleOf(nFile));
}

File::File(File&& other) noexcept : m_hFile(std::exchange(other.m_hFile, nullptr)) {}

File::~File()
{
    if (m_hFile)
        close(DescriptorOf(m_hFile));
}

std::int64_t File::Size() const
{
    struct stat status = {};
    if (fstat(DescriptorOf(m_hFile), &status) != 0)
        ThrowLastError("fstat");
    return status.st_size;
}

std::size_t File::ReadAt(std::int64_t nOffset, void* pBuffer, std::size_t nBytes) const
{
    std::size_t nDone = 0;
    while (nDone < nBytes) {
        const ssize_t nRead = pread(DescriptorOf(m_hFile), static_cast<char*>(pBuffer) + nDone,
                                    nBytes - nDone, static_cast<off_t>(nOffset) + static_cast<off_t>(nDone));
        if (nRead < 0 && errno == EINTR)
            continue;
        if (nRead < 0)
            ThrowLastError("read");
        if (nRead == 0)
            break;
        nDone += static_cast<std::size_t>(nRead);
    }
    return nDone;
}

void File::Append(const void* pData, std::size_t nBytes)
{
    const char* pRest = static_cast<const char*>(pData);
    while (nBytes > 0) {
        const ssize_t nWritten = write(DescriptorOf(m_hFile), pRest, nBytes);
        if (nWritten < 0 && errno == EINTR)
            continue;
        if (nWritten < 0)
            ThrowLastError("write");
        pRest += nWritten;
        nBytes -= static_cast<std::size_t>(nWritten);
    }
}

void File::Flush()
{
    int nResult;
    do
        nResult = fsync(DescriptorOf(m_hFile));
    while (nResult != 0 && errno == EINTR);
    if (nResult != 0 && errno != EINVAL) // a file system without flushing
        ThrowLastError("fsync");
}

void File::Close()
{
    if (close(DescriptorOf(std::exchange(m_hFile, nullptr))) != 0 && errno != EINTR)
        ThrowLastError("close");
}

void Publish(const std::string& szProvisional, const std::string& szTarget)
{
    const InterruptsHeld held;
    if (std::rename(szProvisional.c_str(), szTarget.c_str()) != 0)
        ThrowLastError("rename");
    g_szProvisional.clear();
    SyncFolderOf(szTarget);
}

void Discard(const std::string& szProvisional) noexcept
{
    const InterruptsHeld held;
    unlink(szProvisional.c_str());
    g_szProvisional.clear();
}

bool MayWrite(const std::string& szPath)
{
    return access(szPath.c_str(), W_OK) == 0;
}

std::string RealPath(const std::string& szPath)
{
    return TextOf(std::filesystem::canonical(PathOf(szPath)));
}

std::uintmax_t FreeBytes(const std::string& szFolder)
{
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(PathOf(szFolder), error);
    return error ? UINTMAX_MAX : space.available;
}

bool IsFileName(const std::string&)
{
    return true;
}

void RunInFolder(const std::string& szFolder, const std::function<void()>& fnRun)
{
    const InterruptsHeld held;
    const FolderKept kept;
    if (chdir(szFolder.c_str()) != 0)
        ThrowLastError("chdir");
    fnRun();
}

std::jthread StartThread(std::function<void(std::stop_token)> fnRun)
{
    const InterruptsHeld held; // a thread begins with the mask of its maker
    return std::jthread(std::move(fnRun));
}

} // namespace os
