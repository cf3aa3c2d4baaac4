// Reading open files, their positions and their sizes.

#include "Platform/posix/PosixLayer.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace platform::posix;

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
    SetLastError(0);
    return static_cast<DWORD>(nBytes);
}
