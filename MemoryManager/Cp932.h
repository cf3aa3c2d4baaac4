#pragma once
// Turns readable UTF-8 literals into code page 932 bytes while compiling, whatever compiler and locale.
// Knows ASCII, kana and the kanji listed here; any other character is a compile error.

#include <array>
#include <cstddef>

namespace cp932 {

/// A character and its double-byte code.
struct CodePair
{
    char32_t nUnicode;
    unsigned nCode;
};

// clang-format off
inline constexpr CodePair kKanji[] = {
    {U'入', 0x93FC}, {U'全', 0x9153}, {U'出', 0x8F6F}, {U'利', 0x9798}, {U'力', 0x97CD},
    {U'処', 0x8F88}, {U'側', 0x91A4}, {U'変', 0x95CF}, {U'呼', 0x8CC4}, {U'体', 0x91CC},
    {U'換', 0x8AB7}, {U'数', 0x9094}, {U'理', 0x979D}, {U'用', 0x9770}, {U'空', 0x8BF3},
};
// clang-format on

/// The code of one character: one byte below 0x100, else the lead byte above the trail byte.
constexpr unsigned Encode(char32_t nChar)
{
    if (nChar < 0x80)
        return nChar;
    if (nChar >= U'ぁ' && nChar <= U'ん')
        return 0x829F + (nChar - U'ぁ');
    if (nChar >= U'ァ' && nChar <= U'ヶ') {
        const unsigned nCode = 0x8340 + (nChar - U'ァ');
        return nCode < 0x837F ? nCode : nCode + 1; // 0x7F is no trail byte
    }
    for (const CodePair& pair : kKanji)
        if (pair.nUnicode == nChar)
            return pair.nCode;
    throw "character not in the table";
}

/// Reads the UTF-8 character at nPos, of one or three bytes, and moves nPos behind it.
constexpr char32_t Decode(const char8_t* pszText, std::size_t& nPos)
{
    const char32_t nLead = pszText[nPos++];
    if (nLead < 0x80)
        return nLead;
    if (nLead >> 4 != 0xE)
        throw "character outside the table's plane";
    const char32_t nMiddle = pszText[nPos++] & 0x3Fu;
    const char32_t nLast = pszText[nPos++] & 0x3Fu;
    return (nLead & 0xF) << 12 | nMiddle << 6 | nLast;
}

/// The literal in code page 932, ended by at least one zero byte.
template <std::size_t N> consteval std::array<char, N> Text(const char8_t (&szText)[N])
{
    std::array<char, N> bytes{};
    std::size_t nOut = 0;
    for (std::size_t nPos = 0; nPos < N - 1;) {
        const unsigned nCode = Encode(Decode(szText, nPos));
        if (nCode > 0xFF)
            bytes[nOut++] = static_cast<char>(nCode >> 8);
        bytes[nOut++] = static_cast<char>(nCode & 0xFF);
    }
    return bytes;
}

} // namespace cp932
