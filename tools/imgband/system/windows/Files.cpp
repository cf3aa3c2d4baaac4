// Files on Windows.

#include "system/Files.h"

#include "system/Errors.h"
#include "system/Leftovers.h"
#include "system/Paths.h"
#include "system/windows/InterruptsHeld.h"

#include <algorithm>
#include <utility>

namespace os {
namespace {

constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kMostAtOnce = 1 << 30; // bytes of one call

HANDLE Open(const std::filesystem::path& path, DWORD nAccess, DWORD nShare, DWORD nHow, DWORD nFlags)
{
    const HANDLE hFile = CreateFileW(path.c_str(), nAccess, nShare, nullptr, nHow, nFlags, nullptr);
    return hFile == INVALID_HANDLE_VALUE ? nullptr : hFile;
}

} // namespace

File File::OpenForReading(const std::string& szPath, bool bAlsoWrite)
{
    // Folders are opened too: the caller tells them from files.
    const HANDLE hFile = Open(PathOf(szPath), bAlsoWrite ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ,
                              kShared, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!hFile)
        ThrowLastError("open");
    return File(hFile);
}

// No nameless files here, and a share mode instead of a lock.
File File::CreateProvisional(const std::string& szFolder)
{
    const InterruptsHeld held;
    HANDLE hFile;
    std::string szPath;
    do {
        // "c:" and a name is in its current folder
        szPath = TextOf(PathOf(szFolder) / UnusedName(kProvisionalBeginning));
        hFile = Open(PathOf(szPath), GENERIC_READ | GENERIC_WRITE, kShared, CREATE_NEW, 0);
    } while (!hFile && GetLastError() == ERROR_FILE_EXISTS);
    if (!hFile)
        ThrowLastError("create");
    held.SetProvisional(szPath);
    return File(hFile, std::move(szPath));
}

File::File(File&& other) noexcept
    : m_hFile(std::exchange(other.m_hFile, nullptr)),
      m_szProvisional(std::exchange(other.m_szProvisional, {}))
{
}

File::~File()
{
    Discard();
    if (m_hFile)
        CloseHandle(m_hFile);
}

void File::Discard() noexcept
{
    if (m_szProvisional.empty())
        return;
    const InterruptsHeld held;
    DeleteFileW(PathOf(m_szProvisional).c_str());
    held.SetProvisional("");
}

std::int64_t File::Size() const
{
    LARGE_INTEGER nSize = {};
    if (!GetFileSizeEx(m_hFile, &nSize))
        ThrowLastError("size");
    return nSize.QuadPart;
}

std::size_t File::ReadAt(std::int64_t nOffset, void* pBuffer, std::size_t nBytes) const
{
    std::size_t nDone = 0;
    while (nDone < nBytes) {
        const std::int64_t nPlace = nOffset + static_cast<std::int64_t>(nDone);
        OVERLAPPED place = {};
        place.Offset = static_cast<DWORD>(nPlace);
        place.OffsetHigh = static_cast<DWORD>(nPlace >> 32);
        DWORD nRead = 0;
        if (!ReadFile(m_hFile, static_cast<char*>(pBuffer) + nDone,
                      static_cast<DWORD>(std::min(nBytes - nDone, kMostAtOnce)), &nRead, &place) &&
            GetLastError() != ERROR_HANDLE_EOF)
            ThrowLastError("read");
        if (nRead == 0)
            break;
        nDone += nRead;
    }
    return nDone;
}

void File::Append(const void* pData, std::size_t nBytes)
{
    const char* pRest = static_cast<const char*>(pData);
    while (nBytes > 0) {
        DWORD nWritten = 0;
        if (!WriteFile(m_hFile, pRest, static_cast<DWORD>(std::min(nBytes, kMostAtOnce)), &nWritten, nullptr))
            ThrowLastError("write");
        pRest += nWritten;
        nBytes -= nWritten;
    }
}

void File::Flush()
{
    if (!FlushFileBuffers(m_hFile))
        ThrowLastError("flush");
}

void File::Close()
{
    if (!CloseHandle(std::exchange(m_hFile, nullptr)))
        ThrowLastError("close");
}

// An output that is write-protected is never replaced, so there is nothing to take over.
void File::TakePermissions(const std::string&) {}

void File::Publish(const std::string& szTarget)
{
    Flush();
    Close();
    Rename(szTarget);
}

void File::Rename(const std::string& szTarget)
{
    const InterruptsHeld held;
    if (!MoveFileExW(PathOf(m_szProvisional).c_str(), PathOf(szTarget).c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        ThrowLastError("rename");
    m_szProvisional.clear();
    held.SetProvisional("");
}

bool MayWrite(const std::string& szPath)
{
    const std::filesystem::path path = PathOf(szPath);
    const DWORD nAttributes = GetFileAttributesW(path.c_str());
    if (nAttributes & FILE_ATTRIBUTE_READONLY && !(nAttributes & FILE_ATTRIBUTE_DIRECTORY))
        return false;
    constexpr DWORD nAccess = FILE_WRITE_DATA; // of a folder, the right to add files
    const HANDLE hFile = Open(path, nAccess, kShared, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!hFile)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(hFile);
    return true;
}

// The system is asked, since the standard library here takes a share's name for a folder of the current
// drive.
std::string RealPath(const std::string& szPath)
{
    constexpr std::wstring_view kLong = L"\\\\?\\", kShare = L"\\\\?\\UNC\\";
    const HANDLE hFile = Open(PathOf(szPath), 0, kShared, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    std::wstring szReal(hFile ? GetFinalPathNameByHandleW(hFile, nullptr, 0, 0) : 0, L'\0');
    if (!szReal.empty())
        szReal.resize(GetFinalPathNameByHandleW(hFile, szReal.data(), static_cast<DWORD>(szReal.size()), 0));
    const std::error_code error = LastError();
    if (hFile)
        CloseHandle(hFile);
    if (szReal.empty())
        throw std::system_error(error, "find");
    if (szReal.starts_with(kShare))
        szReal.replace(0, kShare.size(), L"\\\\");
    else if (szReal.starts_with(kLong))
        szReal.erase(0, kLong.size());
    return TextOf(szReal);
}

std::uintmax_t FreeBytes(const std::string& szFolder)
{
    ULARGE_INTEGER nFree = {};
    return GetDiskFreeSpaceExW((PathOf(szFolder) / "").c_str(), &nFree, nullptr, nullptr) ? nFree.QuadPart
                                                                                          : UINTMAX_MAX;
}

std::uintmax_t FileSizeLimit()
{
    return UINTMAX_MAX;
}

bool IsFileName(const std::string& szPath)
{
    const std::filesystem::path path = PathOf(szPath);
    wchar_t szWhole[MAX_PATH] = {};
    GetFullPathNameW(path.c_str(), MAX_PATH, szWhole, nullptr);
    return !std::wstring_view(szWhole).starts_with(L"\\\\.\\") &&
           path.filename().native().find_first_of(L"<>:\"|?*") == std::wstring::npos;
}

} // namespace os
