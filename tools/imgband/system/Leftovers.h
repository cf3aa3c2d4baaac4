#pragma once
// Temporary files of the library that lie in a folder or are open in this process.

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace os {

/// Whether the system makes such names for the library: LRG, a hexadecimal number, and .tmp.
bool IsTemporaryName(std::string_view szName);

/// The names in a folder that are temporary files' names. Throws std::system_error.
std::set<std::string> TemporaryNames(const std::string& szFolder);

/// A temporary file of this user that no process holds.
struct Leftover
{
    std::string szName; ///< without its folder
    std::int64_t nBytes;
    std::int64_t nAgeSeconds; ///< since it was written last
    bool bYoung = false;      ///< too young to be touched
    bool bRemoved = false;
    std::string szReason; ///< why it could not be examined or removed; empty: it could
};

/// Whoever makes a temporary file locks it a moment later. Nothing is taken for a leftover sooner than this.
inline constexpr std::int64_t kSettledSeconds = 3600;

/// Looks for leftovers in a folder and gives them in the order of their names. Only regular files count, and
/// links are not followed. Files of other users and files that a process holds are left alone and not listed.
/// (On Windows a temporary folder belongs to one user, and owners are not looked at.)
/// Throws std::system_error when the folder cannot be read.
/// @param nLeastAge  seconds; younger ones are marked, and left alone
/// @param bRemove    remove the others too
std::vector<Leftover> FindLeftovers(const std::string& szFolder, std::int64_t nLeastAge, bool bRemove);

/// Removes the names of temporary files that this process has inherited from the interrupted run in whose
/// place it was started. Windows removes such files with the run.
void RemoveInheritedNames();

/// The temporary files that this process has open.
struct HeldFiles
{
    int nOpen = 0;
    int nNamed = 0; ///< those whose name is still there
};

/// Counts them; a file that is open several times counts once.
HeldFiles FindHeldFiles();

} // namespace os
