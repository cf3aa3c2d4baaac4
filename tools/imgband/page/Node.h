#pragma once
// A place in a report, and its value as an element of the page.

#include "page/Markup.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

/// A value of the report that knows its JSON pointer; or the place of one that the report does not have,
/// which is empty text and 0. The report must live longer.
class Node
{
public:
    using Json = nlohmann::ordered_json;

    explicit Node(const Json& report) : m_pValue(&report) {}

    Node operator[](const std::string& szKey) const;
    Node Item(std::size_t nIndex) const;

    bool IsKnown() const { return m_pValue; }
    bool IsNumber() const { return m_pValue && m_pValue->is_number(); }

    /// Items of a list or members of an object; 0 of anything else.
    std::size_t Count() const { return m_pValue && m_pValue->is_structured() ? m_pValue->size() : 0; }

    double Number() const { return IsNumber() ? m_pValue->get<double>() : 0; }
    std::size_t Index() const
    {
        return m_pValue && m_pValue->is_number_unsigned() ? m_pValue->get<std::size_t>() : 0;
    }
    bool IsTrue() const { return m_pValue && m_pValue->is_boolean() && m_pValue->get<bool>(); }

    /// The value as text: digits grouped, numbers with a fraction to three places or more.
    std::string String() const;

    /// The digits of a number that counts nothing, such as an identifier.
    std::string Digits() const;

    std::string Key() const { return m_at.to_string(); }
    const Json* Value() const { return m_pValue; }

private:
    Node(const Json* pValue, Json::json_pointer at) : m_pValue(pValue), m_at(std::move(at)) {}

    const Json* m_pValue;
    Json::json_pointer m_at;
};

/// The value in an element that carries its place; nothing when it is not known. szTag: tspan inside a
/// drawing.
Markup Exact(const Node& node, std::string_view szTag = "span");

/// The same without grouped digits.
Markup Identifier(const Node& node);

/// An amount of bytes to a tenth of the unit that fits, with the unit.
Markup Bytes(const Node& node, std::string_view szTag = "span");

/// Exact and " s".
Markup Seconds(const Node& node);
