// Folders on Windows.

#include "system/Folders.h"

#include "Platform/PlatformTypes.h"
#include "system/Errors.h"
#include "system/Paths.h"
#include "system/windows/InterruptsHeld.h"
#include "system/windows/WideText.h"

namespace os {
namespace {

/// The same text in bytes of the system's code page; none if they would not mean the same.
std::optional<std::string> BytesOf(const std::wstring& szWide)
{
    const std::string szBytes = NarrowText(GetACP(), szWide);
    return WideText(GetACP(), szBytes) == szWide ? std::optional(szBytes) : std::nullopt;
}

/// The current folder is the same at the end of the scope.
class FolderKept
{
public:
    FolderKept() : m_folder(std::filesystem::current_path()) {}
    ~FolderKept() { SetCurrentDirectoryW(m_folder.c_str()); }
    FolderKept(const FolderKept&) = delete;
    FolderKept& operator=(const FolderKept&) = delete;

private:
    std::filesystem::path m_folder;
};

} // namespace

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

void RunInFolder(const std::string& szFolder, const std::function<void()>& fnRun)
{
    const InterruptsHeld held;
    const FolderKept kept;
    if (!SetCurrentDirectoryW(PathOf(szFolder).c_str()))
        ThrowLastError("chdir");
    fnRun();
}

} // namespace os
