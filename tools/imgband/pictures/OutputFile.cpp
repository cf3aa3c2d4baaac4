// Writing beside the target and naming it at the end.

#include "pictures/OutputFile.h"

#include "system/Leftovers.h"
#include "system/Paths.h"
#include "values/Failure.h"

#include <fmt/format.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace {

constexpr const char* kTryElsewhere = "another folder for OUT";

[[noreturn]] void FailWriting(const std::string& szPath, const char* pszWhat, const std::error_code& error)
{
    const ExitStatus eStatus = StatusOfWriteError(error);
    throw Failure(eStatus, szPath, fmt::format("{}: {}", pszWhat, ErrorText(error)),
                  eStatus == ExitStatus::NoRoom ? kTryElsewhere : "");
}

std::string FolderOf(const std::string& szPath)
{
    const std::string szFolder = os::TextOf(os::PathOf(szPath).parent_path());
    return szFolder.empty() ? "." : szFolder;
}

// The path that the output will have. Replacing what is not a regular file would destroy it, and a
// write-protected file is meant to stay.
std::string ResolveTarget(const std::string& szPath)
{
    if (!os::IsFileName(szPath))
        throw Failure(ExitStatus::NoRoom, szPath, "is no name for a file", "another name for OUT");
    const fs::path path = os::PathOf(szPath);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        if (fs::is_symlink(fs::symlink_status(path, error)))
            throw Failure(ExitStatus::NoRoom, szPath, "is a link to nothing", "another name for OUT");
        return szPath;
    }
    if (status.type() == fs::file_type::none)
        FailWriting(szPath, "cannot be written", error);
    if (!fs::is_regular_file(status))
        throw Failure(ExitStatus::NoRoom, szPath, "exists and is not a regular file", "another name for OUT");
    if (!os::MayWrite(szPath))
        throw Failure(ExitStatus::NoRoom, szPath, "exists and is write-protected", "another name for OUT");
    try {
        return os::RealPath(szPath);
    } catch (const std::system_error& e) {
        FailWriting(szPath, "cannot be written", e.code());
    }
}

os::File CreateBeside(const std::string& szPath, const std::string& szTarget)
{
    try {
        const std::string szFolder = FolderOf(szTarget);
        os::RemoveProvisionalLeftovers(szFolder);
        return os::File::CreateProvisional(szFolder);
    } catch (const std::system_error& e) {
        FailWriting(szPath, "cannot be created", e.code());
    }
}

} // namespace

OutputFile::OutputFile(const std::string& szPath)
    : m_szPath(szPath), m_szTarget(ResolveTarget(szPath)), m_file(CreateBeside(m_szPath, m_szTarget))
{
    m_file.TakePermissions(m_szTarget);
}

std::uintmax_t OutputFile::AvailableBytes() const
{
    return std::min(os::FreeBytes(FolderOf(m_szTarget)), os::FileSizeLimit());
}

void OutputFile::CheckRoom(std::int64_t nBytes) const
{
    const Room room{static_cast<std::uintmax_t>(nBytes), AvailableBytes()};
    if (room.nWanted <= room.nAvailable)
        return;
    const bool bLimit = os::FileSizeLimit() == room.nAvailable;
    Failure failure(ExitStatus::NoRoom, m_szPath,
                    bLimit ? "no room: the process's file-size limit (ulimit -f) is too low"
                           : "no room on the disk of the output",
                    bLimit ? "a higher ulimit -f" : kTryElsewhere);
    failure.room = room;
    throw failure;
}

void OutputFile::Append(const unsigned char* pData, std::size_t nBytes)
{
    try {
        m_file.Append(pData, nBytes);
    } catch (const std::system_error& e) {
        FailWriting(m_szPath, "cannot be written", e.code());
    }
}

void OutputFile::Publish()
{
    try {
        m_file.Publish(m_szTarget);
    } catch (const std::system_error& e) {
        FailWriting(m_szPath, "cannot be completed", e.code());
    }
}
