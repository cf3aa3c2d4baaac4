// Where the error log is, and its last entry.

#include "library/ErrorLog.h"

#include "MemoryManager/MemoryManager.h"
#include "system/Folders.h"
#include "system/Paths.h"
#include "system/Process.h"

#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr const char* kLogName = "FileAccessErrorLog.txt";

// The number of the run's process follows.
constexpr const char* kNameBeginning = "imgband-";

void RemoveLogsOfDeadRuns(const std::string& szParent)
{
    const std::size_t nBeginning = std::strlen(kNameBeginning);
    std::error_code error;
    for (fs::directory_iterator entry(os::PathOf(szParent), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string szName = os::TextOf(entry->path().filename());
        const int nProcess = szName.starts_with(kNameBeginning) ? std::atoi(szName.c_str() + nBeginning) : 0;
        if (nProcess > 0 && !os::IsRunning(nProcess))
            ErrorLog::Remove(os::TextOf(entry->path()) + "/");
    }
}

} // namespace

// Nobody can foresee the name and put a link there, even in a folder that others can write to.
ErrorLog::ErrorLog(const std::string& szParent)
{
    const std::string szName =
        os::UnusedName(fmt::format("/{}{}-", kNameBeginning, os::ProcessNumber())) + "/";
    m_szFolder = szParent + szName;
    RemoveLogsOfDeadRuns(szParent);
    SetErrLogPath((os::LibraryFolder(szParent).value_or(szParent) + szName).c_str());
}

ErrorLog::~ErrorLog()
{
    Remove(m_szFolder);
}

std::optional<LoggedError> ErrorLog::LastError() const
{
    static constexpr std::string_view kMark = "):LastError=";
    std::optional<LoggedError> last;
    std::ifstream log(os::PathOf(m_szFolder + kLogName));
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
    fs::remove(os::PathOf(szFolder + kLogName), error);
    fs::remove(os::PathOf(szFolder.substr(0, szFolder.find_last_not_of('/') + 1)), error);
}
