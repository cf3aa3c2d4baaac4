// Opening, closing and deleting files: who may have a file open at the same time, and files that are deleted
// with their handle.
//
// Sharing is a lock on the open file. Opening without sharing takes it exclusively, opening with sharing
// takes it shared, and a deletion takes it exclusively. The lock belongs to the file, but a deletion removes
// a name: by the time a lock is taken, the path may lead to another file. So path and descriptor are compared
// after every lock, and if they differ, the work starts again.
//
// A file that is deleted on close consists of two files: the data, which has no name, and an empty place
// holder with the name, which is locked for as long as the handle is open. However the process ends, its data
// is gone with it. The empty file may stay behind; since nobody locks it, the next clean-up deletes it.

#include "Platform/posix/PosixLayer.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform::posix;

namespace {

/// An opening that meets a lock tries again for a while before it takes the file to be held: the lock may be
/// that of a deletion, which is short.
constexpr int kOpenTries = 25;
constexpr DWORD kOpenPauseMs = 4;

/// An opening gives up when this many of its files in a row lost their names to clean-ups.
constexpr int kLostNames = 1000;

/// The name of a file that is deleted on close.
struct PlaceHolder
{
    int nDescriptor;    ///< the one that holds the lock
    std::string szPath; ///< from the root, so that a change of the current folder does not matter
};

Registry<int, PlaceHolder>& PlaceHolders()
{
    static Immortal<Registry<int, PlaceHolder>> placeHolders;
    return placeHolders.value;
}

/// Locks an open file. False: somebody else holds a lock that excludes this one. On a file system without
/// locks nobody is excluded.
bool Lock(const Descriptor& file, int nLock)
{
    return Uninterrupted([&] { return flock(file.Get(), nLock | LOCK_NB); }) == 0 || errno != EWOULDBLOCK;
}

/// Whether the path still leads to the file that has been opened.
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

/// Opens and locks the file of a name, even while clean-ups delete it. Empty: the last error tells why.
/// @param pOpened  out: the file's status
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
        nHeld = 0; // the lock was that of a clean-up, and nobody holds the file
    }
    Fail(ERROR_SHARING_VIOLATION);
    return Descriptor();
}

std::string FolderOf(const std::string& szPath)
{
    const std::size_t nSlash = szPath.rfind('/');
    return nSlash == std::string::npos ? "." : szPath.substr(0, nSlash + 1);
}

/// Makes the nameless data of a file that is deleted on close. Empty: errno tells why.
Descriptor OpenNameless(const std::string& szPath)
{
    Descriptor data = OpenDescriptor(FolderOf(szPath).c_str(), O_TMPFILE | O_RDWR);
    // Systems that do not know the flag answer with EISDIR.
    return !data && (errno == EOPNOTSUPP || errno == EISDIR) ? OpenUnlinked(szPath.c_str()) : std::move(data);
}

/// Makes the data for a locked and empty place holder, and returns the handle of the two.
HANDLE OpenDeletedOnClose(const char* pszPath, Descriptor placeHolder)
try {
    std::string szPath = FromRoot(pszPath);
    Descriptor data = OpenNameless(szPath);
    if (!data) {
        FailErrno();
        return INVALID_HANDLE_VALUE;
    }
    if (!PlaceHolders().Add(data.Get(), {placeHolder.Get(), std::move(szPath)})) {
        Fail(ERROR_NOT_ENOUGH_MEMORY);
        return INVALID_HANDLE_VALUE;
    }
    placeHolder.Release();
    return HandleOf(data.Release());
} catch (const std::bad_alloc&) {
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

/// The flags of open(2) for what the caller asks for; -1: this layer does not offer it.
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
        return -1; // data without a name can be neither opened again nor shared
    // A link at the path of a new file is not followed: somebody else may have put it there.
    const int nCreate = O_CREAT | O_NOFOLLOW | (nCreation == CREATE_NEW ? O_EXCL : 0);
    return (bRead && bWrite ? O_RDWR : bWrite ? O_WRONLY : O_RDONLY) | (bCreates ? nCreate : 0);
}

} // namespace

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
    // The file is emptied here and not by open(2), which does not wait for the lock. An empty file is not
    // truncated once more: ext4 writes all data of a truncated file to the disk when the file is closed.
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
        if (IsNamed(placeHolder->szPath.c_str(), lock.Get()))
            unlink(placeHolder->szPath.c_str());
    }
    // Not repeated: a close that is interrupted has closed the descriptor.
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
        if (!file && errno == ENXIO) // a socket
            return Fail(ERROR_ACCESS_DENIED);
        if (!file || fstat(file.Get(), &opened) != 0)
            return FailErrno();
        if (!S_ISREG(opened.st_mode) || opened.st_uid != geteuid())
            return Fail(ERROR_ACCESS_DENIED);
        if (!Lock(file, LOCK_EX))
            return Fail(ERROR_SHARING_VIOLATION);
        if (IsNamed(path.Text(), opened))
            return unlink(path.Text()) == 0 || FailErrno();
    }
}
