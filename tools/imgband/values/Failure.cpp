// The words of a failure: what it was about, how much was missing, the library's code and what to try.

#include "values/Failure.h"

#include "MemoryManager/ResultCodes.h"

#include <fmt/format.h>

namespace {

const char* SystemErrorText(int nError)
{
    switch (nError) {
    case 2:
    case 3:
        return "not found";
    case 5:
        return "no permission";
    case 8:
        return "not enough memory";
    case 32:
        return "in use by another process";
    case 39:
    case 112:
        return "disk full";
    case 223:
        return "the process's file-size limit was reached (ulimit -f)";
    default:
        return "";
    }
}

std::string LibraryText(const LibraryResult& result)
{
    std::string szText;
    if (result.nSystemError) {
        const char* pszMeaning = SystemErrorText(*result.nSystemError);
        szText =
            fmt::format("system error {}{}{}; ", *result.nSystemError, *pszMeaning ? ", " : "", pszMeaning);
    }
    return fmt::format(" ({}code {}, {})", szText, result.nCode, MM_ResultText(result.nCode));
}

} // namespace

std::string Failure::Message() const
{
    std::string szText = szFile.empty() ? szWhat : fmt::format("{}: {}", szFile, szWhat);
    if (room)
        szText += fmt::format(": wanted {} bytes, available {} bytes", room->nWanted, room->nAvailable);
    if (libraryResult)
        szText += LibraryText(*libraryResult);
    if (!szTry.empty())
        szText += fmt::format("; try {}", szTry);
    return szText;
}

std::string ErrorText(const std::error_code& error)
{
    const std::error_condition condition = error.default_error_condition();
    return condition.category() == std::generic_category() ? condition.message() : error.message();
}

ExitStatus StatusOfWriteError(const std::error_code& error)
{
    const std::errc noRoom[] = {std::errc::no_space_on_device,     std::errc::file_too_large,
                                std::errc::permission_denied,      std::errc::operation_not_permitted,
                                std::errc::read_only_file_system,  std::errc::no_such_file_or_directory,
                                std::errc::not_a_directory,        std::errc::is_a_directory,
                                std::errc::filename_too_long,      std::errc::too_many_symbolic_link_levels,
                                std::errc::device_or_resource_busy};
    for (const std::errc eCondition : noRoom)
        if (error == eCondition)
            return ExitStatus::NoRoom;
    return ExitStatus::JobFailed;
}
