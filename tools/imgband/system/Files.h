#pragma once
// All that the tool asks of the operating system beyond the standard library.
//
// Failures of files are thrown as std::system_error. One thread uses this, except where told otherwise.

#include "Platform/PlatformTypes.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace os {

/// Readies the process before any file is opened: no file can get the number that means "none", and a
/// file-size limit or a closed pipe is an error to report instead of the program's end. What is written to
/// the standard streams arrives byte for byte.
void PrepareProcess();

/// The program's arguments in UTF-8, without its own name.
std::vector<std::string> Arguments(int nArguments, char** ppArguments);

/// From here on an interrupt removes the provisional file and starts the program again in place of this run,
/// with these arguments behind the exit status, so that the new run cleans up what this one held. On Windows
/// an interrupt is Ctrl-C or Ctrl-Break (status 130) or the console's end (143), and this process waits for
/// the new one, whose exit status it takes. There no argument has a quotation mark or ends with a backslash.
void RestartOnInterrupt(const std::string& szCommand, const std::vector<std::string>& arguments);

/// The outcome of the run stands and may be told. On Windows, where an interrupt has a thread of its own, one
/// that has begun never lets this return, and later ones wait for the program's end.
void SettleOutcome();

/// An open file, closed by its destructor.
class File
{
public:
    /// @param bAlsoWrite  also open for writing, which views of the file need
    static File OpenForReading(const std::string& szPath, bool bAlsoWrite);

    /// Creates an empty file of a new name in a folder, open for reading and writing, and gives its path. It
    /// vanishes on an interrupt until it is published or discarded. One at a time.
    static File CreateProvisional(const std::string& szFolder, std::string& szPath);

    File(File&& other) noexcept;
    File& operator=(File&&) = delete;
    ~File();

    /// For the library, which never closes it, except after a failed mapping.
    HANDLE Handle() const { return m_hFile; }

    std::int64_t Size() const;

    /// Reads nBytes from nOffset on; fewer only at the end of the file.
    std::size_t ReadAt(std::int64_t nOffset, void* pBuffer, std::size_t nBytes) const;

    void Append(const void* pData, std::size_t nBytes);

    /// Has the file's bytes on the disk when it returns.
    void Flush();
    void Close();

private:
    explicit File(HANDLE hFile) : m_hFile(hFile) {}

    HANDLE m_hFile; ///< null: closed
};

/// Gives a provisional file, closed and flushed, its final name; a file that has the name is replaced, for
/// which Windows wants it closed.
void Publish(const std::string& szProvisional, const std::string& szTarget);

/// Removes a provisional file.
void Discard(const std::string& szProvisional) noexcept;

bool MayWrite(const std::string& szPath);

/// Where a file that exists is, behind all links.
std::string RealPath(const std::string& szPath);

/// Bytes that this user may still write to the disk of a folder; the largest number when unknown.
std::uintmax_t FreeBytes(const std::string& szFolder);

/// Whether a file can have this name. Windows keeps some for devices, and does not take some characters.
bool IsFileName(const std::string& szPath);

/// Largest number of bytes that a file of this process may have.
std::uintmax_t FileSizeLimit();

/// A folder that exists as the library takes it, which on Windows are bytes of the system's code page; none
/// if it has no such name, not even a short one.
std::optional<std::string> LibraryFolder(const std::string& szFolder);

/// The folder of the library's temporary files; SetTemporaryFolder changes it before the library is used, and
/// tells whether the library takes it.
std::string TemporaryFolder();
bool SetTemporaryFolder(const std::string& szFolder);

/// A folder for small private files of the run, so that a full disk can still be written about and a killed
/// run leaves nothing in the temporary folder: in memory, on Windows the user's own; the temporary folder
/// where there is none that the library takes.
std::string RuntimeFolder();

/// Text of code page 932 in UTF-8, and back. What has no counterpart there becomes U+FFFD or '?'; where the
/// system does not know the code page, that is every byte above 0x7F.
std::string Utf8FromCp932(const std::string& szText);
std::string Cp932FromUtf8(const std::string& szText);

/// Writes text to a standard stream; a console shows it whatever its code page is.
void Print(std::FILE* pStream, const std::string& szText);

/// Whether what is written to a stream appears on a terminal that knows escape sequences.
bool IsTerminal(std::FILE* pStream);

/// Processors that this process may run on, at least 1.
int ProcessorCount();

/// This process's number, and whether a process of a number lives.
int ProcessNumber();
bool IsRunning(int nProcess);

/// Runs a function with a folder as the current one. Interrupts wait until the former is current again, for
/// the paths that they need start there. Throws std::system_error, or what the function throws.
void RunInFolder(const std::string& szFolder, const std::function<void()>& fnRun);

/// Starts a thread that interrupts never reach, so that they stay the main thread's.
std::jthread StartThread(std::function<void(std::stop_token)> fnRun);

/// Memory of the process that is resident now, in bytes; below 0 when unknown. Windows does not tell them
/// apart: there, private memory is what is committed, resident or not, and the rest of the resident is
/// mapped.
struct ResidentMemory
{
    std::int64_t nPrivate = -1; ///< anonymous
    std::int64_t nMapped = -1;  ///< pages of files and of shared memory, the program's own code among them
};

/// Any thread.
ResidentMemory Resident() noexcept;

} // namespace os
