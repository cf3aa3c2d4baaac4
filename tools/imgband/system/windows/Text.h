#pragma once
// Texts for the wide calls of Windows.

#include <string>
#include <string_view>

namespace os {

/// Text of a code page, given by its own number, in UTF-16 and back. What has no counterpart is replaced.
std::wstring WideText(unsigned nCodePage, std::string_view szText);
std::string NarrowText(unsigned nCodePage, std::wstring_view szText);

} // namespace os
