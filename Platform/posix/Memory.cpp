// Blocks of memory, whose sizes are remembered so that their addresses are enough to release them.
// Large blocks start at a huge page, as touching them for the first time is then several times as fast.

#include "Platform/posix/PosixLayer.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace platform::posix;

namespace {

constexpr SIZE_T kHugePage = SIZE_T{2} << 20;

Registry<std::uintptr_t, SIZE_T>& Blocks()
{
    static Immortal<Registry<std::uintptr_t, SIZE_T>> blocks;
    return blocks.value;
}

SIZE_T PageSize()
{
    return static_cast<SIZE_T>(sysconf(_SC_PAGESIZE));
}

BYTE* MapMemory(SIZE_T nBytes)
{
    void* pBlock = mmap(nullptr, nBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pBlock == MAP_FAILED ? nullptr : static_cast<BYTE*>(pBlock);
}

/// Maps a block that starts at a huge-page boundary. It is cut out of a mapping with spare bytes: one page
/// less than a huge page. Null: there is no room for the longer mapping, and there may still be room for the
/// block.
BYTE* MapHugeMemory(SIZE_T nBytes)
{
    const SIZE_T nSpare = kHugePage - PageSize();
    BYTE* pMapped = MapMemory(nBytes + nSpare);
    if (!pMapped)
        return nullptr;
    const SIZE_T nBefore = (0 - reinterpret_cast<std::uintptr_t>(pMapped)) & (kHugePage - 1);
    if (nBefore > 0)
        munmap(pMapped, nBefore);
    if (nBefore < nSpare)
        munmap(pMapped + nBefore + nBytes, nSpare - nBefore);
    return pMapped + nBefore;
}

} // namespace

LPVOID VirtualAlloc(LPVOID pAddress, SIZE_T nBytes, DWORD nType, DWORD nProtect)
{
    // MEM_TOP_DOWN changes nothing: the system places blocks from the top down anyway.
    const bool bKnown = (nType & ~MEM_TOP_DOWN) == (MEM_COMMIT | MEM_RESERVE) && nProtect == PAGE_READWRITE;
    if (pAddress || nBytes == 0 || !bKnown)
        return FailNull(ERROR_INVALID_PARAMETER);
    const SIZE_T nPage = PageSize();
    if (nBytes > SIZE_MAX - nPage - kHugePage)
        return FailNull(ERROR_NOT_ENOUGH_MEMORY);
    nBytes = (nBytes + nPage - 1) / nPage * nPage;

    BYTE* pBlock = nBytes >= kHugePage ? MapHugeMemory(nBytes) : nullptr;
    if (!pBlock)
        pBlock = MapMemory(nBytes);
    if (!pBlock)
        return FailNull(ErrorOf(errno));
    if (nBytes >= kHugePage)
        madvise(pBlock, nBytes, MADV_HUGEPAGE); // a hint: without huge pages the block is only slower
    if (!Blocks().Add(reinterpret_cast<std::uintptr_t>(pBlock), nBytes)) {
        munmap(pBlock, nBytes);
        return FailNull(ERROR_NOT_ENOUGH_MEMORY);
    }
    return pBlock;
}

BOOL VirtualFree(LPVOID pAddress, SIZE_T nBytes, DWORD nType)
{
    if (nBytes != 0 || nType != MEM_RELEASE)
        return Fail(ERROR_INVALID_PARAMETER);
    const auto nAddress = reinterpret_cast<std::uintptr_t>(pAddress);
    const auto nBlock = Blocks().Take(nAddress);
    if (!nBlock)
        return Fail(ERROR_INVALID_ADDRESS);
    if (munmap(pAddress, *nBlock) != 0) {
        FailErrno();
        Blocks().Add(nAddress, *nBlock);
        return 0;
    }
    return 1;
}

void GetSystemInfo(SYSTEM_INFO* pInfo)
{
    pInfo->dwPageSize = static_cast<DWORD>(PageSize());
    pInfo->dwAllocationGranularity = 65536;
}
