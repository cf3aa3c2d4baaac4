#pragma once
// A place in a report, and its value as an element of the page.

#include "page/Markup.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// A value of the report that knows its JSON pointer; or the place of one that the report does not have,
/// which is empty text and 0. The report must live longer.
class Node
{
public:
    using Json = nlohmann::ordered_json;

    explicit Node(const Json& report) : m_pValue(&report) {}

    Node operator[](const std::string& szKey) const;

    /// Items of a list or members of an object, in their order; none of anything else.
    std::vector<Node> Items() const;

    bool IsKnown() const { return m_pValue && !m_pValue->is_null(); }
    bool IsNumber() const { return m_pValue && m_pValue->is_number(); }
    bool IsObject() const { return m_pValue && m_pValue->is_object(); }
    bool IsStructured() const { return m_pValue && m_pValue->is_structured(); }
    bool IsTrue() const { return m_pValue && *m_pValue == true; }

    double Number() const { return IsNumber() ? m_pValue->get<double>() : 0; }

    /// The value as text: digits grouped unless they identify something, seconds to the millisecond or finer.
    std::string String() const;

    /// Its place, and the last part of that: the member's name.
    std::string Place() const { return m_at.to_string(); }
    std::string Name() const { return m_at.empty() ? "" : m_at.back(); }

private:
    Node(const Json* pValue, Json::json_pointer at) : m_pValue(pValue), m_at(std::move(at)) {}

    const Json* m_pValue;
    Json::json_pointer m_at;
};

/// The value in an element that carries its place; nothing when it is not known.
Markup Exact(const Node& node);

/// An amount of bytes to a tenth of the unit that fits, with the unit.
Markup Bytes(const Node& node);

/// As Exact, followed by " s".
Markup Seconds(const Node& node);
