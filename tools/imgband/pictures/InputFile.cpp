// Opening an input and finding out what it is.

#include "pictures/InputFile.h"

#include "system/Interrupts.h"
#include "system/Paths.h"

#include <fmt/format.h>

namespace {

[[noreturn]] void FailReading(const std::string& szPath, const std::error_code& error,
                              const char* pszTry = "")
{
    throw Failure(ExitStatus::BadInput, szPath, "cannot be read: " + ErrorText(error), pszTry);
}

Failure BecameShorter(const std::string& szPath, std::int64_t nPictureEnd, std::int64_t nLeft)
{
    return Failure(ExitStatus::BadInput, szPath,
                   fmt::format("became shorter while it was read: the picture takes {} bytes, {} are left",
                               nPictureEnd, nLeft));
}

os::File Open(const std::string& szPath, const RunSettings& settings)
{
    // The library reads whole pictures through writable views, and bands through read-only ones.
    const bool bViews =
        settings.eAccess == Access::Mmap && settings.eScheme == Scheme::Whole && !settings.bPlan;
    try {
        os::File file = os::File::OpenForReading(szPath, bViews);
        std::error_code error;
        if (!std::filesystem::is_regular_file(os::PathOf(szPath), error))
            throw Failure(ExitStatus::BadInput, szPath, "is not a regular file");
        return file;
    } catch (const std::system_error& e) {
        FailReading(szPath, e.code(),
                    bViews ? "--scheme unit or --access file, which need no permission to write" : "");
    }
}

PictureFacts RawFacts(const InputRequest& request, Format eFormat, std::int64_t nFileBytes)
{
    if (!request.size)
        throw Failure(ExitStatus::WrongCommandLine, request.szPath, "the size of a raw picture is not known",
                      "--size WxH");
    const PictureFacts facts{eFormat, *request.size, false, 0, nFileBytes};
    const std::int64_t nPromised = FileBytes(eFormat, facts.size);
    if (nFileBytes != nPromised)
        throw Failure(ExitStatus::BadInput, request.szPath,
                      fmt::format("the file has {} bytes, but {} x {} pixels of {} take {}", nFileBytes,
                                  facts.size.nWidth, facts.size.nHeight, FormatName(eFormat), nPromised),
                      "another --size or --from");
    return facts;
}

void RefuseContradiction(const InputRequest& request, const PictureFacts& facts)
{
    if (request.eFormat && *request.eFormat != facts.eFormat)
        throw Failure(
            ExitStatus::BadInput, request.szPath,
            fmt::format("is a {} bitmap, not {}", FormatName(facts.eFormat), FormatName(*request.eFormat)),
            "without --from");
    if (request.size && *request.size != facts.size)
        throw Failure(ExitStatus::BadInput, request.szPath,
                      fmt::format("is a bitmap of {} x {} pixels, not {} x {}", facts.size.nWidth,
                                  facts.size.nHeight, request.size->nWidth, request.size->nHeight),
                      "without --size");
}

} // namespace

InputFile::InputFile(const InputRequest& request, const RunSettings& settings)
    : m_szPath(request.szPath), m_file(Open(m_szPath, settings)), m_facts(Identify(request))
{
}

PictureFacts InputFile::Identify(const InputRequest& request) const
{
    unsigned char head[kHeaderPeek];
    std::int64_t nFileBytes = 0;
    std::size_t nHead = 0;
    try {
        nFileBytes = m_file.Size();
        nHead = m_file.ReadAt(0, head, sizeof head);
    } catch (const std::system_error& e) {
        FailReading(m_szPath, e.code());
    }
    if (request.eFormat && !IsBitmap(*request.eFormat))
        return RawFacts(request, *request.eFormat, nFileBytes);
    if (!HasBitmapSignature({head, nHead}))
        throw Failure(ExitStatus::BadInput, m_szPath, "is not a bitmap",
                      "--from raw48 or raw64 and --size WxH for a raw picture");
    const PictureFacts facts = ParseBitmapHeader(m_szPath, {head, nHead}, nFileBytes);
    RefuseContradiction(request, facts);
    return facts;
}

std::int64_t InputFile::PictureEnd() const
{
    return m_facts.nOffset + LineBytes(m_facts.eFormat, m_facts.size.nWidth) * m_facts.size.nHeight;
}

void InputFile::CheckWhole() const
{
    std::int64_t nNow = 0;
    try {
        nNow = m_file.Size();
    } catch (const std::system_error& e) {
        FailReading(m_szPath, e.code());
    }
    if (nNow < PictureEnd())
        throw BecameShorter(m_szPath, PictureEnd(), nNow);
}

void InputFile::EndRunWhenLost() const
{
    os::RestartOnLostBytes(static_cast<int>(ExitStatus::BadInput), {m_szPath, std::to_string(PictureEnd())});
}

Failure InputFile::Lost(const std::string& szPath, std::int64_t nPictureEnd)
{
    std::error_code error;
    const std::uintmax_t nLeft = std::filesystem::file_size(os::PathOf(szPath), error);
    if (!error && static_cast<std::int64_t>(nLeft) < nPictureEnd)
        return BecameShorter(szPath, nPictureEnd, static_cast<std::int64_t>(nLeft));
    return Failure(ExitStatus::BadInput, szPath,
                   "could not be read: bytes of it were gone while it was mapped");
}

void InputFile::ReadWhole(unsigned char* pBlock, std::size_t nBytes) const
{
    try {
        const std::size_t nRead = m_file.ReadAt(0, pBlock, nBytes);
        if (nRead != nBytes)
            throw BecameShorter(m_szPath, PictureEnd(), static_cast<std::int64_t>(nRead));
    } catch (const std::system_error& e) {
        FailReading(m_szPath, e.code());
    }
}

void InputFile::Close()
{
    try {
        m_file.Close();
    } catch (const std::system_error& e) {
        FailReading(m_szPath, e.code());
    }
}
