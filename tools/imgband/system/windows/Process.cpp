// What the tool asks about its process and surroundings on Windows.

#include "system/Files.h"
#include "system/Paths.h"
#include "system/windows/Text.h"

#include <algorithm>
#include <bit>

#include <psapi.h>

namespace os {
namespace {

/// The same text in bytes of the system's code page; none if they would not mean the same.
std::optional<std::string> BytesOf(const std::wstring& szWide)
{
    const std::string szBytes = NarrowText(GetACP(), szWide);
    return WideText(GetACP(), szBytes) == szWide ? std::optional(szBytes) : std::nullopt;
}

} // namespace

std::uintmax_t FileSizeLimit()
{
    return UINTMAX_MAX;
}

std::optional<std::string> LibraryFolder(const std::string& szFolder)
{
    const std::wstring szWide = PathOf(szFolder).wstring();
    if (const auto szBytes = BytesOf(szWide))
        return szBytes;
    wchar_t szShort[MAX_PATH];
    const DWORD nChars = GetShortPathNameW(szWide.c_str(), szShort, MAX_PATH);
    return nChars > 0 && nChars < MAX_PATH ? BytesOf(szShort) : std::nullopt;
}

std::string TemporaryFolder()
{
    wchar_t szFolder[MAX_PATH + 2] = {};
    GetTempPathW(MAX_PATH + 1, szFolder);
    const std::filesystem::path path = szFolder;
    return TextOf(path.has_filename() ? path : path.parent_path()); // it ends with a separator
}

bool SetTemporaryFolder(const std::string& szFolder)
{
    const auto szBytes = LibraryFolder(szFolder);
    return szBytes && SetEnvironmentVariableW(L"TMP", WideText(GetACP(), *szBytes).c_str());
}

std::string RuntimeFolder()
{
    wchar_t szLocal[MAX_PATH] = {};
    GetEnvironmentVariableW(L"LOCALAPPDATA", szLocal, MAX_PATH);
    const std::filesystem::path own = std::filesystem::path(szLocal) / "Temp";
    std::error_code error;
    const bool bUsable = std::filesystem::is_directory(own, error) && LibraryFolder(TextOf(own));
    return bUsable ? TextOf(own) : TemporaryFolder();
}

int ProcessorCount()
{
    DWORD_PTR nOurs = 0, nAll = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &nOurs, &nAll);
    return std::max(std::popcount(nOurs), 1);
}

int ProcessNumber()
{
    return static_cast<int>(GetCurrentProcessId());
}

bool IsRunning(int nProcess)
{
    const HANDLE hProcess = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(nProcess));
    if (!hProcess)
        return GetLastError() == ERROR_ACCESS_DENIED;
    const bool bRuns = WaitForSingleObject(hProcess, 0) == WAIT_TIMEOUT;
    CloseHandle(hProcess);
    return bRuns;
}

ResidentMemory Resident() noexcept
{
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    if (!GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                              sizeof memory))
        return {};
    // Two names of one number; a system may leave either at 0.
    const auto nPrivate = static_cast<std::int64_t>(std::max(memory.PagefileUsage, memory.PrivateUsage));
    const auto nResident = static_cast<std::int64_t>(memory.WorkingSetSize);
    return {nPrivate, std::max<std::int64_t>(nResident - nPrivate, 0)};
}

} // namespace os
