// The file-access error log: the folder that the host gives and the lines that failures leave in it. The log
// itself never fails: an entry that cannot be written is dropped.

#include "MemoryManager/ErrorLogFolder.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/base/ReportTexts.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kFileName[] = "FileAccessErrorLog.txt";
constexpr const char* kDrives[] = {"c:\\", "d:\\", "e:\\"};

char g_szFolder[260] = "..\\logdata\\";

// Gives the calling thread's last error back at the end of its scope: it is what the caller reports.
class KeptLastError
{
public:
    KeptLastError() = default;
    ~KeptLastError() { SetLastError(m_nError); }
    KeptLastError(const KeptLastError&) = delete;
    KeptLastError& operator=(const KeptLastError&) = delete;

private:
    const DWORD m_nError = GetLastError();
};

// Creates the folder if need be and opens the log in it; null when that is not possible.
std::FILE* OpenLog(const char* pszMode)
{
    char szPath[sizeof(g_szFolder) + sizeof(kFileName)];
    std::snprintf(szPath, sizeof(szPath), "%s%s", g_szFolder, kFileName);
    CreateDirectoryA(g_szFolder, nullptr);
    return platform::OpenTextFile(szPath, pszMode);
}

void WriteByteCount(std::FILE* pLog, const char* pszLabel, const ULARGE_INTEGER& nBytes)
{
    std::fprintf(pLog, "%s%" PRId64 "\n", pszLabel, static_cast<std::int64_t>(nBytes.QuadPart));
}

// Writes four lines about a drive, or none when its space cannot be determined.
void WriteDiskSpace(std::FILE* pLog, const char* pszDrive)
{
    ULARGE_INTEGER nCaller{}, nTotal{}, nFree{};
    if (!GetDiskFreeSpaceExA(pszDrive, &nCaller, &nTotal, &nFree))
        return;
    std::fprintf(pLog, "%s\n", pszDrive);
    WriteByteCount(pLog, kTextDiskForCaller, nCaller);
    WriteByteCount(pLog, kTextDiskTotal, nTotal);
    WriteByteCount(pLog, kTextDiskFree, nFree);
}

} // namespace

void SetErrLogPath(const char* pszFolder)
{
    if (pszFolder == nullptr)
        return;
    const char* pszEnd = std::find(pszFolder, pszFolder + sizeof(g_szFolder) - 1, '\0');
    const auto nLength = static_cast<std::size_t>(pszEnd - pszFolder);
    std::memmove(g_szFolder, pszFolder, nLength); // the caller may pass what GetErrLogPath returned
    std::memset(g_szFolder + nLength, 0, sizeof(g_szFolder) - nLength);
}

const char* GetErrLogPath()
{
    return g_szFolder;
}

void ReportFileAccessError(const char* pszUnit, int nLine, DWORD nError)
{
    const KeptLastError kept;
    std::FILE* pLog = OpenLog("a");
    if (pLog == nullptr)
        return;
    std::fprintf(pLog, "%s(%d):LastError=%d\n", pszUnit, nLine, static_cast<int>(nError));
    std::fclose(pLog);
}

DWORD FailFileAccess(const char* pszUnit, int nLine)
{
    ReportFileAccessError(pszUnit, nLine, GetLastError());
    return MM_FILE_ACCESS;
}

void ReportFileAccessErrorCounted(const char* pszUnit, int nLine, DWORD nError, int nCounter)
{
    const KeptLastError kept;
    std::FILE* pLog = OpenLog("w");
    if (pLog == nullptr)
        return;
    std::fprintf(pLog, "%s(%d):LastError=%d,counter=%d\n", pszUnit, nLine, static_cast<int>(nError),
                 nCounter);
    for (const char* pszDrive : kDrives)
        WriteDiskSpace(pLog, pszDrive);
    std::fclose(pLog);
}
