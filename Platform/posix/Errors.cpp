// The calling thread's last error, and the code that stands for each error number of the system.
// Where a number has another meaning in one call, that call sets the code itself.

#include "Platform/posix/PosixLayer.h"

namespace {

thread_local DWORD t_nLastError = 0;

} // namespace

DWORD GetLastError()
{
    return t_nLastError;
}

void SetLastError(DWORD nError)
{
    t_nLastError = nError;
}

namespace platform::posix {

// clang-format off
DWORD ErrorOf(int nErrno)
{
    switch (nErrno) {
    case ENOENT:                                      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:                                     return ERROR_PATH_NOT_FOUND;
    case EMFILE: case ENFILE:                         return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES: case EPERM: case EROFS:
    case EISDIR: case ELOOP:                          return ERROR_ACCESS_DENIED;
    case EBADF:                                       return ERROR_INVALID_HANDLE;
    case ENOMEM: case EAGAIN:                         return ERROR_NOT_ENOUGH_MEMORY;
    case EBUSY:  case ETXTBSY:                        return ERROR_SHARING_VIOLATION;
    case EEXIST:                                      return ERROR_FILE_EXISTS;
    case EINVAL: case ESPIPE:                         return ERROR_INVALID_PARAMETER;
    case ENOSPC: case EDQUOT:                         return ERROR_DISK_FULL;
    case ENAMETOOLONG:                                return ERROR_FILENAME_EXCED_RANGE;
    case EFBIG:  case EOVERFLOW:                      return ERROR_FILE_TOO_LARGE;
    default:                                          return ERROR_GEN_FAILURE;
    }
}
// clang-format on

bool Fail(DWORD nError)
{
    SetLastError(nError);
    return false;
}

bool FailErrno(int nErrno)
{
    return Fail(ErrorOf(nErrno));
}

std::nullptr_t FailNull(DWORD nError)
{
    SetLastError(nError);
    return nullptr;
}

} // namespace platform::posix
