// The error of a system call on POSIX systems.

#include "system/Errors.h"

#include <cerrno>

namespace os {

std::error_code LastError()
{
    return {errno, std::system_category()};
}

} // namespace os
