// Streams of files that are written, within the process's file-size limit.

#include "Platform/posix/PosixLayer.h"

#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

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
