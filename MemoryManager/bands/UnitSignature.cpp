// Finding where the pixels of a bitmap source begin: at a fixed distance behind the bitmap's signature.

#include "MemoryManager/CImageObj.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/base/ScratchBlock.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>

namespace {

constexpr char kUnit[] = "MemoryManager/CImageObj";

// The statement that reports to the error log.
constexpr int kLineSearchSeek = 720;

constexpr int kNotFound = -1;

/// Index of the first signature that lies whole in nBytes bytes, or kNotFound.
std::ptrdiff_t SignatureIn(const unsigned char* pBytes, std::size_t nBytes)
{
    constexpr unsigned char kSignature[] = {'B', 'M'};
    const unsigned char* pEnd = pBytes + nBytes;
    const unsigned char* pFound = std::search(pBytes, pEnd, std::begin(kSignature), std::end(kSignature));
    return pFound == pEnd ? kNotFound : pFound - pBytes;
}

/// Sets the offset of the pixels, which follow a header at nHeader. Refused when they lie beyond 32 bits.
DWORD SetPixelsBehind(std::int64_t nHeader, T_ImgInf& in)
{
    const std::int64_t nPixels = nHeader + MM_BITMAP_HEADER_BYTES;
    if (nPixels > std::numeric_limits<DWORD>::max())
        return MM_BAD_ARGUMENT;
    in.nOffset = static_cast<int>(static_cast<DWORD>(nPixels));
    return MM_SUCCESS;
}

/// The largest block that has a position and an address for each of its bytes.
constexpr std::int64_t kLargestBlock =
    std::min<std::int64_t>(std::numeric_limits<DWORD>::max(), std::numeric_limits<std::ptrdiff_t>::max());

DWORD SearchBlock(T_ImgInf& in, std::int64_t nBytes)
{
    if (nBytes < 1 || nBytes > kLargestBlock)
        return MM_BAD_ARGUMENT;
    const auto nFound =
        SignatureIn(static_cast<const unsigned char*>(in.hData), static_cast<std::size_t>(nBytes));
    return nFound == kNotFound ? DWORD{MM_BAD_ARGUMENT} : SetPixelsBehind(nFound, in);
}

/// Searches the file from its start, one piece of nPieceBytes after the other, until a read fails or the file
/// ends. A signature that lies in two pieces is not found.
DWORD SearchFile(T_ImgInf& in, std::int64_t nPieceBytes)
{
    if (!SeekFile(in.hData, 0))
        return FailFileAccess(kUnit, kLineSearchSeek);
    if (nPieceBytes < 1)
        return MM_BAD_ARGUMENT;
    const ScratchBlock piece(nPieceBytes);
    if (!piece.Data())
        return MM_NO_MEMORY;
    DWORD nDone = 0;
    for (std::int64_t nPosition = 0;; nPosition += nDone) {
        if (!ReadFile(in.hData, piece.Data(), static_cast<DWORD>(nPieceBytes), &nDone, nullptr) || nDone == 0)
            return MM_BAD_ARGUMENT;
        const auto nFound = SignatureIn(piece.Data(), nDone);
        if (nFound != kNotFound)
            return SetPixelsBehind(nPosition + nFound, in);
    }
}

} // namespace

DWORD CImageObj::CalcOffsetLength()
{
    if (!m_InImgInf.hData)
        return MM_SUCCESS;
    const std::int64_t nLine = std::int64_t{SampleBytesOf(m_InImgInf.nSrcFormat)} *
                               SamplesOf(m_InImgInf.nSrcFormat) * m_InImgInf.nWidth;
    if (m_InImgInf.nFileType != MM_FILE_BITMAP || nLine < 0 || nLine > std::numeric_limits<int>::max())
        return MM_BAD_ARGUMENT;
    switch (m_InImgInf.eAcsType) {
    case ACS_MEMORY:
        return SearchBlock(m_InImgInf, nLine * m_InImgInf.nHeight);
    case ACS_FILEIO:
        return SearchFile(m_InImgInf, nLine);
    default:
        return MM_BAD_ARGUMENT;
    }
}
