#pragma once
// What reading, writing and frame painting of unit bands share.
//
// Internal.

#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/ImageRecord.h"
#include "MemoryManager/base/PlatformHelpers.h"

#include <algorithm>
#include <cstdint>

/// Where a band's lines lie among all stored lines of its source.
enum class StoredPlace : int
{
    Start = 1,
    Inside = 2,
    End = 3,
    Whole = 4,
};

/// Lines of a held band. nBandLines is the band height of the next one by now, if the host has asked for the
/// geometry or set it.
inline int LinesOf(const T_ImageLrg_tag& band)
{
    return band.nBandBottom - band.nBandTop + 1;
}

/// Lines of a band's frame that its buffer has on each side: no more than its margin.
inline int FrameLines(const T_ImageLrg_tag& band)
{
    return std::clamp(band.nFsize, 0, band.nMarginY);
}

/// Those that the image has above and below the band too.
inline int FrameLinesAbove(const T_ImageLrg_tag& band)
{
    return std::min(FrameLines(band), band.nBandTop);
}
inline int FrameLinesBelow(const T_ImageLrg_tag& band)
{
    return std::min(FrameLines(band), band.nHeight - 1 - band.nBandBottom);
}

/// A committed block that goes with its scope; null when memory is short, and of 0 bytes.
class ScratchBlock
{
public:
    explicit ScratchBlock(std::int64_t nBytes)
        : m_pBlock(nBytes > 0 ? AllocMemoryBlock(static_cast<SIZE_T>(nBytes), 1) : nullptr)
    {
    }
    ~ScratchBlock() { FreeMemoryBlock(m_pBlock); }
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    unsigned char* Data() const { return static_cast<unsigned char*>(m_pBlock); }

private:
    void* m_pBlock;
};

/// Sets the file pointer to an unsigned position. False: the last error tells why.
bool SeekFile(HANDLE hFile, DWORD nPosition);

/// Records the last error, met at a line of unit band access, in the error log. Returns MM_FILE_ACCESS.
DWORD FailUnitFile(int nLine);

/// Bytes of an external image for as long as this lives: in the host's block, or in a view of its file that
/// is released with it.
class ExternalBytes
{
public:
    /// nBytes from nPosition on. Access types 0 (with hMap, a mapping of the file) and 1.
    ExternalBytes(const T_ImgInf& inf, HANDLE hMap, DWORD nPosition, std::int64_t nBytes, bool bWrite);
    ~ExternalBytes();
    ExternalBytes(const ExternalBytes&) = delete;
    ExternalBytes& operator=(const ExternalBytes&) = delete;

    /// The byte at nPosition. Null, with the reason as last error: there is no block or no view, or the file
    /// ends before the bytes do.
    unsigned char* Data() const { return m_pData; }

private:
    unsigned char* m_pData = nullptr;
    void* m_pView = nullptr;
};
