// Writing HTML.

#include "page/Markup.h"

#include <fmt/format.h>

namespace {

std::string Escape(std::string_view szText)
{
    std::string szEscaped;
    for (const char c : szText)
        if (c == '&')
            szEscaped += "&amp;";
        else if (c == '<')
            szEscaped += "&lt;";
        else if (c == '>')
            szEscaped += "&gt;";
        else if (c == '"')
            szEscaped += "&quot;";
        else if ((static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') || c == 0x7F)
            szEscaped += "\xEF\xBF\xBD";
        else
            szEscaped += c;
    return szEscaped;
}

} // namespace

Markup Text(std::string_view szText)
{
    return {Escape(szText)};
}

Markup Tag(std::string_view szName, Attributes attributes, const Markup& inside)
{
    std::string szElement = fmt::format("<{}", szName);
    for (const Attribute& attribute : attributes)
        szElement += fmt::format(" {}=\"{}\"", attribute.szName, Escape(attribute.szValue));
    return {fmt::format("{}>{}</{}>", szElement, inside.sz, szName)};
}

Markup Tag(std::string_view szName, const Markup& inside)
{
    return Tag(szName, {}, inside);
}

Markup Tag(std::string_view szName, std::string_view szText)
{
    return Tag(szName, {}, Text(szText));
}

std::string Percent(double fPart, double fWhole)
{
    return fmt::format("{:.2f}%", 100 * (fPart / fWhole));
}
