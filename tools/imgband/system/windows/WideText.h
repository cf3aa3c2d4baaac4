#pragma once
// Texts for the wide calls of Windows.

#include <string>
#include <string_view>

namespace os {

/// Text of a code page, which is given by its own number, in UTF-16. What has no counterpart is replaced.
std::wstring WideText(unsigned nCodePage, std::string_view szText);

/// The same back.
std::string NarrowText(unsigned nCodePage, std::wstring_view szText);

} // namespace os
