// The header that lies ahead of a bitmap's pixels. Its fields are little-endian.

#include "MemoryManager/layout/BitmapHeader.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/layout/BufferLayout.h"
#include "Platform/Platform.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr char kUnit[] = "MemoryManager/ImgObjUty";

// Statements that report to the error log.
constexpr int kLineNoFileHeader = 1475;
constexpr int kLineNoInfoHeader = 1480;
constexpr int kLineNoAddress = 1490;

constexpr DWORD kFileHeaderBytes = 14;
constexpr DWORD kInfoHeaderBytes = 40;
static_assert(kFileHeaderBytes + kInfoHeaderBytes == MM_BITMAP_HEADER_BYTES);

DWORD AppendHeader(HANDLE hFile, const BitmapHeader& header)
{
    if (!AppendByViews(hFile, header.data(), kFileHeaderBytes))
        return FailFileAccess(kUnit, kLineNoFileHeader);
    if (!AppendByViews(hFile, header.data() + kFileHeaderBytes, kInfoHeaderBytes))
        return FailFileAccess(kUnit, kLineNoInfoHeader);
    return MM_SUCCESS;
}

DWORD StoreHeader(void* pAt, const BitmapHeader& header)
{
    if (pAt == nullptr)
        return FailFileAccess(kUnit, kLineNoAddress);
    std::memcpy(pAt, header.data(), header.size());
    return MM_SUCCESS;
}

} // namespace

void PutHeaderField(BitmapHeader& header, std::size_t nAt, int nBytes, DWORD nValue)
{
    for (int i = 0; i < nBytes; ++i)
        header[nAt + static_cast<std::size_t>(i)] = static_cast<BYTE>(nValue >> 8 * i);
}

BitmapHeader MakeBitmapHeader(int nWidth, int nHeight, int nPixelBytes)
{
    const std::int64_t nLineBytes = PaddedLine(std::int64_t{nWidth} * nPixelBytes);
    const DWORD nPicture = static_cast<DWORD>(nLineBytes) * static_cast<DWORD>(nHeight);
    BitmapHeader header{'B', 'M'};
    PutHeaderField(header, 2, 4, MM_BITMAP_HEADER_BYTES + nPicture);
    PutHeaderField(header, 10, 4, MM_BITMAP_HEADER_BYTES);
    PutHeaderField(header, 14, 4, kInfoHeaderBytes);
    PutHeaderField(header, 18, 4, static_cast<DWORD>(nWidth));
    PutHeaderField(header, 22, 4, static_cast<DWORD>(nHeight)); // positive: lines from bottom to top
    PutHeaderField(header, 26, 2, 1);                           // planes
    PutHeaderField(header, 28, 2, static_cast<DWORD>(nPixelBytes) * 8);
    PutHeaderField(header, 34, 4, nPicture);
    return header;
}

DWORD WriteBmpHeader(HANDLE hData, int nWidth, int nHeight, int nSamples, tag_E_ACSTYPE eAccess, HANDLE hMap)
{
    const BitmapHeader header = MakeBitmapHeader(nWidth, nHeight, nSamples == 3 ? 3 : 4);
    switch (eAccess) {
    case ACS_MMF: {
        void* pView = MapFileRange(hData, hMap, 0, MM_BITMAP_HEADER_BYTES, 1);
        const DWORD nResult = StoreHeader(pView, header);
        if (pView != nullptr)
            UnmapView(pView);
        return nResult;
    }
    case ACS_MEMORY:
        if (hData == nullptr)
            SetLastError(ERROR_INVALID_HANDLE);
        return StoreHeader(hData, header);
    case ACS_FILEIO:
        return AppendHeader(hData, header);
    case ACS_NONE:
        break;
    }
    return MM_SUCCESS;
}
