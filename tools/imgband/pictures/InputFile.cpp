// Opening an input and finding out what it is.

#include "pictures/InputFile.h"

#include "system/Paths.h"
#include "values/Failure.h"

#include <fmt/format.h>

namespace {

[[noreturn]] void FailReading(const std::string& szPath, const std::error_code& error,
                              const char* pszTry = "")
{
    throw Failure(ExitStatus::BadInput, szPath, "cannot be read: " + ErrorText(error), pszTry);
}

os::File Open(const Options& options)
{
    const std::string& szPath = options.szInput;
    // Whole pictures are read through writable views, bands through views for reading.
    const bool bViews = options.eAccess == Access::Mmap && options.eScheme == Scheme::Whole && !options.bPlan;
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

PictureFacts RawFacts(const Options& options, Format eFormat, std::int64_t nFileBytes)
{
    if (!options.size)
        throw Failure(ExitStatus::WrongCommandLine, options.szInput, "the size of a raw picture is not known",
                      "--size WxH");
    const PictureFacts facts{eFormat, *options.size, false, 0, nFileBytes};
    const std::int64_t nPromised = FileBytes(eFormat, facts.size);
    if (nFileBytes != nPromised)
        throw Failure(ExitStatus::BadInput, options.szInput,
                      fmt::format("the file has {} bytes, but {} x {} pixels of {} take {}", nFileBytes,
                                  facts.size.nWidth, facts.size.nHeight, FormatName(eFormat), nPromised),
                      "another --size or --from");
    return facts;
}

void RefuseContradiction(const Options& options, const PictureFacts& facts)
{
    if (options.eFrom && *options.eFrom != facts.eFormat)
        throw Failure(
            ExitStatus::BadInput, options.szInput,
            fmt::format("is a {} bitmap, not {}", FormatName(facts.eFormat), FormatName(*options.eFrom)),
            "without --from");
    if (options.size &&
        (options.size->nWidth != facts.size.nWidth || options.size->nHeight != facts.size.nHeight))
        throw Failure(ExitStatus::BadInput, options.szInput,
                      fmt::format("is a bitmap of {} x {} pixels, not {} x {}", facts.size.nWidth,
                                  facts.size.nHeight, options.size->nWidth, options.size->nHeight),
                      "without --size");
}

} // namespace

InputFile::InputFile(const Options& options)
    : m_szPath(options.szInput), m_file(Open(options)), m_facts(Identify(options))
{
}

PictureFacts InputFile::Identify(const Options& options) const
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
    if (options.eFrom && !IsBitmap(*options.eFrom))
        return RawFacts(options, *options.eFrom, nFileBytes);
    if (!HasBitmapSignature({head, nHead}))
        throw Failure(ExitStatus::BadInput, m_szPath, "is not a bitmap",
                      "--from raw48 or raw64 and --size WxH for a raw picture");
    const PictureFacts facts = ParseBitmapHeader(m_szPath, {head, nHead}, nFileBytes);
    RefuseContradiction(options, facts);
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
        throw Failure(ExitStatus::BadInput, m_szPath,
                      fmt::format("became shorter while it was read: the picture takes {} bytes, {} are left",
                                  PictureEnd(), nNow));
}

void InputFile::ReadWhole(unsigned char* pBlock, std::size_t nBytes) const
{
    try {
        if (m_file.ReadAt(0, pBlock, nBytes) != nBytes)
            CheckWhole();
    } catch (const std::system_error& e) {
        FailReading(m_szPath, e.code());
    }
}
