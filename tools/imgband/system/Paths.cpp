// What is the same for names on every system.

#include "system/Paths.h"

#include <fmt/format.h>
#include <random>

std::filesystem::path os::PathOf(const std::string& szText)
{
    return std::u8string(szText.begin(), szText.end());
}

std::string os::UnusedName(const std::string& szBeginning)
{
    std::random_device device;
    return fmt::format("{}{:08x}{:08x}", szBeginning, device(), device());
}
