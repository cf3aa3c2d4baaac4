// The names of the library's temporary files.

#include "Leftovers.h"

#include "HostPaths.h"

std::set<std::string> host::TemporaryNames(const std::string& szFolder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(PathOf(szFolder)))
        if (const std::string szName = TextOf(entry.path().filename()); IsTemporaryName(szName))
            names.insert(szName);
    return names;
}
