// Names of files on Windows: UTF-16.

#include "system/Paths.h"

#include "Platform/PlatformTypes.h"
#include "system/windows/WideText.h"

namespace os {

std::string TextOf(const std::filesystem::path& path)
{
    return NarrowText(CP_UTF8, path.native());
}

bool IsSamePath(const std::filesystem::path& a, const std::filesystem::path& b)
{
    return CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_EQUAL;
}

} // namespace os
