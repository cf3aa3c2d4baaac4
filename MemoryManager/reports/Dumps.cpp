// Pictures of images for whoever looks at a running pipeline. They change nothing and report nothing.
// A picture's file is opened once everything that it is made of is there.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/layout/BitmapHeader.h"
#include "MemoryManager/layout/FlatImage.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

constexpr int kBitmapPixel = 4;    // bytes of a pixel of the whole buffer's picture
constexpr int kPictureSamples = 3; // of a pixel of a flat buffer's pictures
constexpr DWORD kPixelsPerMetre = 2834;

using DumpPath = char[MAX_PATH];

/// Whether a path was printed whole.
bool IsWhole(int nLength)
{
    return nLength >= 0 && nLength < MAX_PATH;
}

struct FreeBlock
{
    void operator()(void* pBlock) const { FreeMemoryBlock(pBlock); }
};
using Block = std::unique_ptr<void, FreeBlock>;

struct CloseStream
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

/// The lines of an object's store, margins included: its block, or a view of the whole file beside those that
/// the store has.
class StoredLines
{
public:
    StoredLines(CImageCtrl& store, DWORD nBytes)
    {
        const HANDLE hFile = store.GetFHandle();
        if (hFile != INVALID_HANDLE_VALUE)
            MapFile(hFile, static_cast<DWORD>(store.GetHdrSize()), nBytes);
        else if (store.GetAllMapFlg() == 1 && store.MapBandAdress(nBytes - 1, 1, 0))
            m_pFirst = static_cast<BYTE*>(store.MapBandAdress(0, nBytes, 0));
    }
    ~StoredLines()
    {
        if (m_pView)
            UnmapView(m_pView);
        if (m_hMap)
            CloseHandle(m_hMap);
    }
    StoredLines(const StoredLines&) = delete;
    StoredLines& operator=(const StoredLines&) = delete;

    const BYTE* First() const { return m_pFirst; } ///< null: they cannot be reached

private:
    void MapFile(HANDLE hFile, DWORD nHeader, DWORD nBytes)
    {
        const DWORD nLength = FileLength(hFile);
        if (nLength == INVALID_FILE_SIZE || nLength < nHeader + ULONGLONG{nBytes})
            return; // the mapping would make it longer
        m_hMap = CreateFileMappingA(hFile, nullptr, PAGE_READWRITE, 0, nHeader + nBytes, nullptr);
        if (m_hMap)
            m_pView = MapViewOfFileRetry(m_hMap, FILE_MAP_ALL_ACCESS, 0, 0, SIZE_T{nHeader} + nBytes);
        if (m_pView)
            m_pFirst = static_cast<BYTE*>(m_pView) + nHeader;
    }

    HANDLE m_hMap = nullptr;
    void* m_pView = nullptr;
    const BYTE* m_pFirst = nullptr;
};

/// One buffer line as pixels of 32 bits. Of a pixel that is shorter, what follows it comes along up to pEnd.
void CopyBitmapLine(const T_ImageLrg_tag& info, const BYTE* pPixel, const BYTE* pEnd, int nShift, BYTE* pOut)
{
    for (int x = 0; x < info.nAllocWidth; ++x, pPixel += info.nPixelBytes, pOut += kBitmapPixel) {
        if (info.nPixelBytes == 8) {
            for (int i = 0; i < kBitmapPixel; ++i)
                pOut[i] = static_cast<BYTE>((pPixel[2 * i] | pPixel[2 * i + 1] << 8) >> nShift);
        } else {
            std::memcpy(pOut, pPixel, static_cast<std::size_t>(std::min<std::ptrdiff_t>(4, pEnd - pPixel)));
        }
    }
}

void WriteNewFile(const char* pszPath, const void* pBytes, DWORD nBytes)
{
    const HANDLE hFile = CreateFileA(pszPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return;
    DWORD nWritten = 0;
    WriteFileByView(hFile, pBytes, nBytes, &nWritten, kAppend, kFlushLoadPercent);
    CloseHandle(hFile);
}

/// The pixels of a flat buffer, read sample by sample.
struct FlatPixels
{
    const BYTE* pFirst;
    int nWidth;
    int nHeight;
    int nSampleBytes;
    int nPixelStep; ///< bytes from one pixel to the next
    std::int64_t nLineStep;

    std::int64_t RawLineBytes() const { return std::int64_t{kPictureSamples} * nSampleBytes * nWidth; }
    std::int64_t BitmapLineBytes() const { return PaddedLine(kPictureSamples * std::int64_t{nWidth}); }
};

/// None: there is no block, or a pixel has too few samples for a picture.
std::optional<FlatPixels> PixelsOf(const T_Image_tag* pFlat)
{
    if (!HasBlock(pFlat) || !FirstLineOffset(*pFlat))
        return std::nullopt;
    const int nSampleBytes = pFlat->nPixelBytes > 4 ? 2 : 1;
    const std::int64_t nPixelStep = std::int64_t{pFlat->nSamples} * nSampleBytes;
    if (pFlat->nSamples < kPictureSamples || nPixelStep > pFlat->nPixelBytes)
        return std::nullopt;
    return FlatPixels{pFlat->pImage,
                      pFlat->nWidth,
                      pFlat->nHeight,
                      nSampleBytes,
                      static_cast<int>(nPixelStep),
                      nPixelStep * pFlat->nAllocWidth};
}

void MakeRawLine(const FlatPixels& pixels, const BYTE* pPixel, BYTE* pOut)
{
    const auto nBytes = static_cast<std::size_t>(pixels.nSampleBytes);
    for (int x = 0; x < pixels.nWidth; ++x, pPixel += pixels.nPixelStep)
        for (int i = kPictureSamples - 1; i >= 0; --i, pOut += nBytes)
            std::memcpy(pOut, pPixel + i * pixels.nSampleBytes, nBytes);
}

void MakeBitmapLine(const FlatPixels& pixels, const BYTE* pPixel, BYTE* pOut)
{
    for (int x = 0; x < pixels.nWidth; ++x, pPixel += pixels.nPixelStep)
        for (int i = 0; i < kPictureSamples; ++i, ++pOut)
            *pOut = pixels.nSampleBytes == 1
                        ? pPixel[i]
                        : static_cast<BYTE>((pPixel[2 * i] | pPixel[2 * i + 1] << 8) >> 4);
    // The padding is zero from the start, and stays.
}

using MakeLine = void (*)(const FlatPixels&, const BYTE*, BYTE*);

/// Writes a header and the lines as fnMake makes them, from the bottom up behind a header. False: not opened,
/// or no memory for a line.
bool WriteLines(const char* pszPath, const FlatPixels& pixels, const BitmapHeader* pHeader, MakeLine fnMake)
{
    const auto nBytes = static_cast<std::size_t>(pHeader ? pixels.BitmapLineBytes() : pixels.RawLineBytes());
    const std::unique_ptr<BYTE[]> pLine(new (std::nothrow) BYTE[nBytes]());
    const ULONGLONG nPicture = ULONGLONG{nBytes} * static_cast<ULONGLONG>(pixels.nHeight);
    const std::unique_ptr<std::FILE, CloseStream> pFile(
        pLine ? platform::OpenBinaryFile(pszPath, nPicture + (pHeader ? pHeader->size() : 0)) : nullptr);
    if (!pFile)
        return false;
    bool bWritten = !pHeader || std::fwrite(pHeader->data(), pHeader->size(), 1, pFile.get()) == 1;
    for (int y = 0; y < pixels.nHeight && bWritten; ++y) {
        const int nLine = pHeader ? pixels.nHeight - 1 - y : y;
        fnMake(pixels, pixels.pFirst + pixels.nLineStep * nLine, pLine.get());
        bWritten = std::fwrite(pLine.get(), nBytes, 1, pFile.get()) == 1;
    }
    return true;
}

} // namespace

void CImageObj::OutPutBmp(const char* pszName, int nScale)
{
    DumpPath szPath;
    const T_ImageLrg_tag& info = m_ImgInfo;
    // A store that stands for a host's picture has the host's layout, and unit objects have none.
    if (m_nUnitMode != 0 || !m_pImageCtrl || m_pImageCtrl->GetImgType() != IMG_WORK || !IsSoundBuffer(info) ||
        !IsWhole(std::snprintf(szPath, sizeof(szPath), "..\\logdata\\trace\\%s%s", pszName, ".bmp")))
        return;
    const std::int64_t nLineBytes = std::int64_t{info.nAllocWidth} * kBitmapPixel;
    const std::int64_t nFile = nLineBytes * info.nAllocHeight + MM_BITMAP_HEADER_BYTES;
    if (nFile == MM_BITMAP_HEADER_BYTES || nFile > std::numeric_limits<DWORD>::max())
        return;
    const auto nStored = static_cast<DWORD>(info.nLineBytes) * static_cast<DWORD>(info.nAllocHeight);
    const StoredLines stored(*m_pImageCtrl, nStored);
    const Block picture(stored.First() ? AllocMemoryBlock(static_cast<SIZE_T>(nFile), 0) : nullptr);
    if (!picture)
        return;

    const BitmapHeader header = MakeBitmapHeader(info.nAllocWidth, info.nAllocHeight, kBitmapPixel);
    BYTE* pOut = std::copy(header.begin(), header.end(), static_cast<BYTE*>(picture.get()));
    for (int y = info.nAllocHeight - 1; y >= 0; --y, pOut += nLineBytes)
        CopyBitmapLine(info, stored.First() + PixelPosition(info, y - info.nMarginY, -info.nMarginX),
                       stored.First() + nStored, nScale == 1 ? 0 : 4, pOut);
    WriteNewFile(szPath, picture.get(), static_cast<DWORD>(nFile));
}

void CImageObj::Output(const char* pszName, T_Image_tag* pFlat)
{
    DumpPath szPath;
    const auto pixels = PixelsOf(pFlat);
    if (!pixels || !IsWhole(std::snprintf(szPath, sizeof(szPath), "..\\tmp\\%s_%dx%d.raw", pszName,
                                          pixels->nWidth, pixels->nHeight)))
        return;
    if (!WriteLines(szPath, *pixels, nullptr, MakeRawLine))
        return;
    std::snprintf(szPath, sizeof(szPath), "..\\tmp\\%s_%dx%d.bmp", pszName, pixels->nWidth, pixels->nHeight);
    BitmapHeader header = MakeBitmapHeader(pixels->nWidth, pixels->nHeight, kPictureSamples);
    PutHeaderField(header, 34, 4, 0);               // the size of the pixels may be left out
    PutHeaderField(header, 38, 4, kPixelsPerMetre); // from left to right
    PutHeaderField(header, 42, 4, kPixelsPerMetre);
    WriteLines(szPath, *pixels, &header, MakeBitmapLine);
}
