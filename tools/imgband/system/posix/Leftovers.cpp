// Leftovers on POSIX systems. A process that uses a temporary file has a lock on it, which goes with the
// process; who has the lock may remove the name.

#include "system/Leftovers.h"

#include "system/Errors.h"
#include "values/Failure.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <optional>
#include <regex>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace os {
namespace {

class Descriptor
{
public:
    explicit Descriptor(int nDescriptor) : m_nDescriptor(nDescriptor) {}
    ~Descriptor()
    {
        if (m_nDescriptor >= 0)
            close(m_nDescriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_nDescriptor; }

private:
    int m_nDescriptor;
};

bool IsOwnFile(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

/// Whether a name of the folder still leads to the file that was opened.
bool IsNamed(int nFolder, const char* pszName, const struct stat& opened)
{
    struct stat named = {};
    return fstatat(nFolder, pszName, &named, AT_SYMLINK_NOFOLLOW) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

Leftover Describe(const char* pszName, const struct stat& status)
{
    const std::int64_t nAge = std::time(nullptr) - status.st_mtime;
    return {.szName = pszName,
            .nBytes = status.st_size,
            .nAgeSeconds = std::max<std::int64_t>(nAge, 0),
            .szReason = ""};
}

Leftover Refused(Leftover leftover, const std::error_code& error)
{
    leftover.szReason = ErrorText(error);
    return leftover;
}

/// The leftover of that name; none when the file is not one, is held, or vanished meanwhile.
std::optional<Leftover> Examine(int nFolder, const char* pszName, std::int64_t nLeastAge, bool bRemove)
{
    struct stat status = {};
    if (fstatat(nFolder, pszName, &status, AT_SYMLINK_NOFOLLOW) != 0 || !IsOwnFile(status))
        return std::nullopt;
    // The name may lead to something else by now: a link is refused, a pipe does not keep the call waiting.
    const Descriptor file(openat(nFolder, pszName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file.Get() < 0)
        return errno == ENOENT || errno == ELOOP
                   ? std::nullopt
                   : std::optional(Refused(Describe(pszName, status), LastError()));
    if (fstat(file.Get(), &status) != 0 || !IsOwnFile(status))
        return std::nullopt;
    Leftover leftover = Describe(pszName, status);
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? std::nullopt : std::optional(Refused(leftover, LastError()));
    // Whoever had the lock before may have removed the name, and somebody else made it anew.
    if (!IsNamed(nFolder, pszName, status))
        return std::nullopt;
    leftover.bYoung = leftover.nAgeSeconds < nLeastAge;
    const bool bRemoved = bRemove && !leftover.bYoung;
    if (bRemoved && unlinkat(nFolder, pszName, 0) != 0)
        return Refused(leftover, LastError());
    leftover.bRemoved = bRemoved;
    return leftover;
}

constexpr std::string_view kRemoved = " (deleted)";

/// The paths of what this process has open, as the system tells them; kRemoved stands behind those of files
/// without a name. One file may be open several times.
std::set<std::string> OpenFiles()
{
    std::set<std::string> targets;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc/self/fd", error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code unread;
        targets.insert(std::filesystem::read_symlink(entry->path(), unread).string());
    }
    return targets;
}

} // namespace

bool IsTemporaryName(std::string_view szName)
{
    static const std::regex kName("LRG[0-9A-F]{4,8}\\.tmp");
    return std::regex_match(szName.begin(), szName.end(), kName);
}

std::vector<Leftover> FindLeftovers(const std::string& szFolder, NameTests tests, std::int64_t nLeastAge,
                                    bool bRemove)
{
    const Descriptor folder(open(szFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.Get() < 0)
        ThrowLastError("open");
    std::vector<Leftover> leftovers;
    for (const std::string& szName : NamesIn(szFolder, tests))
        if (auto leftover = Examine(folder.Get(), szName.c_str(), nLeastAge, bRemove))
            leftovers.push_back(std::move(*leftover));
    return leftovers;
}

HeldFiles FindHeldFiles()
{
    HeldFiles held;
    for (std::string_view szTarget : OpenFiles()) {
        const bool bNamed = !szTarget.ends_with(kRemoved);
        if (!bNamed)
            szTarget.remove_suffix(kRemoved.size());
        if (IsTemporaryName(szTarget.substr(szTarget.rfind('/') + 1))) {
            ++held.nOpen;
            held.nNamed += bNamed ? 1 : 0;
        }
    }
    return held;
}

void RemoveProvisionalLeftovers(const std::string& szFolder)
try {
    FindLeftovers(szFolder, {IsProvisionalName}, 0, true);
} catch (const std::system_error&) {
    // A folder that cannot be read keeps them.
}

void RemoveInheritedNames()
{
    for (const std::string& szPath : OpenFiles())
        if (IsTemporaryName(std::string_view(szPath).substr(szPath.rfind('/') + 1)))
            unlink(szPath.c_str());
}

} // namespace os
