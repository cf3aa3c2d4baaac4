// Conversion of texts on Windows.

#include "system/Text.h"

#include "Platform/PlatformTypes.h"
#include "system/windows/WideText.h"

namespace os {
namespace {

constexpr unsigned kCp932 = 932;

/// The character of code page 932 that a text begins with, in UTF-16: nothing if these bytes are none.
std::wstring Character(std::string_view szBytes)
{
    wchar_t szWide[2];
    const int nWide = MultiByteToWideChar(kCp932, MB_ERR_INVALID_CHARS, szBytes.data(),
                                          static_cast<int>(szBytes.size()), szWide, 2);
    return {szWide, static_cast<std::size_t>(nWide)};
}

} // namespace

std::wstring WideText(unsigned nCodePage, std::string_view szText)
{
    const int nBytes = static_cast<int>(szText.size());
    std::wstring szWide(szText.size(), L'\0'); // enough for every code page
    szWide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(nCodePage, 0, szText.data(), nBytes, szWide.data(), nBytes)));
    return szWide;
}

std::string NarrowText(unsigned nCodePage, std::wstring_view szText)
{
    const DWORD nFlags = nCodePage == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    const int nChars = static_cast<int>(szText.size());
    std::string szBytes(4 * szText.size(), '\0'); // enough for every code page
    szBytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
        nCodePage, nFlags, szText.data(), nChars, szBytes.data(), 4 * nChars, nullptr, nullptr)));
    return szBytes;
}

// The system itself would replace what is no text by a character of the code page.
std::string Utf8FromCp932(const std::string& szText)
{
    std::wstring szWide;
    for (std::size_t i = 0, nBytes; i < szText.size(); i += nBytes) {
        nBytes = IsDBCSLeadByteEx(kCp932, static_cast<BYTE>(szText[i])) ? 2 : 1;
        const std::wstring szCharacter = Character(std::string_view(szText).substr(i, nBytes));
        if (szCharacter.empty())
            nBytes = 1;
        szWide += szCharacter.empty() ? L"\xFFFD" : szCharacter;
    }
    return NarrowText(CP_UTF8, szWide);
}

std::string Cp932FromUtf8(const std::string& szText)
{
    return NarrowText(kCp932, WideText(CP_UTF8, szText));
}

} // namespace os
