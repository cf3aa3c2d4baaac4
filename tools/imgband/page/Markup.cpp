// Writing HTML and SVG.

#include "page/Markup.h"

#include <fmt/format.h>

namespace {

std::string Escape(std::string_view szText)
{
    std::string szEscaped;
    szEscaped.reserve(szText.size());
    for (const char c : szText) {
        const auto nCode = static_cast<unsigned char>(c);
        switch (c) {
        case '&':
            szEscaped += "&amp;";
            break;
        case '<':
            szEscaped += "&lt;";
            break;
        case '>':
            szEscaped += "&gt;";
            break;
        case '"':
            szEscaped += "&quot;";
            break;
        case '\t':
        case '\n':
            szEscaped += c;
            break;
        default:
            if (nCode < 0x20 || nCode == 0x7F)
                szEscaped += "\xEF\xBF\xBD";
            else
                szEscaped += c;
        }
    }
    return szEscaped;
}

} // namespace

Markup Text(std::string_view szText)
{
    return {Escape(szText)};
}

Markup Tag(std::string_view szName, Attributes attributes, const Markup& inside)
{
    Markup element{fmt::format("<{}", szName)};
    for (const Attribute& attribute : attributes)
        element.sz += fmt::format(" {}=\"{}\"", attribute.szName, Escape(attribute.szValue));
    element.sz += ">";
    element += inside;
    element.sz += fmt::format("</{}>", szName);
    return element;
}

Markup Tag(std::string_view szName, const Markup& inside)
{
    return Tag(szName, {}, inside);
}

Markup Tag(std::string_view szName, std::string_view szText)
{
    return Tag(szName, {}, Text(szText));
}

std::string Pixels(double fPixels)
{
    std::string szNumber = fmt::format("{:.1f}", fPixels);
    if (szNumber.ends_with(".0"))
        szNumber.resize(szNumber.size() - 2);
    return szNumber == "-0" ? "0" : szNumber;
}
