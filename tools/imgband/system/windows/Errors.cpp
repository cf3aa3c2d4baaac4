// The error of a system call on Windows.

#include "system/Errors.h"

#include "Platform/PlatformTypes.h"

namespace os {

std::error_code LastError()
{
    return {static_cast<int>(GetLastError()), std::system_category()};
}

} // namespace os
