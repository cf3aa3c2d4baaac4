// How full the memory is: that of the machine, or of the process's fullest control group where that is
// fuller. Pages of files that the system can drop at once count as available.

#include "Platform/posix/PosixLayer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

using namespace platform::posix;

namespace {

/// The content of a small text file of the system; empty when the file cannot be read.
class SystemText
{
public:
    SystemText(const char* pszRoot, const char* pszFolder, const char* pszName) : m_szText{}
    {
        char szPath[PATH_MAX];
        const int nLength = std::snprintf(szPath, sizeof szPath, "%s%s%s", pszRoot, pszFolder, pszName);
        if (nLength < 0 || nLength >= static_cast<int>(sizeof szPath))
            return;
        const Descriptor file = OpenDescriptor(szPath, O_RDONLY);
        for (std::size_t nRead = 0; file && nRead < sizeof m_szText - 1;) {
            const ssize_t nPart = Uninterrupted(
                [&] { return read(file.Get(), m_szText + nRead, sizeof m_szText - 1 - nRead); });
            if (nPart <= 0)
                break;
            nRead += static_cast<std::size_t>(nPart);
        }
    }

    /// The number that follows pszKey at the start of a line. An empty key finds the first line that starts
    /// with a number.
    std::optional<std::uint64_t> Number(const char* pszKey) const
    {
        const std::size_t nKey = std::strlen(pszKey);
        for (const char* pszLine = m_szText; pszLine; pszLine = NextLine(pszLine)) {
            char* pszEnd = nullptr;
            if (std::strncmp(pszLine, pszKey, nKey) != 0)
                continue;
            const std::uint64_t nValue = std::strtoull(pszLine + nKey, &pszEnd, 10);
            if (pszEnd != pszLine + nKey)
                return nValue;
        }
        return std::nullopt;
    }

    const char* Begin() const { return m_szText; }

    static const char* NextLine(const char* pszLine)
    {
        const char* pszEnd = std::strchr(pszLine, '\n');
        return pszEnd ? pszEnd + 1 : nullptr;
    }

private:
    char m_szText[16384];
};

/// Where a version of control groups keeps its numbers.
struct GroupVersion
{
    const char* pszMount;
    const char* pszLimit;     ///< file of a group, with bytes
    const char* pszUsage;     ///< file of a group, with bytes
    const char* pszDroppable; ///< key in a group's memory.stat: bytes of files that can be dropped at once
};

constexpr GroupVersion kFirstVersion = {"/sys/fs/cgroup/memory", "/memory.limit_in_bytes",
                                        "/memory.usage_in_bytes", "total_inactive_file "};
constexpr GroupVersion kSecondVersion = {"/sys/fs/cgroup", "/memory.max", "/memory.current",
                                         "inactive_file "};

/// Percent in use.
unsigned LoadOf(std::uint64_t nTotal, std::uint64_t nAvailable)
{
    return nTotal == 0 ? 0 : static_cast<unsigned>(100 - nAvailable * 100 / nTotal);
}

/// Takes one control group into account, if its limit is lower than the machine's memory.
void ConsiderGroup(const char* pszRoot, const GroupVersion& version, const char* pszFolder,
                   std::uint64_t nMachine, MemoryUse* pUse)
{
    const auto nLimit = SystemText(pszRoot, pszFolder, version.pszLimit).Number("");
    if (!nLimit || *nLimit == 0 || *nLimit >= nMachine)
        return;
    const auto nUsage = SystemText(pszRoot, pszFolder, version.pszUsage).Number("");
    const auto nDroppable = SystemText(pszRoot, pszFolder, "/memory.stat").Number(version.pszDroppable);
    if (!nUsage)
        return;
    const std::uint64_t nUsed = *nUsage - std::min(*nUsage, nDroppable.value_or(0));
    const std::uint64_t nAvailable = *nLimit - std::min(*nLimit, nUsed);
    pUse->nTotal = std::min(pUse->nTotal, *nLimit);
    pUse->nAvailable = std::min(pUse->nAvailable, nAvailable);
    pUse->nLoad = std::max(pUse->nLoad, LoadOf(*nLimit, nAvailable));
}

/// Takes the process's control group and all groups above it into account, as each may have a limit.
/// @param pszGroup  the group's path, which ends at a line end
void ConsiderGroups(const char* pszRoot, const GroupVersion& version, const char* pszGroup,
                    std::uint64_t nMachine, MemoryUse* pUse)
{
    char szFolder[PATH_MAX];
    const auto nGroup = static_cast<int>(std::strcspn(pszGroup, "\n"));
    const int nLength =
        std::snprintf(szFolder, sizeof szFolder, "%s%.*s", version.pszMount, nGroup, pszGroup);
    if (nLength < 0 || nLength >= static_cast<int>(sizeof szFolder))
        return;
    const std::size_t nMount = std::strlen(version.pszMount);
    for (;;) {
        ConsiderGroup(pszRoot, version, szFolder, nMachine, pUse);
        char* pszLast = std::strrchr(szFolder + nMount, '/');
        if (!pszLast)
            return;
        *pszLast = 0;
    }
}

/// Takes the groups in /proc/self/cgroup into account. Its lines are number:controllers:path; those of the
/// second version name no controllers.
void ReadGroups(const char* pszRoot, MemoryUse* pUse)
{
    const SystemText text(pszRoot, "/proc/self/cgroup", "");
    const std::uint64_t nMachine = pUse->nTotal;
    for (const char* pszLine = text.Begin(); pszLine; pszLine = SystemText::NextLine(pszLine)) {
        const char* pszColon = pszLine + std::strcspn(pszLine, ":\n");
        if (*pszColon != ':')
            continue;
        const char* pszControllers = pszColon + 1;
        const std::size_t nControllers = std::strcspn(pszControllers, ":\n");
        pszColon = pszControllers + nControllers;
        if (*pszColon != ':')
            continue;
        const char* pszGroup = pszColon + 1;
        if (nControllers == 0)
            ConsiderGroups(pszRoot, kSecondVersion, pszGroup, nMachine, pUse);
        else if (std::string_view(pszControllers, nControllers).find("memory") != std::string_view::npos)
            ConsiderGroups(pszRoot, kFirstVersion, pszGroup, nMachine, pUse);
    }
}

} // namespace

namespace platform::posix {

MemoryUse ReadMemoryUse(const char* pszRoot)
{
    const SystemText machine(pszRoot, "/proc/meminfo", "");
    MemoryUse use{};
    use.nTotal = machine.Number("MemTotal:").value_or(0) * 1024;
    use.nAvailable = std::min(use.nTotal, machine.Number("MemAvailable:").value_or(0) * 1024);
    use.nLoad = LoadOf(use.nTotal, use.nAvailable);
    ReadGroups(pszRoot, &use);
    return use;
}

} // namespace platform::posix

void GlobalMemoryStatus(MEMORYSTATUS* pStatus)
{
    const MemoryUse use = ReadMemoryUse("");
    const std::uint64_t nLargest = SIZE_MAX; // that the fields hold, which in a 32-bit process is less
    pStatus->dwLength = sizeof *pStatus;
    pStatus->dwMemoryLoad = use.nLoad;
    pStatus->dwTotalPhys = static_cast<SIZE_T>(std::min(use.nTotal, nLargest));
    pStatus->dwAvailPhys = static_cast<SIZE_T>(std::min(use.nAvailable, nLargest));
}
