// Conversion of the library's texts, by iconv.

#include "system/Text.h"

#include <iconv.h>

namespace os {
namespace {

/// An open conversion; not valid where the system does not know one of the character sets.
class Conversion
{
public:
    Conversion(const char* pszTo, const char* pszFrom) : m_conversion(iconv_open(pszTo, pszFrom)) {}
    ~Conversion()
    {
        if (IsValid())
            iconv_close(m_conversion);
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    bool IsValid() const { return m_conversion != reinterpret_cast<iconv_t>(-1); }

    /// Converts up to the end or to what cannot be converted, and moves pIn there.
    std::string Convert(char*& pIn, const char* pEnd)
    {
        if (!IsValid())
            return {};
        std::string szOut(4 * static_cast<std::size_t>(pEnd - pIn), '\0'); // enough for every character
        std::size_t nIn = static_cast<std::size_t>(pEnd - pIn), nOut = szOut.size();
        char* pOut = szOut.data();
        iconv(m_conversion, &pIn, &nIn, &pOut, &nOut);
        szOut.resize(szOut.size() - nOut);
        return szOut;
    }

private:
    iconv_t m_conversion;
};

/// ASCII is the same in both character sets.
std::string Convert(std::string szText, const char* pszTo, const char* pszFrom, const char* pszReplacement)
{
    Conversion conversion(pszTo, pszFrom);
    std::string szOut;
    char* const pEnd = szText.data() + szText.size();
    for (char* pIn = szText.data(); pIn != pEnd;) {
        szOut += conversion.Convert(pIn, pEnd);
        if (pIn != pEnd) {
            szOut += static_cast<unsigned char>(*pIn) < 0x80 ? std::string(1, *pIn) : pszReplacement;
            ++pIn;
        }
    }
    return szOut;
}

} // namespace

std::string Utf8FromCp932(const std::string& szText)
{
    return Convert(szText, "UTF-8", "CP932", "\xEF\xBF\xBD");
}

std::string Cp932FromUtf8(const std::string& szText)
{
    return Convert(szText, "CP932", "UTF-8", "?");
}

} // namespace os
