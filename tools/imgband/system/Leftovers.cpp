// The names of leftovers.

#include "system/Leftovers.h"

#include "system/Paths.h"

#include <algorithm>

bool os::IsProvisionalName(std::string_view szName)
{
    const std::string_view szBeginning = kProvisionalBeginning;
    return szName.size() == szBeginning.size() + 16 && szName.starts_with(szBeginning) &&
           szName.find_first_not_of("0123456789abcdef", szBeginning.size()) == std::string_view::npos;
}

std::set<std::string> os::NamesIn(const std::string& szFolder, NameTests tests)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(PathOf(szFolder)))
        if (const std::string szName = TextOf(entry.path().filename());
            std::any_of(tests.begin(), tests.end(), [&](auto fnTest) { return fnTest(szName); }))
            names.insert(szName);
    return names;
}
