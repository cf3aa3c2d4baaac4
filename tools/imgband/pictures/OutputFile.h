#pragma once
// The picture file that a command writes.

#include "system/Files.h"

#include <cstdint>
#include <string>

/// A file that appears under its name whole, or not at all. It is written without a name, or under a
/// provisional one beside the target; unless it was published, it vanishes with this object or the process.
/// One at a time.
class OutputFile
{
public:
    /// Creates the file, and removes what killed runs left beside it. A target that is a link stands for what
    /// it leads to. Throws Failure.
    explicit OutputFile(const std::string& szPath);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// As the user gave it.
    const std::string& Path() const { return m_szPath; }

    /// For the library, which does not own it.
    HANDLE Handle() const { return m_file.Handle(); }

    /// Bytes that a file in its folder can have now: the disk's room, or the process's file-size limit.
    std::uintmax_t AvailableBytes() const;

    /// Throws Failure (NoRoom) when nBytes more do not fit.
    void CheckRoom(std::int64_t nBytes) const;

    /// Writes nBytes behind those that were written before. Throws Failure.
    void Append(const unsigned char* pData, std::size_t nBytes);

    /// Flushes the file, closes it, and gives it its name. Throws Failure.
    void Publish();

private:
    std::string m_szPath;   ///< as the user gave it
    std::string m_szTarget; ///< what it leads to
    os::File m_file;
};
