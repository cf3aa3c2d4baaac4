// Reading a bitmap's header, trusting none of it.

#include "pictures/BitmapFile.h"

#include "values/Failure.h"

#include <fmt/format.h>

namespace {

// Positions of the fields in the file. The information header follows the file header.
constexpr std::size_t kAtPixelOffset = 10;
constexpr std::size_t kAtInfoBytes = 14;
constexpr std::size_t kAtWidth = 18;
constexpr std::size_t kAtHeight = 22;
constexpr std::size_t kAtPlanes = 26;
constexpr std::size_t kAtBits = 28; // of a pixel
constexpr std::size_t kAtCompression = 30;

constexpr std::int64_t kFileHeaderBytes = kAtInfoBytes;

std::uint32_t Word16(std::span<const unsigned char> head, std::size_t nAt)
{
    return static_cast<std::uint32_t>(head[nAt] | head[nAt + 1] << 8);
}

std::uint32_t Word32(std::span<const unsigned char> head, std::size_t nAt)
{
    return Word16(head, nAt) | Word16(head, nAt + 2) << 16;
}

std::int32_t Signed32(std::span<const unsigned char> head, std::size_t nAt)
{
    return static_cast<std::int32_t>(Word32(head, nAt));
}

[[noreturn]] void Refuse(const std::string& szPath, const std::string& szWhat)
{
    throw Failure(ExitStatus::BadInput, szPath, szWhat);
}

void RefuseForeignHeader(const std::string& szPath, std::uint32_t nInfoBytes)
{
    switch (nInfoBytes) {
    case 40: // the common one; its longer successors begin with the same fields
    case 52:
    case 56:
    case 108:
    case 124:
        return;
    case 12:
    case 16:
    case 64:
        Refuse(szPath, "OS/2 bitmap headers are not supported");
    default:
        Refuse(szPath, fmt::format("unknown bitmap header of {} bytes", nInfoBytes));
    }
}

void RefuseForeignPixels(const std::string& szPath, std::uint32_t nBits, std::uint32_t nCompression)
{
    switch (nCompression) {
    case 0:
        break;
    case 1:
    case 2:
        Refuse(szPath, "run-length bitmaps are not supported");
    case 3:
    case 6:
        Refuse(szPath, "bit-field bitmaps are not supported");
    default:
        Refuse(szPath, fmt::format("bitmap compression {} is not supported", nCompression));
    }
    switch (nBits) {
    case 24:
    case 32:
        return;
    case 1:
    case 2:
    case 4:
    case 8:
        Refuse(szPath, fmt::format("bitmaps with a palette ({} bits a pixel) are not supported", nBits));
    case 16:
        Refuse(szPath, "16-bit bitmaps are not supported");
    default:
        Refuse(szPath, fmt::format("{} bits a pixel are not supported", nBits));
    }
}

} // namespace

bool HasBitmapSignature(std::span<const unsigned char> head)
{
    return head.size() >= 2 && head[0] == 'B' && head[1] == 'M';
}

PictureFacts ParseBitmapHeader(const std::string& szPath, std::span<const unsigned char> head,
                               std::int64_t nFileBytes)
{
    if (head.size() < kAtInfoBytes + sizeof(std::uint32_t))
        Refuse(szPath, "the bitmap ends inside its header");
    const std::uint32_t nInfoBytes = Word32(head, kAtInfoBytes);
    RefuseForeignHeader(szPath, nInfoBytes);
    if (head.size() < kHeaderPeek)
        Refuse(szPath, "the bitmap ends inside its header");

    const std::int64_t nOffset = Word32(head, kAtPixelOffset);
    const int nWidth = Signed32(head, kAtWidth);
    const int nHeight = Signed32(head, kAtHeight);
    const std::uint32_t nPlanes = Word16(head, kAtPlanes);
    const std::uint32_t nBits = Word16(head, kAtBits);
    RefuseForeignPixels(szPath, nBits, Word32(head, kAtCompression));
    if (nPlanes != 1)
        Refuse(szPath, fmt::format("the bitmap header names {} planes instead of 1", nPlanes));
    if (nWidth <= 0 || nHeight == 0 || nHeight == INT32_MIN)
        Refuse(szPath, fmt::format("the bitmap header gives an impossible size of {} x {}", nWidth, nHeight));
    if (nOffset < kFileHeaderBytes + std::int64_t{nInfoBytes})
        Refuse(szPath,
               fmt::format("the bitmap header puts its lines at byte {}, inside the header", nOffset));

    PictureFacts facts{nBits == 24 ? Format::Bgr24 : Format::Bgra32,
                       {nWidth, nHeight < 0 ? -nHeight : nHeight},
                       nHeight > 0,
                       nOffset,
                       nFileBytes};
    const std::int64_t nLines = FileBytes(facts.eFormat, facts.size) - kBitmapHeaderBytes;
    if (nOffset > nFileBytes || nLines > nFileBytes - nOffset)
        Refuse(szPath,
               fmt::format("the file has {} bytes, but its header promises {} x {} pixels from byte {} on, "
                           "which take {} bytes",
                           nFileBytes, nWidth, facts.size.nHeight, nOffset, nLines));
    return facts;
}
