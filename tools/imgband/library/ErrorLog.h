#pragma once
// What the library wrote to its error log.

#include <optional>
#include <string>

/// A failed file operation as the library recorded it.
struct LoggedError
{
    std::string szUnit; ///< source unit of the library
    int nSystemError;
};

/// The log of this run alone. The library makes its folder when it has something to record; the destructor
/// removes both.
class ErrorLog
{
public:
    /// Gives the library's log a new folder in szParent, and removes the logs there that killed runs left.
    explicit ErrorLog(const std::string& szParent);
    ~ErrorLog();
    ErrorLog(const ErrorLog&) = delete;
    ErrorLog& operator=(const ErrorLog&) = delete;

    const std::string& Folder() const { return m_szFolder; }

    /// The last entry of this run; none when the library recorded nothing, or could not write the log.
    std::optional<LoggedError> LastError() const;

    /// Removes a run's log and its folder.
    static void Remove(const std::string& szFolder);

private:
    std::string m_szFolder; ///< with a trailing separator
};
