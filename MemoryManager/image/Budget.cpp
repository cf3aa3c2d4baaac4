// The process-wide memory budget, its limits, and the one lock that guards it. Between an AskUseMemory and
// the UpdateUseMemory that follows it the free budget is 0. The caller holds the lock from one to the other,
// so no other thread that takes the lock sees this.

#include "MemoryManager/image/Budget.h"
#include "MemoryManager/ResultCodes.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr LONG kMiB = 1048576;
constexpr LONG kLargestBandMiB = 2047; // 2048 MiB do not fit a signed 32-bit number

// The one-mapping size is capped while the flag is set. Nothing changes these two.
const int ms_bLimitOneMapping = 1;
const LONG ms_nOneMappingCap = 32 * kMiB;

// Makes the lock before all other objects with constructors in the library or its host, and deletes it after
// them.
struct LibraryLoad
{
    LibraryLoad() { InitializeCriticalSection(CImageObj::GetCS()); }
    ~LibraryLoad() { DeleteCriticalSection(CImageObj::GetCS()); }
};
[[gnu::init_priority(101)]] LibraryLoad g_load;

} // namespace

LONG CImageObj::ms_ReserveMemory = 100 * kMiB;
LONG CImageObj::ms_FreeMemory = 100 * kMiB;
LONG CImageObj::ms_MaxOneMappingSize = ms_nOneMappingCap;
LONG CImageObj::ms_nOnMemory = 12 * kMiB;
LONG CImageObj::ms_nUseMaxBandMemory = 24 * kMiB;
LONG CImageObj::ms_nUseMinBandMemory = 12 * kMiB;
LONG CImageObj::ms_nUseMaxMemoryUnit = 24 * kMiB;
int CImageObj::ms_MinBand = 16;
LONG CImageObj::ms_nWorkMemory = 0;
CRITICAL_SECTION CImageObj::m_g_cs;

DWORD CImageObj::InitBaseMemory(LONG nReserve, LONG nOneMapping)
{
    const LibraryLock lock;
    ms_ReserveMemory = std::max(nReserve, ms_nOnMemory);
    ms_FreeMemory = ms_ReserveMemory;
    const LONG nMapping = ms_bLimitOneMapping != 0 ? std::min(nOneMapping, ms_nOneMappingCap) : nOneMapping;
    ms_MaxOneMappingSize = std::min(std::max(nMapping, ms_nOnMemory), ms_ReserveMemory);
    return MM_SUCCESS;
}

DWORD CImageObj::UpdateUseMemory(LONG d)
{
    ms_FreeMemory = std::min(ms_ReserveMemory, HeldWithinLong(std::int64_t{ms_FreeMemory} + d));
    return MM_SUCCESS;
}

LONG CImageObj::AskUseMemory()
{
    const LONG nFree = ms_FreeMemory;
    ms_FreeMemory = 0;
    return nFree;
}

LONG CImageObj::AskFreeMemory()
{
    return ms_FreeMemory;
}

LONG CImageObj::GetUseMaxBandMemory()
{
    return ms_nUseMaxBandMemory;
}

int CImageObj::SetUseMaxBandMemory(LONG nMiB)
{
    if (nMiB < 1 || nMiB > kLargestBandMiB)
        return MM_BAD_ARGUMENT;
    ms_nUseMaxBandMemory = nMiB * kMiB;
    return MM_SUCCESS;
}

LONG CImageObj::GetUseMinBandMemory()
{
    return ms_nUseMinBandMemory;
}

CRITICAL_SECTION* CImageObj::GetCS()
{
    return &m_g_cs;
}

CRITICAL_SECTION* AddressOfLibraryLock()
{
    return CImageObj::GetCS();
}
