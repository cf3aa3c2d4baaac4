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

/// A log of this run's own, in a folder that the library makes when it has something to record and that the
/// destructor removes.
class ErrorLog
{
public:
    /// Sets the library's log to a new folder name in szParent, and removes there what killed runs left.
    explicit ErrorLog(const std::string& szParent);
    ~ErrorLog();
    ErrorLog(const ErrorLog&) = delete;
    ErrorLog& operator=(const ErrorLog&) = delete;

    const std::string& Folder() const { return m_szFolder; }

    /// The last entry of this run; none when the library recorded nothing, or could not.
    std::optional<LoggedError> LastError() const;

    /// Removes a run's log and its folder.
    static void Remove(const std::string& szFolder);

private:
    std::string m_szFolder; ///< with a trailing separator
};
