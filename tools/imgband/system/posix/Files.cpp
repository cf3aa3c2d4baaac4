// Files on POSIX systems.

#include "system/Files.h"

#include "system/Errors.h"
#include "system/Leftovers.h"
#include "system/Paths.h"
#include "system/posix/InterruptsHeld.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace os {
namespace {

HANDLE HandleOf(int nFile)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(nFile));
}

int DescriptorOf(HANDLE hFile)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(hFile));
}

std::string FolderOf(const std::string& szPath)
{
    const std::string szFolder = TextOf(PathOf(szPath).parent_path());
    return szFolder.empty() ? "." : szFolder;
}

std::string ProvisionalName(const std::string& szFolder)
{
    return szFolder + "/" + UnusedName(kProvisionalBeginning);
}

void SyncFolder(const std::string& szFolder)
{
    const int nFolder = open(szFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (nFolder < 0)
        return;
    fsync(nFolder); // best effort: the file is complete under its name whatever this says
    close(nFolder);
}

std::string PathOfDescriptor(int nFile)
{
    return "/proc/self/fd/" + std::to_string(nFile);
}

/// Locks a provisional file, so that no clean-up takes it for a leftover. False: one was faster and has it.
/// On a file system without locks no clean-up removes anything.
bool IsKept(int nFile)
{
    struct stat status = {};
    return (flock(nFile, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) && fstat(nFile, &status) == 0 &&
           status.st_nlink > 0;
}

/// Creates a file that can get a name later; below 0 where the system cannot.
int OpenNameless(const std::string& szFolder)
{
    const int nFile = open(szFolder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (nFile < 0)
        return -1;
    flock(nFile, LOCK_EX | LOCK_NB); // for the moment in which it has a provisional name
    if (access(PathOfDescriptor(nFile).c_str(), F_OK) == 0)
        return nFile;
    close(nFile);
    return -1;
}

/// Gives a nameless file a name. False: there is a file of that name.
bool Link(int nFile, const std::string& szPath)
{
    if (linkat(AT_FDCWD, PathOfDescriptor(nFile).c_str(), AT_FDCWD, szPath.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return true;
    if (errno != EEXIST)
        ThrowLastError("link");
    return false;
}

} // namespace

File File::OpenForReading(const std::string& szPath, bool bAlsoWrite)
{
    // A named pipe without a writer would make the call wait for one.
    const int nFile = open(szPath.c_str(), (bAlsoWrite ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK);
    if (nFile < 0)
        ThrowLastError("open");
    return File(HandleOf(nFile));
}

File File::CreateProvisional(const std::string& szFolder)
{
    const InterruptsHeld held;
    const int nNameless = OpenNameless(szFolder);
    if (nNameless >= 0)
        return File(HandleOf(nNameless));
    for (;;) {
        std::string szPath = ProvisionalName(szFolder);
        const int nFile = open(szPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (nFile < 0 && errno != EEXIST)
            ThrowLastError("create");
        if (nFile >= 0 && IsKept(nFile)) {
            held.SetProvisional(szPath);
            return File(HandleOf(nFile), std::move(szPath));
        }
        if (nFile >= 0)
            close(nFile);
    }
}

File::File(File&& other) noexcept
    : m_hFile(std::exchange(other.m_hFile, nullptr)),
      m_szProvisional(std::exchange(other.m_szProvisional, {}))
{
}

File::~File()
{
    Discard();
    if (m_hFile)
        close(DescriptorOf(m_hFile));
}

void File::Discard() noexcept
{
    if (m_szProvisional.empty())
        return;
    const InterruptsHeld held;
    unlink(m_szProvisional.c_str());
    held.SetProvisional("");
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

void File::TakePermissions(const std::string& szFrom)
{
    struct stat status = {};
    if (stat(szFrom.c_str(), &status) == 0) [[maybe_unused]]
        const int nResult = fchmod(DescriptorOf(m_hFile), status.st_mode & 07777);
}

// A nameless file gets its name at once where that is free. A file that is to be replaced can only be renamed
// over; the provisional name before that is locked, like all of them.
void File::Publish(const std::string& szTarget)
{
    Flush();
    const InterruptsHeld held;
    if (!m_szProvisional.empty()) {
        Close();
        Rename(szTarget);
    } else if (!Link(DescriptorOf(m_hFile), szTarget)) {
        const std::string szFolder = FolderOf(szTarget);
        do
            m_szProvisional = ProvisionalName(szFolder);
        while (!Link(DescriptorOf(m_hFile), m_szProvisional));
        Rename(szTarget);
    }
    SyncFolder(FolderOf(szTarget));
}

void File::Rename(const std::string& szTarget)
{
    if (std::rename(m_szProvisional.c_str(), szTarget.c_str()) != 0)
        ThrowLastError("rename");
    m_szProvisional.clear();
    InterruptsHeld().SetProvisional("");
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

std::uintmax_t FileSizeLimit()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY ? limit.rlim_cur
                                                                                   : UINTMAX_MAX;
}

bool IsFileName(const std::string&)
{
    return true;
}

} // namespace os
