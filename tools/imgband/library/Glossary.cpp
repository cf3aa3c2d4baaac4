// Looking up and taking apart report texts.

#include "library/Glossary.h"

#include "MemoryManager/MemoryManager.h"
#include "system/Text.h"

#include <algorithm>
#include <iterator>

namespace glossary {
namespace {

template <std::size_t N> std::string Utf8(const char8_t (&szText)[N])
{
    return {szText, szText + N - 1};
}

struct Entry
{
    std::string szText;
    std::string szEnglish;
};

#define LIST_TEXT(key, text, english) {Utf8(text), english},
const Entry kEntries[] = {MM_REPORT_TEXTS(LIST_TEXT) MM_FUNCTION_NAMES(LIST_TEXT) MM_CATEGORY_NAMES(LIST_TEXT)
                              MM_STEP_NAMES(LIST_TEXT)};
#undef LIST_TEXT

constexpr std::string_view kDigits = "0123456789";

/// Bytes of the decimal number that a text begins with; 0 when there is none.
std::size_t NumberLength(std::string_view szText)
{
    const std::size_t nSign = szText.starts_with('-') ? 1 : 0;
    const std::size_t nEnd = std::min(szText.find_first_not_of(kDigits, nSign), szText.size());
    return nEnd > nSign ? nEnd : 0;
}

/// Compares from left to right. A filled-in text ends where the pattern's next words first appear; the
/// pattern's last one is as long as possible.
bool Take(std::string_view szPattern, std::string_view szText, std::vector<std::string>& values)
{
    const std::size_t nLiteral = std::min(szPattern.find('%'), szPattern.size());
    if (szText.substr(0, nLiteral) != szPattern.substr(0, nLiteral))
        return false;
    szText.remove_prefix(nLiteral);
    szPattern.remove_prefix(nLiteral);
    if (szPattern.empty())
        return szText.empty();

    const bool bNumber = szPattern[1] == 'd';
    szPattern.remove_prefix(2);
    const std::size_t nNextLiteral = szPattern.find('%');
    const bool bLast = nNextLiteral == std::string_view::npos;
    const std::size_t nLength = bNumber ? NumberLength(szText)
                                : bLast ? szText.size() - std::min(szText.size(), szPattern.size())
                                        : szText.find(szPattern.substr(0, nNextLiteral));
    if (nLength == std::string_view::npos || (bNumber && nLength == 0))
        return false;
    values.emplace_back(szText.substr(0, nLength));
    return Take(szPattern, szText.substr(nLength), values);
}

std::string Fill(std::string_view szPattern, const std::vector<std::string>& values)
{
    std::string szFilled;
    for (const std::string& szValue : values) {
        const std::size_t nPlace = szPattern.find('%');
        szFilled.append(szPattern.substr(0, nPlace)).append(English(szValue));
        szPattern.remove_prefix(nPlace + 2);
    }
    return szFilled.append(szPattern);
}

} // namespace

#define DEFINE_TEXT(name, text, english) const std::string name = Utf8(text);
MM_REPORT_TEXTS(DEFINE_TEXT)
#undef DEFINE_TEXT

std::string English(const std::string& szText)
{
    for (const Entry& entry : kEntries)
        if (const auto values = FilledIn(entry.szText, szText))
            return Fill(entry.szEnglish, *values);
    return szText;
}

std::optional<std::vector<std::string>> FilledIn(const std::string& szPattern, const std::string& szText)
{
    std::vector<std::string> values;
    return Take(szPattern, szText, values) ? std::optional(values) : std::nullopt;
}

std::string ProcessName(int nIpNo)
{
    return os::Utf8FromCp932(CImageObj::GetIpName(nIpNo));
}

} // namespace glossary
