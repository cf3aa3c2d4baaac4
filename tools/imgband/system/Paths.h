#pragma once
// Names of files. Texts of the tool are UTF-8, whatever the system's own names are made of; outside Windows a
// name's bytes go through as they are. Any thread.

#include <filesystem>
#include <string>

namespace os {

/// The only way from a text to a path of the standard library.
std::filesystem::path PathOf(const std::string& szText);

/// The way back. On Windows, parts of a name that are not valid text become U+FFFD.
std::string TextOf(const std::filesystem::path& path);

/// Whether two whole paths name the same file, which need not exist. Windows takes capital and small letters
/// for one another.
bool IsSamePath(const std::filesystem::path& a, const std::filesystem::path& b);

/// A file name that nobody can foresee, with this beginning. Throws std::exception when the system has no
/// random numbers.
std::string UnusedName(const std::string& szBeginning);

} // namespace os
