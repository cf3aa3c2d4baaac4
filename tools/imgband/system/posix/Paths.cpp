// Names of files on POSIX systems: any bytes.

#include "system/Paths.h"

namespace os {

std::string TextOf(const std::filesystem::path& path)
{
    return path.string();
}

bool IsSamePath(const std::filesystem::path& a, const std::filesystem::path& b)
{
    return a == b;
}

} // namespace os
