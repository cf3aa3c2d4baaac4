#pragma once
// Open files, and what the tool asks about files and disks.
//
// Paths are UTF-8, see Paths.h. Failures are thrown as std::system_error unless told otherwise. The main
// thread uses this.

#include "Platform/PlatformTypes.h"

#include <cstdint>
#include <string>

namespace os {

/// An open file, closed by its destructor.
class File
{
public:
    /// Opens a file that exists. What is no regular file may be opened too.
    /// @param bAlsoWrite  also open for writing, which writable views of the file need
    static File OpenForReading(const std::string& szPath, bool bAlsoWrite);

    /// Creates an empty file of a new name in a folder, open for reading and writing. An interrupt removes it
    /// until it is published or discarded. There can be one such file at a time.
    /// @param szPath  receives the file's path
    static File CreateProvisional(const std::string& szFolder, std::string& szPath);

    File(File&& other) noexcept;
    File& operator=(File&&) = delete;
    ~File();

    /// For the library, which never closes it, except after a failed mapping. Null once the file is closed.
    HANDLE Handle() const { return m_hFile; }

    /// Bytes in the file.
    std::int64_t Size() const;

    /// Reads nBytes from byte nOffset on, and returns how many there were: fewer only at the end of the file.
    std::size_t ReadAt(std::int64_t nOffset, void* pBuffer, std::size_t nBytes) const;

    /// Writes nBytes behind those that were written before.
    void Append(const void* pData, std::size_t nBytes);

    /// Returns when the file's bytes are on the disk.
    void Flush();

    /// Closes the file early; it must be open. Throws if the system reports a failed write only now.
    void Close();

private:
    explicit File(HANDLE hFile) : m_hFile(hFile) {}

    HANDLE m_hFile; ///< null: closed
};

/// Gives a provisional file its final name. A file that has the name is replaced; Windows does so only when
/// nobody has it open.
/// @param szProvisional  flushed and closed
void Publish(const std::string& szProvisional, const std::string& szTarget);

/// Removes a provisional file. What cannot be removed stays.
void Discard(const std::string& szProvisional) noexcept;

/// Whether this user may write to a file, or make files in a folder. Never throws.
bool MayWrite(const std::string& szPath);

/// The path of a file that exists, with all links followed.
std::string RealPath(const std::string& szPath);

/// Bytes that this user may still write to the disk of a folder; the largest number when that is unknown.
/// Never throws.
std::uintmax_t FreeBytes(const std::string& szFolder);

/// Largest number of bytes that a file of this process may have. Never throws.
std::uintmax_t FileSizeLimit();

/// Whether a file can have this name. Windows reserves some names for devices, and forbids some characters.
bool IsFileName(const std::string& szPath);

} // namespace os
