// File descriptors: opening and closing them, and the handles that stand for them.

#include "Platform/posix/PosixLayer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Files that are created here hold image data and reports about it: only their owner may read them.
constexpr mode_t kOwnerOnly = 0600;

} // namespace

namespace platform::posix {

Descriptor::~Descriptor()
{
    const int nErrno = errno;
    if (m_nDescriptor >= 0)
        close(m_nDescriptor);
    errno = nErrno;
}

Descriptor OpenDescriptor(const char* pszPath, int nFlags)
{
    Descriptor file(Uninterrupted([&] { return open(pszPath, nFlags | O_CLOEXEC, kOwnerOnly); }));
    if (file && file.Get() < kFirstDescriptor)
        return Descriptor(fcntl(file.Get(), F_DUPFD_CLOEXEC, kFirstDescriptor));
    return file;
}

Descriptor OpenUnlinked(const char* pszPath)
{
    char szPath[PATH_MAX];
    if (std::snprintf(szPath, sizeof szPath, "%s~", pszPath) >= static_cast<int>(sizeof szPath)) {
        errno = ENAMETOOLONG;
        return Descriptor();
    }
    // A file of this name was left by a process that was killed between the next two calls. No living process
    // is between them, since this one holds the place holder's lock.
    unlink(szPath);
    Descriptor data = OpenDescriptor(szPath, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW);
    if (data)
        unlink(szPath);
    return data;
}

int DescriptorOf(HANDLE hFile)
{
    const auto nValue = reinterpret_cast<std::intptr_t>(hFile);
    return nValue > 0 && nValue <= INT_MAX ? static_cast<int>(nValue) : -1;
}

HANDLE HandleOf(int nDescriptor)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(nDescriptor));
}

} // namespace platform::posix
