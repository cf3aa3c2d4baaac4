#pragma once
// Writing HTML.

#include <initializer_list>
#include <string>
#include <string_view>

/// Finished markup. A type of its own, so that no text gets into a page unescaped.
struct Markup
{
    std::string sz;

    Markup& operator+=(const Markup& more)
    {
        sz += more.sz;
        return *this;
    }
};

inline Markup operator+(Markup first, const Markup& second)
{
    return first += second;
}

struct Attribute
{
    std::string_view szName;
    std::string szValue; ///< escaped when it is written
};

using Attributes = std::initializer_list<Attribute>;

/// Text, UTF-8; control characters that a page may not hold become U+FFFD.
Markup Text(std::string_view szText);

/// An element with its end tag.
Markup Tag(std::string_view szName, Attributes attributes, const Markup& inside = {});
Markup Tag(std::string_view szName, const Markup& inside);
Markup Tag(std::string_view szName, std::string_view szText);

/// A part of a whole for a style, such as "12.50%".
std::string Percent(double fPart, double fWhole);
