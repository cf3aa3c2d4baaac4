#pragma once
// The picture file that a command reads.

#include "pictures/BitmapFile.h"
#include "system/Files.h"
#include "values/Failure.h"
#include "values/PictureRequest.h"
#include "values/RunSettings.h"

#include <string>

/// An open input whose header was read and agrees with the file's size and the request. Its operations throw
/// Failure (BadInput; the constructor also WrongCommandLine).
class InputFile
{
public:
    InputFile(const InputRequest& request, const RunSettings& settings);

    const PictureFacts& Facts() const { return m_facts; }

    /// As the user gave it.
    const std::string& Path() const { return m_szPath; }

    /// For the library, which does not own it.
    HANDLE Handle() const { return m_file.Handle(); }

    /// The file's bytes up to the end of the last line.
    std::int64_t PictureEnd() const;

    /// Throws when the file has become too short for its picture: the library would take what is missing for
    /// zeros.
    void CheckWhole() const;

    /// From here on, bytes of a view that are gone interrupt the run: it ends with BadInput. The program that
    /// finishes it gets the file's path and PictureEnd.
    void EndRunWhenLost() const;

    /// What is told of such a run.
    static Failure Lost(const std::string& szPath, std::int64_t nPictureEnd);

    /// Fills a block with the first nBytes of the file. Throws when the picture is not whole.
    void ReadWhole(unsigned char* pBlock, std::size_t nBytes) const;

    /// Closes the file early, when nothing more is read.
    void Close();

private:
    PictureFacts Identify(const InputRequest& request) const;

    std::string m_szPath;
    os::File m_file;
    PictureFacts m_facts;
};
