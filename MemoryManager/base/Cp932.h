#pragma once
// Turns UTF-8 literals into code page 932 bytes at compile time, independent of compiler and locale. It knows
// ASCII, kana, wide capitals and the characters listed here; any other character is a compile error.

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
/// The other characters that the texts use, in the order of Unicode.
inline constexpr CodePair kCharacters[] = {
    {U'№', 0x8782}, {U'・', 0x8145}, {U'ー', 0x815B}, {U'了', 0x97B9}, {U'他', 0x91BC},
    {U'位', 0x88CA}, {U'体', 0x91CC}, {U'余', 0x975D}, {U'作', 0x8DEC}, {U'使', 0x8E67},
    {U'係', 0x8C57}, {U'停', 0x92E2}, {U'側', 0x91A4}, {U'傷', 0x8F9D}, {U'像', 0x919C},
    {U'光', 0x8CF5}, {U'入', 0x93FC}, {U'全', 0x9153}, {U'処', 0x8F88}, {U'出', 0x8F6F},
    {U'初', 0x8F89}, {U'判', 0x94BB}, {U'別', 0x95CA}, {U'利', 0x9798}, {U'制', 0x90A7},
    {U'力', 0x97CD}, {U'動', 0x93AE}, {U'化', 0x89BB}, {U'単', 0x9250}, {U'去', 0x8B8E},
    {U'収', 0x8EFB}, {U'取', 0x8EE6}, {U'台', 0x91E4}, {U'周', 0x8EFC}, {U'呼', 0x8CC4},
    {U'回', 0x89F1}, {U'型', 0x8C5E}, {U'域', 0x88E6}, {U'報', 0x95F1}, {U'変', 0x95CF},
    {U'大', 0x91E5}, {U'定', 0x92E8}, {U'小', 0x8FAC}, {U'工', 0x8D48}, {U'差', 0x8DB7},
    {U'巻', 0x8AAA}, {U'帯', 0x91D1}, {U'度', 0x9378}, {U'強', 0x8BAD}, {U'形', 0x8C60},
    {U'彩', 0x8DCA}, {U'得', 0x93BE}, {U'微', 0x94F7}, {U'性', 0x90AB}, {U'情', 0x8FEE},
    {U'態', 0x91D4}, {U'手', 0x8EE8}, {U'抑', 0x977D}, {U'拡', 0x8A67}, {U'指', 0x8E77},
    {U'換', 0x8AB7}, {U'数', 0x9094}, {U'整', 0x90AE}, {U'書', 0x8F91}, {U'最', 0x8DC5},
    {U'有', 0x974C}, {U'期', 0x8AFA}, {U'検', 0x8C9F}, {U'業', 0x8BC6}, {U'樽', 0x924D},
    {U'止', 0x8E7E}, {U'正', 0x90B3}, {U'歪', 0x9863}, {U'残', 0x8E63}, {U'消', 0x8FC1},
    {U'濃', 0x945A}, {U'焼', 0x8FC4}, {U'特', 0x93C1}, {U'状', 0x8FF3}, {U'理', 0x979D},
    {U'用', 0x9770}, {U'画', 0x89E6}, {U'白', 0x9492}, {U'目', 0x96DA}, {U'相', 0x918A},
    {U'確', 0x8A6D}, {U'示', 0x8EA6}, {U'程', 0x92F6}, {U'空', 0x8BF3}, {U'管', 0x8AC7},
    {U'粒', 0x97B1}, {U'糸', 0x8E85}, {U'終', 0x8F49}, {U'縮', 0x8F6B}, {U'置', 0x9275},
    {U'自', 0x8EA9}, {U'色', 0x9046}, {U'表', 0x955C}, {U'補', 0x95E2}, {U'覆', 0x95A2},
    {U'認', 0x9446}, {U'読', 0x93C7}, {U'調', 0x92B2}, {U'赤', 0x90D4}, {U'転', 0x935D},
    {U'辺', 0x95D3}, {U'込', 0x8D9E}, {U'逆', 0x8B74}, {U'部', 0x9594}, {U'量', 0x97CA},
    {U'間', 0x8AD4}, {U'関', 0x8AD6}, {U'除', 0x8F9C}, {U'領', 0x97CC}, {U'高', 0x8D82},
    {U'（', 0x8169}, {U'）', 0x816A}, {U'：', 0x8146},
};
// clang-format on

/// Whether a byte is the first of a double-byte character.
constexpr bool IsLeadByte(unsigned char c)
{
    return (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC);
}

/// The code of one character: one byte below 0x100, else the lead byte above the trail byte.
constexpr unsigned Encode(char32_t nChar)
{
    if (nChar < 0x80)
        return nChar;
    if (nChar >= U'ぁ' && nChar <= U'ん')
        return 0x829F + (nChar - U'ぁ');
    if (nChar >= U'ァ' && nChar <= U'ヶ') {
        const unsigned nCode = 0x8340 + (nChar - U'ァ');
        return nCode < 0x837F ? nCode : nCode + 1; // 0x7F is never a trail byte
    }
    if (nChar >= U'Ａ' && nChar <= U'Ｚ')
        return 0x8260 + (nChar - U'Ａ');
    for (const CodePair& pair : kCharacters)
        if (pair.nUnicode == nChar)
            return pair.nCode;
    throw "character not in the table";
}

/// Reads the UTF-8 character at nPos, which has one or three bytes, and moves nPos past it.
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

/// The literal in code page 932, followed by at least one zero byte.
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
