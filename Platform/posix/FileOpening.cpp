// Opening, closing and deleting files; who may hold a file at the same time, and files that go with their
// handle.
//
// Sharing is a lock on the open file: exclusive for a file opened without sharing, shared for the others, and
// a deletion takes it exclusively. A lock belongs to the file that was opened, while a deletion goes by name:
// after every lock, path and descriptor are compared, and when they part, the work starts again.
//
// A file that is deleted on close has two sides: its data, which has no name, and an empty place holder of
// its name, locked for as long as the handle is open. Whatever ends the process, the data goes with it; the
// name alone may stay, and whoever meets it without a lock may delete it.

#include "Platform/posix/PosixLayer.h"

#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform::posix;

namespace {

/// What is created here is image data and reports about it: the owner's alone.
constexpr mode_t kOwnerOnly = 0600;

/// A deletion holds the lock for its moment only, so an opening that meets a lock tries again for a while
/// before it believes that the file is held.
constexpr int kOpenTries = 25;
constexpr DWORD kOpenPauseMs = 4;
constexpr int kLostNames = 1000; // in a row, each within microseconds: a clean-up that never pauses

/// The name of a file that is deleted on close.
struct PlaceHolder
{
    int nDescriptor;   ///< holds the lock
    std::string sPath; ///< from the root, so that it is found again from any current folder
};

Registry<int, PlaceHolder>& PlaceHolders()
{
    static Immortal<Registry<int, PlaceHolder>> placeHolders;
    return placeHolders.value;
}

/// False: held by somebody else in a way that excludes this one. A file system without locks excludes nobody.
bool Lock(const Descriptor& file, int nLock)
{
    return flock(file.Get(), nLock | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

/// Whether the path still leads to the file that was opened.
bool IsNamed(const char* pszPath, const struct stat& opened)
{
    struct stat named = {};
    return stat(pszPath, &named) == 0 && named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

bool IsNamed(const char* pszPath, int nDescriptor)
{
    struct stat opened = {};
    return fstat(nDescriptor, &opened) == 0 && IsNamed(pszPath, opened);
}

/// Opens and locks the file of that name, whatever clean-ups do meanwhile. Empty: the last error tells why.
Descriptor OpenLocked(const char* pszPath, int nFlags, int nLock, struct stat* pOpened)
{
    for (int nHeld = 0, nLost = 0; nHeld < kOpenTries && nLost < kLostNames;) {
        Descriptor file = OpenDescriptor(pszPath, nFlags);
        if (file && !Lock(file, nLock)) {
            ++nHeld;
            Sleep(kOpenPauseMs);
            continue;
        }
        if (!file || fstat(file.Get(), pOpened) != 0) {
            FailErrno();
            return Descriptor();
        }
        if (IsNamed(pszPath, *pOpened))
            return file;
        ++nLost;
        nHeld = 0; // that was a clean-up, not somebody who keeps the file
    }
    Fail(ERROR_SHARING_VIOLATION);
    return Descriptor();
}

std::string FolderOf(const std::string& sPath)
{
    const std::size_t nSlash = sPath.rfind('/');
    return nSlash == std::string::npos ? "." : sPath.substr(0, nSlash + 1);
}

std::string FromRoot(const char* pszPath)
{
    char szCurrent[PATH_MAX];
    if (pszPath[0] == '/' || !getcwd(szCurrent, sizeof szCurrent))
        return pszPath;
    return std::string(szCurrent) + "/" + pszPath;
}

/// The data of a file that is deleted on close. Empty: errno tells why.
Descriptor OpenNameless(const std::string& sPath)
{
    Descriptor data = OpenDescriptor(FolderOf(sPath).c_str(), O_TMPFILE | O_RDWR);
    // EISDIR comes from systems that do not know the flag.
    return !data && (errno == EOPNOTSUPP || errno == EISDIR) ? OpenUnlinked(sPath.c_str()) : std::move(data);
}

/// The handle of a file that is deleted on close, over its locked and empty place holder.
HANDLE OpenDeletedOnClose(const char* pszPath, Descriptor placeHolder)
try {
    std::string sPath = FromRoot(pszPath);
    Descriptor data = OpenNameless(sPath);
    if (!data) {
        FailErrno();
        return INVALID_HANDLE_VALUE;
    }
    if (!PlaceHolders().Add(data.Get(), {placeHolder.Get(), std::move(sPath)})) {
        Fail(ERROR_NOT_ENOUGH_MEMORY);
        return INVALID_HANDLE_VALUE;
    }
    placeHolder.Release();
    return HandleOf(data.Release());
} catch (const std::bad_alloc&) {
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

/// The flags of open(2) for what the caller wants, or -1 where this layer does not offer it.
int OpenFlags(DWORD nAccess, DWORD nShare, DWORD nCreation, DWORD nFlags)
{
    const bool bRead = nAccess & GENERIC_READ;
    const bool bWrite = nAccess & GENERIC_WRITE;
    const bool bDeleted = nFlags & FILE_FLAG_DELETE_ON_CLOSE;
    const bool bNew = nCreation == CREATE_NEW || nCreation == CREATE_ALWAYS;
    const bool bCreates = bNew || nCreation == OPEN_ALWAYS;
    if ((nAccess & ~(GENERIC_READ | GENERIC_WRITE)) != 0 || (!bRead && !bWrite))
        return -1;
    if (nShare != 0 && nShare != (FILE_SHARE_READ | FILE_SHARE_WRITE))
        return -1;
    if (nFlags & ~(FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE))
        return -1;
    if ((!bCreates && nCreation != OPEN_EXISTING) || (bCreates && !bWrite))
        return -1;
    if (bDeleted && (!bNew || !bRead || nShare != 0))
        return -1; // without a name there is nothing to open again or to share
    // A link somebody laid where a new file is wanted is not followed.
    const int nCreate = O_CREAT | O_NOFOLLOW | (nCreation == CREATE_NEW ? O_EXCL : 0);
    return (bRead && bWrite ? O_RDWR : bWrite ? O_WRONLY : O_RDONLY) | (bCreates ? nCreate : 0);
}

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
    unlink(szPath); // of a process killed between the next two calls: the place holder's lock says so
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

HANDLE CreateFileA(LPCSTR pszPath, DWORD nAccess, DWORD nShare, void* pSecurity, DWORD nCreation,
                   DWORD nFlags, HANDLE hTemplate)
{
    const int nOpenFlags = OpenFlags(nAccess, nShare, nCreation, nFlags);
    if (pSecurity || hTemplate || nOpenFlags == -1) {
        Fail(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const NativePath path(pszPath);
    struct stat opened = {};
    Descriptor file;
    if (path.IsValid())
        file = OpenLocked(path.Text(), nOpenFlags, nShare == 0 ? LOCK_EX : LOCK_SH, &opened);
    if (!file)
        return INVALID_HANDLE_VALUE;
    if (S_ISDIR(opened.st_mode)) {
        Fail(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    // Emptied under the lock, not by the opening. A file that is empty already is left alone: having been
    // truncated, ext4 would write all its data to the disk when it is closed.
    if (nCreation == CREATE_ALWAYS && opened.st_size != 0 &&
        Uninterrupted([&] { return ftruncate(file.Get(), 0); }) != 0) {
        FailErrno();
        return INVALID_HANDLE_VALUE;
    }
    if (nFlags & FILE_FLAG_DELETE_ON_CLOSE)
        return OpenDeletedOnClose(path.Text(), std::move(file));
    return HandleOf(file.Release());
}

BOOL CloseHandle(HANDLE hObject)
{
    const int nDescriptor = DescriptorOf(hObject);
    Mappings().Take(nDescriptor);
    if (const auto placeHolder = PlaceHolders().Take(nDescriptor)) {
        const Descriptor lock(placeHolder->nDescriptor);
        if (IsNamed(placeHolder->sPath.c_str(), lock.Get()))
            unlink(placeHolder->sPath.c_str());
    }
    // Not repeated: an interrupted close has closed.
    return close(nDescriptor) == 0 || errno == EINTR || FailErrno();
}

BOOL DeleteFileA(LPCSTR pszPath)
{
    const NativePath path(pszPath);
    if (!path.IsValid())
        return 0;
    for (;;) {
        const Descriptor file = OpenDescriptor(path.Text(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        struct stat opened = {};
        if (!file || fstat(file.Get(), &opened) != 0)
            return FailErrno();
        if (S_ISDIR(opened.st_mode))
            return Fail(ERROR_ACCESS_DENIED);
        if (!Lock(file, LOCK_EX))
            return Fail(ERROR_SHARING_VIOLATION);
        if (IsNamed(path.Text(), opened))
            return unlink(path.Text()) == 0 || FailErrno();
    }
}
