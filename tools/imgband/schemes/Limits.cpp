// What fits the library's 32 bits.

#include "schemes/Limits.h"

#include "pictures/Formats.h"
#include "values/Failure.h"

#include <fmt/format.h>

namespace {

constexpr int kImportMargin = 16; // of the objects that the library's import makes

std::int64_t HeaderBytes(Format eFormat)
{
    return IsBitmap(eFormat) ? kBitmapHeaderBytes : 0;
}

/// Whether an object can hold a picture with a margin around it.
bool FitsObject(ImageSize size, int nMargin, Format eFormat)
{
    CImageObj object;
    int nBytes = 0, nLineBytes = 0, nWidth = 0, nHeight = 0;
    return object.CalcImgBufLrg(nBytes, nLineBytes, nWidth, nHeight, size.nWidth, size.nHeight, nMargin,
                                nMargin, ObjectFormat(SampleBytes(eFormat)), MM_ALIGN_LINES) == MM_SUCCESS;
}

/// @param nAhead  bytes ahead of the picture's lines
bool Fits(Scheme eScheme, Format eFormat, ImageSize size, std::int64_t nAhead, int nFrame)
{
    const std::int64_t nStored = FileBytes(eFormat, size) - HeaderBytes(eFormat);
    if (eScheme == Scheme::Unit) // objects hold one band, the smallest of which has one line
        return nStored <= std::int64_t{UINT32_MAX} - nAhead && FitsObject({size.nWidth, 1}, nFrame, eFormat);
    return nStored <= INT32_MAX - nAhead && FitsObject(size, kImportMargin, eFormat);
}

[[noreturn]] void FailTooLarge(Scheme eScheme, ExitStatus eStatus, const std::string& szPath, ImageSize size)
{
    const char* pszLimit = eScheme == Scheme::Unit
                               ? "a file may have 4 GiB - 1, and a line with its frame 2 GiB - 1"
                               : "with its margins, a picture may take 2 GiB - 1 at each stage of its way as "
                                 "a whole";
    throw Failure(eStatus, szPath,
                  fmt::format("{} x {} pixels are too many: {}", size.nWidth, size.nHeight, pszLimit));
}

} // namespace

void CheckInputSize(Scheme eScheme, const InputFile& input, int nFrame)
{
    const PictureFacts& facts = input.Facts();
    if (!Fits(eScheme, facts.eFormat, facts.size, facts.nOffset, nFrame))
        FailTooLarge(eScheme, ExitStatus::BadInput, input.Path(), facts.size);
}

void CheckOutputSize(Scheme eScheme, const std::string& szPath, Format eFormat, ImageSize size, int nFrame)
{
    if (!Fits(eScheme, eFormat, size, HeaderBytes(eFormat), nFrame))
        FailTooLarge(eScheme, ExitStatus::WrongCommandLine, szPath, size);
}

std::int64_t BlocksInBudget(const Library& library, const BlockBytes& blocks)
{
    library.CheckBudget("--access memory holds whole pictures", blocks.Sum(),
                        "--access file, or a larger --budget");
    return blocks.Sum();
}
