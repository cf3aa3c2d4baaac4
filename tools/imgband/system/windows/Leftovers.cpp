// Leftovers on Windows. The library opens its temporary files without sharing, to be deleted when they are
// closed: a file that another call can open is held by nobody.

#include "system/Leftovers.h"

#include "Platform/PlatformTypes.h"
#include "system/Errors.h"
#include "system/Paths.h"
#include "values/Failure.h"

#include <algorithm>
#include <optional>
#include <regex>

namespace os {
namespace {

std::int64_t Wide(DWORD nHigh, DWORD nLow)
{
    return static_cast<std::int64_t>(ULONGLONG{nHigh} << 32 | nLow);
}

Leftover Describe(const std::string& szName, const WIN32_FILE_ATTRIBUTE_DATA& facts)
{
    constexpr std::int64_t kSecond = 10'000'000; // of the system's time
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const std::int64_t nAge = Wide(now.dwHighDateTime, now.dwLowDateTime) -
                              Wide(facts.ftLastWriteTime.dwHighDateTime, facts.ftLastWriteTime.dwLowDateTime);
    return {.szName = szName,
            .nBytes = Wide(facts.nFileSizeHigh, facts.nFileSizeLow),
            .nAgeSeconds = std::max<std::int64_t>(nAge / kSecond, 0),
            .szReason = ""};
}

Leftover Refused(Leftover leftover)
{
    leftover.szReason = ErrorText(LastError());
    return leftover;
}

/// The leftover of that name; none when the file is not one, is held, or vanished meanwhile.
std::optional<Leftover> Examine(const std::filesystem::path& path, std::int64_t nLeastAge, bool bRemove)
{
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &facts) ||
        facts.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT))
        return std::nullopt;
    Leftover leftover = Describe(TextOf(path.filename()), facts);
    const HANDLE hFile = CreateFileW(path.c_str(), DELETE | FILE_READ_ATTRIBUTES, 0, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        const DWORD nError = GetLastError();
        return nError == ERROR_SHARING_VIOLATION || nError == ERROR_FILE_NOT_FOUND
                   ? std::nullopt
                   : std::optional(Refused(leftover));
    }
    FILE_DISPOSITION_INFO disposition = {TRUE};
    leftover.bYoung = leftover.nAgeSeconds < nLeastAge;
    if (bRemove && !leftover.bYoung) {
        leftover.bRemoved =
            SetFileInformationByHandle(hFile, FileDispositionInfo, &disposition, sizeof disposition);
        if (!leftover.bRemoved)
            leftover = Refused(leftover);
    }
    CloseHandle(hFile);
    return leftover;
}

} // namespace

// The number has no leading zeros here.
bool IsTemporaryName(std::string_view szName)
{
    static const std::regex kName("LRG[0-9A-F]{1,8}\\.tmp", std::regex::icase);
    return std::regex_match(szName.begin(), szName.end(), kName);
}

std::vector<Leftover> FindLeftovers(const std::string& szFolder, NameTests tests, std::int64_t nLeastAge,
                                    bool bRemove)
{
    std::vector<Leftover> leftovers;
    for (const std::string& szName : NamesIn(szFolder, tests))
        if (auto leftover = Examine(PathOf(szFolder) / PathOf(szName), nLeastAge, bRemove))
            leftovers.push_back(std::move(*leftover));
    return leftovers;
}

void RemoveProvisionalLeftovers(const std::string& szFolder)
try {
    FindLeftovers(szFolder, {IsProvisionalName}, kSettledSeconds, true);
} catch (const std::system_error&) {
    // A folder that cannot be read keeps them.
}

void RemoveInheritedNames() {}

// The system numbers a process's handles in steps of four, the lowest free one first; a run has some hundred.
HeldFiles FindHeldFiles()
{
    constexpr std::uintptr_t kStep = 4, kLast = 0x4000;
    std::set<std::wstring> paths; // one file may be open several times
    for (std::uintptr_t nHandle = kStep; nHandle <= kLast; nHandle += kStep) {
        const HANDLE hFile = reinterpret_cast<HANDLE>(nHandle);
        wchar_t szPath[MAX_PATH];
        if (GetFileType(hFile) != FILE_TYPE_DISK)
            continue;
        const DWORD nChars = GetFinalPathNameByHandleW(hFile, szPath, MAX_PATH, 0);
        if (nChars > 0 && nChars < MAX_PATH &&
            IsTemporaryName(TextOf(std::filesystem::path(szPath).filename())))
            paths.insert(szPath);
    }
    const int nHeld = static_cast<int>(paths.size());
    return {nHeld, nHeld}; // a file keeps its name as long as it is open
}

} // namespace os
