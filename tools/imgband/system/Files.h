#pragma once
// Open files, and what the tool asks about files and disks.
//
// Paths are UTF-8, see Paths.h. Failures are thrown as std::system_error unless told otherwise. The main
// thread uses this.

#include "Platform/PlatformTypes.h"

#include <cstdint>
#include <string>
#include <utility>

namespace os {

/// An open file, closed by its destructor.
class File
{
public:
    /// Opens a file that exists. What is no regular file may be opened too.
    /// @param bAlsoWrite  also open for writing, which writable views of the file need
    static File OpenForReading(const std::string& szPath, bool bAlsoWrite);

    /// Creates an empty file in a folder, open for reading and writing, that vanishes unless it is published.
    /// It has no name where the system can do that. Elsewhere it has a provisional one and is locked; an
    /// interrupt removes it. There can be one such file at a time.
    static File CreateProvisional(const std::string& szFolder);

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

    /// Gives this file the permissions of another one, as far as the system lets it.
    void TakePermissions(const std::string& szFrom);

    /// Puts a provisional file's bytes on the disk, gives it its final name, and closes it. A file that has
    /// the name is replaced; Windows does so only when nobody has it open.
    void Publish(const std::string& szTarget);

    /// Closes the file early; it must be open. Throws if the system reports a failed write only now.
    void Close();

private:
    explicit File(HANDLE hFile, std::string szProvisional = {})
        : m_hFile(hFile), m_szProvisional(std::move(szProvisional))
    {
    }
    void Rename(const std::string& szTarget);
    void Discard() noexcept;

    HANDLE m_hFile;              ///< null: closed
    std::string m_szProvisional; ///< the name that the destructor removes; empty for none
};

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
