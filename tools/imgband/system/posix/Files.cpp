// Files on POSIX systems.

#include "system/Files.h"

#include "system/Errors.h"
#include "system/Paths.h"
#include "system/posix/InterruptsHeld.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include <fcntl.h>
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
    held.SetProvisional(szPath);
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
    held.SetProvisional("");
    SyncFolderOf(szTarget);
}

void Discard(const std::string& szProvisional) noexcept
{
    const InterruptsHeld held;
    unlink(szProvisional.c_str());
    held.SetProvisional("");
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
