// The DLL as a file and as a module. This program does not link it, so that it can come and go.

#include "../StandardLibrary.h"
#include "Platform/PlatformTypes.h"

#include <malloc.h>

using namespace testing;

namespace {

/// The loaded DLL; addresses in its headers are counted from where it begins.
class Dll
{
public:
    Dll() = default;
    ~Dll() { FreeLibrary(m_hModule); }
    Dll(const Dll&) = delete;
    Dll& operator=(const Dll&) = delete;

    template <class T> const T* At(DWORD nPlace) const
    {
        return reinterpret_cast<const T*>(m_pBase + nPlace);
    }
    const IMAGE_NT_HEADERS& Headers() const
    {
        return *At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    }
    DWORD Directory(int n) const { return Headers().OptionalHeader.DataDirectory[n].VirtualAddress; }
    template <class T> T Find(const char* pszName) const
    {
        return reinterpret_cast<T>(reinterpret_cast<void*>(GetProcAddress(m_hModule, pszName)));
    }

private:
    HMODULE m_hModule = LoadLibraryA(MM_DLL);
    const BYTE* m_pBase = reinterpret_cast<const BYTE*>(m_hModule);
};

std::vector<std::string> ImportedDlls(const Dll& dll)
{
    std::vector<std::string> names;
    const auto* pImport = dll.At<IMAGE_IMPORT_DESCRIPTOR>(dll.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
    for (; pImport->Name; ++pImport)
        names.push_back(dll.At<char>(pImport->Name));
    return names;
}

/// Of the system's heap and of the C library's, which the DLL and this program share.
int BusyHeapBlocks()
{
    int nBlocks = 0;
    for (const HANDLE hHeap : {GetProcessHeap(), reinterpret_cast<HANDLE>(_get_heap_handle())}) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(hHeap);
        while (HeapWalk(hHeap, &entry))
            nBlocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
        HeapUnlock(hHeap);
    }
    return nBlocks;
}

bool CanAnotherThreadEnter(CRITICAL_SECTION* pLock)
{
    bool bEntered = false;
    std::thread([&] {
        bEntered = TryEnterCriticalSection(pLock);
        if (bEntered)
            LeaveCriticalSection(pLock);
    }).join();
    return bEntered;
}

/// Loads the DLL, finds everything as documented for a load, changes it, and unloads the DLL.
void LoadAndUse()
{
    constexpr LONG kMiB = 1048576;
    const Dll dll;
    const auto* pFree = dll.Find<const LONG*>("_ZN9CImageObj13ms_FreeMemoryE");
    const auto* pFolder = dll.Find<const char*>("_ZN10CImageCtrl19ms_TempDirctoryNameE");
    const auto initBaseMemory = dll.Find<DWORD (*)(LONG, LONG)>("_ZN9CImageObj14InitBaseMemoryEll");
    const auto getTempFolder = dll.Find<DWORD (*)()>("_ZN10CImageCtrl19GetTempDirctoryNameEv");
    const auto getLock = dll.Find<CRITICAL_SECTION* (*)()>("_ZN9CImageObj5GetCSEv");
    EXPECT_EQ(*pFree, 100 * kMiB);
    EXPECT_STREQ(pFolder, "");

    initBaseMemory(64 * kMiB, 32 * kMiB);
    EXPECT_EQ(*pFree, 64 * kMiB);
    EXPECT_EQ(getTempFolder(), 0u);
    EXPECT_STRNE(pFolder, "");
    EnterCriticalSection(getLock());
    EXPECT_FALSE(CanAnotherThreadEnter(getLock()));
    LeaveCriticalSection(getLock());
    EXPECT_TRUE(CanAnotherThreadEnter(getLock()));
}

TEST(DllFile, ImportsFromSystemDllsOnly)
{
    const Dll dll;
    EXPECT_EQ(dll.Headers().FileHeader.Machine,
              sizeof(void*) == 4 ? IMAGE_FILE_MACHINE_I386 : IMAGE_FILE_MACHINE_AMD64);
    EXPECT_THAT(ImportedDlls(dll),
                AllOf(Not(IsEmpty()), Each(AnyOf(StrCaseEq("KERNEL32.dll"), StrCaseEq("msvcrt.dll")))));
    EXPECT_EQ(dll.Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT), 0u);
}

TEST(DllFile, EveryLoadStartsAfreshAndEveryUnloadLeavesNothing)
{
    constexpr int kLoads = 50;
    constexpr int kKept = sizeof(void*) == 4 ? 4 : 0; // by winpthreads: two locks and its list of threads
    LoadAndUse();                                     // what the system makes once and keeps
    const int nBlocks = BusyHeapBlocks();
    for (int i = 0; i < kLoads; ++i) {
        LoadAndUse();
        ASSERT_EQ(GetModuleHandleA(MM_DLL), nullptr) << "the DLL was not unloaded";
    }
    EXPECT_LT(BusyHeapBlocks() - nBlocks, (kKept + 1) * kLoads) << "each load leaves a block behind";
}

} // namespace
