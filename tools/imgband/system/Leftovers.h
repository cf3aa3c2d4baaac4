#pragma once
// Files that runs leave behind: temporary files of the library, and provisional ones beside an output.

#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace os {

/// Whether the system makes such names for the library: LRG, a hexadecimal number, and .tmp.
bool IsTemporaryName(std::string_view szName);

/// How the names of provisional files begin; 16 lower-case hexadecimal digits follow.
inline constexpr const char* kProvisionalBeginning = ".imgband-";
bool IsProvisionalName(std::string_view szName);

/// The names in a folder for which one of these holds. Throws std::system_error.
using NameTests = std::initializer_list<bool (*)(std::string_view)>;
std::set<std::string> NamesIn(const std::string& szFolder, NameTests tests);

/// A file of this user that no process holds.
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

/// Looks for leftovers with such names in a folder and gives them in the order of their names. Only regular
/// files count, and links are not followed. Files of other users and files that a process holds are left
/// alone and not listed. (On Windows a temporary folder belongs to one user, and owners are not looked at.)
/// Throws std::system_error when the folder cannot be read.
/// @param nLeastAge  seconds; younger ones are marked, and left alone
/// @param bRemove    remove the others too
std::vector<Leftover> FindLeftovers(const std::string& szFolder, NameTests tests, std::int64_t nLeastAge,
                                    bool bRemove);

/// Removes the provisional files that killed runs left in a folder. What cannot be removed stays. On Windows,
/// where they have no lock for a moment before they are published, only those that are old enough.
void RemoveProvisionalLeftovers(const std::string& szFolder);

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
