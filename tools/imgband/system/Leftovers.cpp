// The names of the library's temporary files.

#include "system/Leftovers.h"

#include "system/Paths.h"

std::set<std::string> os::TemporaryNames(const std::string& szFolder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(PathOf(szFolder)))
        if (const std::string szName = TextOf(entry.path().filename()); IsTemporaryName(szName))
            names.insert(szName);
    return names;
}
