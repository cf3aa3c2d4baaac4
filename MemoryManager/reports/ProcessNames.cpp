// Looking up the names of a process identifier's three fields.
// The lowest eight bits belong to no field, and 0 is no value of any field.

#include "MemoryManager/reports/ProcessNames.h"

#include "MemoryManager/base/Cp932.h"
#include "MemoryManager/base/ReportTexts.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

struct FieldName
{
    unsigned nValue;
    const char* pszName;
};

#define MM_ENCODE_NAME(value, text, english) constexpr auto kName##value = cp932::Text(text);
MM_FUNCTION_NAMES(MM_ENCODE_NAME)
MM_CATEGORY_NAMES(MM_ENCODE_NAME)
MM_STEP_NAMES(MM_ENCODE_NAME)
#undef MM_ENCODE_NAME

#define MM_LIST_NAME(value, text, english) {value, kName##value.data()},
constexpr FieldName kFunctions[] = {MM_FUNCTION_NAMES(MM_LIST_NAME)};
constexpr FieldName kCategories[] = {MM_CATEGORY_NAMES(MM_LIST_NAME)};
constexpr FieldName kSteps[] = {MM_STEP_NAMES(MM_LIST_NAME)};
#undef MM_LIST_NAME

/// One field of an identifier and its names, in the order of their values.
class FieldNames
{
public:
    template <std::size_t N>
    consteval FieldNames(unsigned nMask, const FieldName (&list)[N])
        : m_nMask(nMask), m_pBegin(list), m_pEnd(list + N)
    {
        if (!std::ranges::is_sorted(list, {}, &FieldName::nValue))
            throw "not in order";
        for (const FieldName& name : list)
            if ((name.nValue & ~nMask) != 0 || std::string_view(name.pszName).size() >= kProcessNameSize)
                throw "a value outside the field, or a name that is too long";
    }

    /// The name of an identifier's value in this field; null when it has none.
    const char* Find(unsigned nId) const
    {
        const FieldName* pFound =
            std::ranges::lower_bound(m_pBegin, m_pEnd, nId & m_nMask, {}, &FieldName::nValue);
        return pFound != m_pEnd && pFound->nValue == (nId & m_nMask) ? pFound->pszName : nullptr;
    }

private:
    unsigned m_nMask;
    const FieldName* m_pBegin;
    const FieldName* m_pEnd;
};

/// The fields, the most specific one first.
constexpr FieldNames kFields[] = {
    {0x0000FF00, kSteps},
    {0x000F0000, kCategories},
    {0xFFF00000, kFunctions},
};

} // namespace

const char* FindProcessName(int nIpNo)
{
    for (const FieldNames& names : kFields)
        if (const char* pszName = names.Find(static_cast<unsigned>(nIpNo)))
            return pszName;
    return kTextNoId;
}
