// Band buffers with margins, placed in one block that is kept until a larger one is needed. Once initialised,
// a record has a block exactly while its size is not 0.

#include "MemoryManager/BaseBuffer.h"

#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr int kDefaultBytes = 2 * 1024 * 1024;
constexpr std::uint64_t kBlockStep = 65536;
constexpr std::uint64_t kDataAlignment = 16;
constexpr std::uint64_t kMostBytes = std::numeric_limits<int>::max();

/// A buffer's part of the block. Its data lies behind the lead, which holds the margin above it.
struct Region
{
    std::uint64_t nLead;
    std::uint64_t nBytes;
};

std::uint64_t RoundUp(std::uint64_t n, std::uint64_t nStep)
{
    return (n + nStep - 1) / nStep * nStep;
}

/// The part that a buffer needs, for arguments within 31 bits: nothing here overflows 64 bits.
Region RegionOf(std::uint64_t nLines, std::uint64_t nMargin, std::uint64_t nPitch)
{
    const std::uint64_t nLead = RoundUp(nMargin * nPitch, kDataAlignment);
    return {nLead, RoundUp((nLines + nMargin) * nPitch + nLead, kDataAlignment)};
}

/// Computes each buffer's part. Returns the bytes of the block that they need, or 0 for a request that is
/// refused.
int LayOut(const T_BaseBuf_tag& record, Region (&regions)[MM_BASE_BUFFERS])
{
    if (record.nBufCnt < 1 || record.nBufCnt > MM_BASE_BUFFERS)
        return 0;
    std::uint64_t nNeed = 0;
    for (int i = 0; i < record.nBufCnt; ++i) {
        const int nLines = record.nBufLines[i], nMargin = record.nBufMargin[i], nPitch = record.nBufPitch[i];
        if (nLines < 1 || nMargin < 0 || nPitch < 1)
            return 0;
        regions[i] = RegionOf(static_cast<std::uint64_t>(nLines), static_cast<std::uint64_t>(nMargin),
                              static_cast<std::uint64_t>(nPitch));
        if (regions[i].nBytes > kMostBytes)
            return 0;
        nNeed += regions[i].nBytes;
    }
    nNeed = RoundUp(nNeed, kBlockStep);
    return nNeed <= kMostBytes ? static_cast<int>(nNeed) : 0;
}

} // namespace

int BaseMallocInit(T_BaseBuf_tag* pRecord)
{
    const int nWanted = pRecord->nMemSize == 0 ? kDefaultBytes : pRecord->nMemSize;
    *pRecord = {};
    if (nWanted < 0)
        return MM_NO_MEMORY;
    const std::uint64_t nBytes = RoundUp(static_cast<std::uint64_t>(nWanted), kBlockStep);
    if (nBytes > kMostBytes)
        return MM_NO_MEMORY;
    pRecord->pMem = static_cast<unsigned char*>(AllocMemoryBlock(static_cast<SIZE_T>(nBytes), 1));
    if (!pRecord->pMem)
        return MM_NO_MEMORY;
    pRecord->nMemSize = static_cast<int>(nBytes);
    return MM_SUCCESS;
}

int BaseMallocMain(T_BaseBuf_tag* pRecord, int nFill, int nByte)
{
    std::fill_n(pRecord->pBuf, MM_BASE_BUFFERS, nullptr);
    Region regions[MM_BASE_BUFFERS];
    const int nNeed = LayOut(*pRecord, regions);
    if (nNeed == 0) {
        BaseMallocFree(pRecord);
        return MM_BAD_ARGUMENT;
    }
    const int nBuffers = pRecord->nBufCnt; // a new block clears the record
    if (!pRecord->pMem || pRecord->nMemSize < nNeed) {
        BaseMallocFree(pRecord);
        pRecord->nMemSize = nNeed;
        if (BaseMallocInit(pRecord) != MM_SUCCESS)
            return MM_NO_MEMORY;
    }

    if (nFill == 1)
        std::memset(pRecord->pMem, nByte & 0xFF, static_cast<std::size_t>(nNeed));
    unsigned char* pRegion = pRecord->pMem;
    for (int i = 0; i < nBuffers; ++i) {
        pRecord->pBuf[i] = pRegion + regions[i].nLead;
        pRegion += regions[i].nBytes;
    }
    return MM_SUCCESS;
}

void BaseMallocFree(T_BaseBuf_tag* pRecord)
{
    FreeMemoryBlock(std::exchange(pRecord->pMem, nullptr));
    pRecord->nMemSize = 0;
}
