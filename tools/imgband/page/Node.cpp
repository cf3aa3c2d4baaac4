// A place in a report, and its value as an element of the page.

#include "page/Node.h"

#include "page/Scale.h"

#include <fmt/format.h>

Node Node::operator[](const std::string& szKey) const
{
    const bool bHas = IsObject() && m_pValue->contains(szKey);
    return {bHas ? &m_pValue->at(szKey) : nullptr, m_at / szKey};
}

std::vector<Node> Node::Items() const
{
    std::vector<Node> items;
    if (IsObject())
        for (const auto& member : m_pValue->items())
            items.push_back({&member.value(), m_at / member.key()});
    else if (IsStructured())
        for (std::size_t i = 0; i < m_pValue->size(); ++i)
            items.push_back({&m_pValue->at(i), m_at / i});
    return items;
}

std::string Node::String() const
{
    if (!IsKnown() || IsStructured())
        return {};
    if (m_pValue->is_string())
        return m_pValue->get<std::string>();
    if (m_pValue->is_boolean())
        return IsTrue() ? "yes" : "no";
    if (m_pValue->is_number_float())
        return SecondsText(Number());
    const bool bIdentifies = Name() == "process_id" || Name() == "thread";
    return bIdentifies ? m_pValue->dump() : Grouped(m_pValue->get<std::int64_t>());
}

Markup Exact(const Node& node)
{
    return node.IsKnown() ? Tag("span", {{"data-key", node.Place()}}, Text(node.String())) : Markup{};
}

Markup Bytes(const Node& node)
{
    if (!node.IsNumber())
        return {};
    const Unit unit = ByteUnit(node.Number());
    const Markup unitName = Text(fmt::format(" {}", unit.pszName));
    if (unit.fSize == 1)
        return Exact(node) + unitName;
    return Tag("span", {{"data-key", node.Place()}, {"data-unit", unit.pszName}},
               Text(Grouped(node.Number() / unit.fSize, 1))) +
           unitName;
}

Markup Seconds(const Node& node)
{
    return node.IsKnown() ? Exact(node) + Text(" s") : Markup{};
}
