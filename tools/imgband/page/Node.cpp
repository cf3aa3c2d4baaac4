// A place in a report, and its value as an element of the page.

#include "page/Node.h"

#include "page/Scale.h"

#include <fmt/format.h>

namespace {

Markup Element(const Node& node, std::string_view szTag, const std::string& szText)
{
    return node.IsKnown() ? Tag(szTag, {{"data-key", node.Key()}}, Text(szText)) : Markup{};
}

} // namespace

Node Node::operator[](const std::string& szKey) const
{
    const bool bHas = m_pValue && m_pValue->is_object() && m_pValue->contains(szKey);
    return {bHas ? &m_pValue->at(szKey) : nullptr, m_at / szKey};
}

Node Node::Item(std::size_t nIndex) const
{
    const bool bHas = m_pValue && m_pValue->is_array() && nIndex < m_pValue->size();
    return {bHas ? &m_pValue->at(nIndex) : nullptr, m_at / nIndex};
}

std::string Node::String() const
{
    if (!m_pValue || m_pValue->is_structured() || m_pValue->is_null())
        return {};
    if (m_pValue->is_string())
        return m_pValue->get<std::string>();
    if (m_pValue->is_boolean())
        return m_pValue->get<bool>() ? "yes" : "no";
    return m_pValue->is_number_float() ? SecondsText(Number()) : Grouped(m_pValue->get<std::int64_t>());
}

std::string Node::Digits() const
{
    return m_pValue && m_pValue->is_number_integer() ? fmt::format("{}", m_pValue->get<std::int64_t>())
                                                     : String();
}

Markup Exact(const Node& node, std::string_view szTag)
{
    return Element(node, szTag, node.String());
}

Markup Identifier(const Node& node)
{
    return Element(node, "span", node.Digits());
}

Markup Bytes(const Node& node, std::string_view szTag)
{
    const Unit unit = ByteUnit(node.Number());
    const Markup unitName = Text(fmt::format(" {}", unit.pszName));
    if (!node.IsNumber())
        return {};
    if (unit.fSize == 1)
        return Exact(node, szTag) + unitName;
    return Tag(szTag, {{"data-key", node.Key()}, {"data-unit", unit.pszName}},
               Text(Grouped(node.Number() / unit.fSize, 1))) +
           unitName;
}

Markup Seconds(const Node& node)
{
    return node.IsKnown() ? Exact(node) + Text(" s") : Markup{};
}
