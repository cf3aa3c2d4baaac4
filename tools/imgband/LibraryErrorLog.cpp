// The error log's place and its last line.

#include "LibraryErrorLog.h"

#include "HostFiles.h"
#include "MemoryManager/MemoryManager.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

constexpr const char* kLogName = "FileAccessErrorLog.txt";

} // namespace

// The name cannot be foreseen: in a folder that others can write to, nobody can have put a link there.
ErrorLog::ErrorLog(const std::string& szParent)
    : m_szFolder(szParent + "/" + host::UnusedName("imgband-") + "/")
{
    SetErrLogPath(m_szFolder.c_str());
}

ErrorLog::~ErrorLog()
{
    Remove(m_szFolder);
}

std::optional<LoggedError> ErrorLog::LastError() const
{
    static constexpr std::string_view kMark = "):LastError=";
    std::optional<LoggedError> last;
    std::ifstream log(m_szFolder + kLogName);
    for (std::string szLine; std::getline(log, szLine);) {
        const std::size_t nMark = szLine.find(kMark);
        if (nMark != std::string::npos)
            last = {szLine.substr(0, szLine.find('(')), std::atoi(szLine.c_str() + nMark + kMark.size())};
    }
    return last;
}

void ErrorLog::Remove(const std::string& szFolder)
{
    std::error_code error;
    std::filesystem::remove(szFolder + kLogName, error);
    std::filesystem::remove(szFolder.substr(0, szFolder.find_last_not_of('/') + 1), error);
}
