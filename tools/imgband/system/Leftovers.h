#pragma once
// Temporary files of the library that lie in a folder or are open in this process.

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace os {

/// Whether it is a name as the system makes it for the library: LRG, a hexadecimal number, and .tmp.
bool IsTemporaryName(std::string_view szName);

/// The names in a folder that are temporary files' names. Throws std::system_error.
std::set<std::string> TemporaryNames(const std::string& szFolder);

/// A temporary file of this user that no process holds.
struct Leftover
{
    std::string szName; ///< without its folder
    std::int64_t nBytes;
    std::int64_t nAgeSeconds; ///< since it was written last
    bool bRemoved = false;
    std::string szReason; ///< why it could not be looked at or removed; empty: nothing kept it
};

/// Looks for leftovers in a folder, in the order of their names, and removes them if so wanted. Regular files
/// only; links are not followed, and what another user owns or a process holds is left alone and out. (On
/// Windows a temporary folder is its user's, and owners are not looked at.)
/// Throws std::system_error when the folder cannot be read.
std::vector<Leftover> FindLeftovers(const std::string& szFolder, bool bRemove);

/// The temporary files that this process has open.
struct HeldFiles
{
    int nOpen = 0;
    int nNamed = 0; ///< those whose name is still there
};

HeldFiles FindHeldFiles();

} // namespace os
