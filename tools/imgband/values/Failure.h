#pragma once
// How a run of the tool ends when it does not succeed.

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <system_error>

/// Exit statuses of the program; a signal adds 128 + its number (129, 130, 135, 143).
enum class ExitStatus : int
{
    Done = 0,
    JobFailed = 1,
    WrongCommandLine = 2,
    BadInput = 3, ///< input missing, unreadable, corrupt or unsupported
    NoRoom = 4,   ///< no room or no permission for output or temporary files
};

/// Bytes that are needed on a disk or of the budget, and bytes that there are.
struct Room
{
    std::uintmax_t nWanted;
    std::uintmax_t nAvailable;
};

/// A result of the library, with the system's error behind it where that is known.
struct LibraryResult
{
    std::uint32_t nCode;
    std::optional<int> nSystemError;
};

/// Why a run ends. Commands throw it; main prints it and turns it into the exit status.
struct Failure : std::exception
{
    Failure(ExitStatus eExit, std::string szName, std::string szReason, std::string szHint = {})
        : eStatus(eExit), szFile(std::move(szName)), szWhat(std::move(szReason)), szTry(std::move(szHint))
    {
    }

    const char* what() const noexcept override { return szWhat.c_str(); }

    /// The whole sentence, without the program's name.
    std::string Message() const;

    ExitStatus eStatus;
    std::string szFile; ///< the file or folder it is about; empty for none
    std::string szWhat; ///< what was wrong
    std::string szTry;  ///< what to try; empty for nothing
    std::optional<Room> room;
    std::optional<LibraryResult> libraryResult;
};

/// The text of an error: that of its portable meaning where it has one, so that it is the same on every
/// system.
std::string ErrorText(const std::error_code& error);

/// The status of a run that fails by a system error on an output or temporary file: NoRoom for missing room
/// and permission, else JobFailed.
ExitStatus StatusOfWriteError(const std::error_code& error);
