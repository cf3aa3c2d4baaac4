#pragma once
// The character set of the library's own texts. Any thread.

#include <string>

namespace os {

/// Text of code page 932 in UTF-8. What is no character there becomes U+FFFD; where the system does not know
/// the code page, that is every byte above 0x7F.
std::string Utf8FromCp932(const std::string& szText);

/// UTF-8 in code page 932. What has no counterpart there becomes '?'; where the system does not know the code
/// page, that is every byte above 0x7F.
std::string Cp932FromUtf8(const std::string& szText);

} // namespace os
