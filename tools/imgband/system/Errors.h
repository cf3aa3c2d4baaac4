#pragma once
// Errors of the operating system's calls.

#include <system_error>

namespace os {

/// The error of this thread's last call that failed. Ask before the next call of the system. Any thread.
std::error_code LastError();

/// Throws the last error as std::system_error.
/// @param pszCall  the call that failed, for the exception's text
[[noreturn]] inline void ThrowLastError(const char* pszCall)
{
    throw std::system_error(LastError(), pszCall);
}

} // namespace os
