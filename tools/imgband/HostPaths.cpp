// What is the same for names on every system.

#include "HostPaths.h"

#include <fmt/format.h>
#include <random>

std::filesystem::path host::PathOf(const std::string& szText)
{
    return std::u8string(szText.begin(), szText.end());
}

std::string host::TextOf(const std::filesystem::path& path)
{
    const std::u8string szText = path.u8string();
    return {szText.begin(), szText.end()};
}

std::uintmax_t host::FreeBytes(const std::string& szFolder)
{
    // On Windows a path without an end of its own would stand for the folder that it is in.
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(PathOf(szFolder) / "", error);
    return error ? UINTMAX_MAX : space.available;
}

std::string host::UnusedName(const std::string& szBeginning)
{
    std::random_device device;
    return fmt::format("{}{:08x}{:08x}", szBeginning, device(), device());
}
