// Reading, positions and sizes of open files; streams; making folders, and the space on a disk.

#include "Platform/posix/PosixLayer.h"

#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace platform::posix;

namespace {

/// Bytes by which a text file may grow while it is open. It is opened only when the process's file-size limit
/// leaves room for them.
constexpr std::uint64_t kTextRoom = 65536;

/// Opens a stream of a file that will have at most nBytes bytes. Null: the last error tells why.
/// @param pszMode  starts with 'a' or 'w'
std::FILE* OpenStream(const NativePath& path, const char* pszMode, std::uint64_t nBytes)
{
    if (!FitsFileSizeLimit(nBytes))
        return nullptr;
    const int nFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | (*pszMode == 'a' ? O_APPEND : O_TRUNC);
    Descriptor file = OpenDescriptor(path.Text(), nFlags);
    std::FILE* pFile = file ? fdopen(file.Get(), pszMode) : nullptr;
    if (!pFile)
        return FailNull(ErrorOf(errno));
    file.Release(); // the stream closes the descriptor
    return pFile;
}

} // namespace

namespace platform::posix {

bool FitsFileSizeLimit(std::uint64_t nBytes)
{
    rlimit limit{};
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY || nBytes <= limit.rlim_cur)
        return true;
    return Fail(ERROR_FILE_TOO_LARGE);
}

} // namespace platform::posix

BOOL ReadFile(HANDLE hFile, LPVOID pBuffer, DWORD nBytes, DWORD* pnRead, void* pOverlapped)
{
    if (!pnRead || pOverlapped)
        return Fail(ERROR_INVALID_PARAMETER);
    const int nFile = DescriptorOf(hFile);
    *pnRead = 0;
    while (*pnRead < nBytes) {
        BYTE* pNext = static_cast<BYTE*>(pBuffer) + *pnRead;
        const ssize_t nPart = Uninterrupted([&] { return read(nFile, pNext, nBytes - *pnRead); });
        if (nPart < 0)
            return FailErrno();
        if (nPart == 0)
            break;
        *pnRead += static_cast<DWORD>(nPart);
    }
    return 1;
}

DWORD SetFilePointer(HANDLE hFile, LONG nDistance, LONG* pnHigh, DWORD nMethod)
{
    const std::int64_t nLow = pnHigh ? static_cast<DWORD>(nDistance) : std::int64_t{nDistance};
    const std::int64_t nPosition = (pnHigh ? std::int64_t{*pnHigh} : 0) * (std::int64_t{1} << 32) + nLow;
    if (nMethod != FILE_BEGIN || nPosition < 0) {
        Fail(nMethod != FILE_BEGIN ? ERROR_INVALID_PARAMETER : ERROR_NEGATIVE_SEEK);
        return INVALID_SET_FILE_POINTER;
    }
    if (lseek(DescriptorOf(hFile), static_cast<off_t>(nPosition), SEEK_SET) < 0) {
        FailErrno();
        return INVALID_SET_FILE_POINTER;
    }
    return static_cast<DWORD>(nPosition);
}

DWORD GetFileSize(HANDLE hFile, DWORD* pnHigh)
{
    struct stat file = {};
    if (fstat(DescriptorOf(hFile), &file) != 0) {
        FailErrno();
        return INVALID_FILE_SIZE;
    }
    const auto nBytes = static_cast<std::uint64_t>(file.st_size);
    if (pnHigh)
        *pnHigh = static_cast<DWORD>(nBytes >> 32);
    return static_cast<DWORD>(nBytes);
}

BOOL CreateDirectoryA(LPCSTR pszPath, void* pSecurity)
{
    if (pSecurity)
        return Fail(ERROR_INVALID_PARAMETER);
    const NativePath path(pszPath);
    if (!path.IsValid())
        return 0;
    if (mkdir(path.Text(), 0777) == 0)
        return 1;
    switch (errno) {
    case EEXIST:
        return Fail(ERROR_ALREADY_EXISTS);
    case ENOENT:
        return Fail(ERROR_PATH_NOT_FOUND); // a folder that leads to it is missing
    default:
        return FailErrno();
    }
}

BOOL GetDiskFreeSpaceExA(LPCSTR pszFolder, ULARGE_INTEGER* pnCaller, ULARGE_INTEGER* pnTotal,
                         ULARGE_INTEGER* pnFree)
{
    const NativePath path(pszFolder);
    struct statvfs disk = {};
    if (!path.IsValid())
        return 0;
    if (Uninterrupted([&] { return statvfs(path.Text(), &disk); }) != 0)
        return FailErrno();
    const auto nBlock = static_cast<ULONGLONG>(disk.f_frsize);
    if (pnCaller)
        pnCaller->QuadPart = disk.f_bavail * nBlock;
    if (pnTotal)
        pnTotal->QuadPart = disk.f_blocks * nBlock;
    if (pnFree)
        pnFree->QuadPart = disk.f_bfree * nBlock;
    return 1;
}

std::FILE* platform::OpenTextFile(const char* pszPath, const char* pszMode)
{
    const NativePath path(pszPath);
    if (!path.IsValid())
        return nullptr;
    const bool bAppend = std::strcmp(pszMode, "a") == 0;
    if (!bAppend && std::strcmp(pszMode, "w") != 0)
        return FailNull(ERROR_INVALID_PARAMETER);
    struct stat file = {};
    const bool bThere = bAppend && stat(path.Text(), &file) == 0;
    return OpenStream(path, bAppend ? "a" : "w",
                      (bThere ? static_cast<std::uint64_t>(file.st_size) : 0) + kTextRoom);
}

std::FILE* platform::OpenBinaryFile(const char* pszPath, ULONGLONG nBytes)
{
    const NativePath path(pszPath);
    return path.IsValid() ? OpenStream(path, "wb", nBytes) : nullptr;
}
