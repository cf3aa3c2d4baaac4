// Pictures of images, for developers who look at a running pipeline. A dump changes nothing and reports
// nothing. Its file is opened last, so that a dump that is not possible leaves no empty file.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/base/ScratchBlock.h"
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
constexpr int kLowBits = 4;        // of a 12-bit sample that its eight bits in a picture lack
constexpr DWORD kPixelsPerMetre = 2834;

/// The path of a dump's file.
class DumpPath
{
public:
    template <class... Values>
    explicit DumpPath(const char* pszFormat, Values... values)
        : m_nLength(std::snprintf(m_szPath, sizeof(m_szPath), pszFormat, values...))
    {
    }
    /// False: the path would be longer than the system allows.
    bool IsWhole() const { return m_nLength >= 0 && m_nLength < MAX_PATH; }
    const char* Text() const { return m_szPath; }

private:
    char m_szPath[MAX_PATH];
    int m_nLength;
};

struct CloseStream
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

/// Eight bits of a 16-bit sample, from bit nShift on.
BYTE EightBitsOf(const BYTE* pSample, int nShift)
{
    return static_cast<BYTE>((pSample[0] | pSample[1] << 8) >> nShift);
}

/// The lines of an object's store, margins included: the store's block, or a view of its whole file, which is
/// mapped beside the views that the store itself has.
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

    const BYTE* First() const { return m_pFirst; } ///< null: the lines cannot be reached

private:
    void MapFile(HANDLE hFile, DWORD nHeader, DWORD nBytes)
    {
        if (FileLength(hFile).value_or(0) < nHeader + ULONGLONG{nBytes})
            return; // a mapping would make the file longer
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

/// Copies a buffer line to pixels of four bytes. A pixel of fewer bytes is filled up with the bytes that
/// follow it, as far as pEnd.
/// @param nShift  lowest bit that is taken of the samples of 8-byte pixels
void CopyBitmapLine(const T_ImageLrg_tag& info, const BYTE* pPixel, const BYTE* pEnd, int nShift, BYTE* pOut)
{
    for (int x = 0; x < info.nAllocWidth; ++x, pPixel += info.nPixelBytes, pOut += kBitmapPixel) {
        if (info.nPixelBytes == 8) {
            for (int i = 0; i < kBitmapPixel; ++i)
                pOut[i] = EightBitsOf(pPixel + 2 * i, nShift);
        } else {
            const auto nBytes = std::min<std::ptrdiff_t>(kBitmapPixel, pEnd - pPixel);
            std::memcpy(pOut, pPixel, static_cast<std::size_t>(nBytes));
        }
    }
}

void WriteNewFile(const char* pszPath, const void* pBytes, DWORD nBytes)
{
    const HANDLE hFile = CreateFileA(pszPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return;
    AppendByViews(hFile, pBytes, nBytes); // a failure leaves an unfinished file
    CloseHandle(hFile);
}

/// The pixels of a flat buffer, and the lines of its two pictures.
struct FlatPixels
{
    const BYTE* pFirst;
    int nWidth;
    int nHeight;
    int nSampleBytes;
    int nPixelStep;         ///< bytes from one pixel to the next
    std::int64_t nLineStep; ///< bytes from one line to the next

    std::int64_t RawLineBytes() const { return std::int64_t{kPictureSamples} * nSampleBytes * nWidth; }
    std::int64_t BitmapLineBytes() const { return PaddedLine(kPictureSamples * std::int64_t{nWidth}); }
};

/// None: the record has no sound block, or its pixels have fewer samples than a picture needs.
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

/// One line of the raw picture: the samples of each pixel in the order 2, 1, 0.
void MakeRawLine(const FlatPixels& pixels, const BYTE* pPixel, BYTE* pOut)
{
    const auto nBytes = static_cast<std::size_t>(pixels.nSampleBytes);
    for (int x = 0; x < pixels.nWidth; ++x, pPixel += pixels.nPixelStep)
        for (int i = kPictureSamples - 1; i >= 0; --i, pOut += nBytes)
            std::memcpy(pOut, pPixel + i * pixels.nSampleBytes, nBytes);
}

/// One line of the bitmap: the samples of each pixel in the order 0, 1, 2.
void MakeBitmapLine(const FlatPixels& pixels, const BYTE* pPixel, BYTE* pOut)
{
    for (int x = 0; x < pixels.nWidth; ++x, pPixel += pixels.nPixelStep)
        for (int i = 0; i < kPictureSamples; ++i, ++pOut)
            *pOut = pixels.nSampleBytes == 1 ? pPixel[i] : EightBitsOf(pPixel + 2 * i, kLowBits);
    // The line's padding stays zero, as WriteLines has cleared it.
}

using MakeLine = void (*)(const FlatPixels&, const BYTE*, BYTE*);

/// Writes a picture: the lines that pMakeLine makes, from top to bottom, or a header and the lines from
/// bottom to top. False: no memory for a line, or no file; a write that fails later ends the picture early.
/// @param pHeader  null for a picture without a header
bool WriteLines(const char* pszPath, const FlatPixels& pixels, const BitmapHeader* pHeader,
                MakeLine pMakeLine)
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
        pMakeLine(pixels, pixels.pFirst + pixels.nLineStep * nLine, pLine.get());
        bWritten = std::fwrite(pLine.get(), nBytes, 1, pFile.get()) == 1;
    }
    return true;
}

} // namespace

void CImageObj::OutPutBmp(const char* pszName, int nScale)
{
    const T_ImageLrg_tag& info = m_ImgInfo;
    // A unit object has no buffer of its image, and a store over an external image has the host's layout.
    const bool bHasBuffer =
        m_nUnitMode == 0 && m_pImageCtrl && m_pImageCtrl->GetImgType() == IMG_WORK && IsSoundBuffer(info);
    const DumpPath path("..\\logdata\\trace\\%s.bmp", pszName);
    if (!path.IsWhole())
        return;
    DeleteFileA(path.Text()); // an older dump must not be taken for this one
    if (!bHasBuffer)
        return;
    const std::int64_t nLineBytes = std::int64_t{info.nAllocWidth} * kBitmapPixel;
    const std::int64_t nFile = nLineBytes * info.nAllocHeight + MM_BITMAP_HEADER_BYTES;
    if (nFile == MM_BITMAP_HEADER_BYTES || nFile > std::numeric_limits<DWORD>::max())
        return;
    const auto nStored = static_cast<DWORD>(info.nLineBytes) * static_cast<DWORD>(info.nAllocHeight);
    const StoredLines stored(*m_pImageCtrl, nStored);
    const ScratchBlock picture(stored.First() ? nFile : 0, WhenShort::Fail);
    if (!picture.Data())
        return;

    const BitmapHeader header = MakeBitmapHeader(info.nAllocWidth, info.nAllocHeight, kBitmapPixel);
    BYTE* pOut = std::copy(header.begin(), header.end(), picture.Data());
    for (int y = info.nAllocHeight - 1; y >= 0; --y, pOut += nLineBytes)
        CopyBitmapLine(info, stored.First() + PixelPosition(info, y - info.nMarginY, -info.nMarginX),
                       stored.First() + nStored, nScale == 1 ? 0 : kLowBits, pOut);
    WriteNewFile(path.Text(), picture.Data(), static_cast<DWORD>(nFile));
}

void CImageObj::Output(const char* pszName, T_Image_tag* pFlat)
{
    const auto pixels = PixelsOf(pFlat);
    if (!pixels)
        return;
    const DumpPath raw("..\\tmp\\%s_%dx%d.raw", pszName, pixels->nWidth, pixels->nHeight);
    const DumpPath bitmap("..\\tmp\\%s_%dx%d.bmp", pszName, pixels->nWidth, pixels->nHeight);
    if (!raw.IsWhole() || !WriteLines(raw.Text(), *pixels, nullptr, MakeRawLine))
        return;
    BitmapHeader header = MakeBitmapHeader(pixels->nWidth, pixels->nHeight, kPictureSamples);
    PutHeaderField(header, 34, 4, 0);               // bytes of the pixels, which a header may leave out
    PutHeaderField(header, 38, 4, kPixelsPerMetre); // horizontally
    PutHeaderField(header, 42, 4, kPixelsPerMetre); // vertically
    WriteLines(bitmap.Text(), *pixels, &header, MakeBitmapLine);
}
