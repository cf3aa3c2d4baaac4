// The layer over POSIX on a system whose calls fail in turn, are interrupted, or transfer less than asked
// for. The linker sends the system calls of this program here (--wrap).

#include "Platform/Platform.h"

#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const char* g_pszCall = nullptr; // the calls of which one fails; null: none does
int g_nBefore = 0, g_nErrno = 0; // calls of that name before it, negative once it has failed; its error
std::size_t g_nMost = SIZE_MAX;  // bytes that one transfer brings
std::atomic<std::size_t> g_nMapped = 0;

bool Fails(const char* pszCall)
{
    if (!g_pszCall || std::strcmp(g_pszCall, pszCall) != 0 || g_nBefore-- != 0)
        return false;
    errno = g_nErrno;
    return true;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
#define FAILS(Result, Name, Parameters, Arguments, bFails, Failure)                                          \
    extern "C" Result __real_##Name Parameters;                                                              \
    extern "C" Result __wrap_##Name Parameters                                                               \
    {                                                                                                        \
        return bFails ? Failure : __real_##Name Arguments;                                                   \
    }
FAILS(int, open64, (const char* p, int nHow, mode_t n), (p, nHow, n),
      Fails((nHow & O_TMPFILE) == O_TMPFILE ? "O_TMPFILE"
            : (nHow & O_EXCL) != 0          ? "O_EXCL"
                                            : "open"),
      -1)
FAILS(int, close, (int n), (n), Fails("close") && __real_close(n) == 0, -1)
FAILS(int, fcntl64, (int n, int nHow, long m), (n, nHow, m), Fails("fcntl"), -1)
FAILS(int, flock, (int n, int nHow), (n, nHow), Fails("flock"), -1)
FAILS(int, fstat64, (int n, void* p), (n, p), Fails("fstat"), -1)
FAILS(int, ftruncate64, (int n, off64_t nTo), (n, nTo), Fails("ftruncate"), -1)
FAILS(int, fallocate64, (int n, int nHow, off64_t a, off64_t b), (n, nHow, a, b), Fails("fallocate"), -1)
FAILS(int, posix_fallocate64, (int n, off64_t a, off64_t b), (n, a, b), Fails("posix_fallocate"), g_nErrno)
FAILS(void*, opendir, (const char* p), (p), Fails("opendir"), nullptr)
FAILS(ssize_t, read, (int n, void* p, std::size_t m), (n, p, std::min(m, g_nMost)), Fails("read"), -1)
FAILS(ssize_t, pwrite64, (int n, const void* p, std::size_t m, off64_t nAt),
      (n, p, std::min(m, g_nMost), nAt), Fails("pwrite"), -1)
FAILS(int, munmap, (void* p, std::size_t m), (p, (g_nMapped -= m, m)), Fails("munmap"), -1)
FAILS(void*, mmap64, (void* p, std::size_t m, int nMay, int nHow, int n, off64_t nAt),
      (p, (g_nMapped += m, m), nMay, nHow, n, nAt), Fails("mmap"), MAP_FAILED)
#if SIZE_MAX > UINT32_MAX // operator new
FAILS(void*, _Znwm, (std::size_t n), (n), Fails("new"), throw std::bad_alloc())
#else
FAILS(void*, _Znwj, (std::size_t n), (n), Fails("new"), throw std::bad_alloc())
#endif
// NOLINTEND(bugprone-reserved-identifier)

class FailingSystem : public testing::Test
{
protected:
    static constexpr DWORD kBytes = 300000, kMapped = 1 << 20;
    std::string m_sFolder = "/tmp/platformXXXXXX", m_sOld, m_sPattern, m_sBytes, m_sRead;

    FailingSystem() : m_sBytes(kBytes, ' '), m_sRead(kBytes, '.')
    {
        EXPECT_NE(nullptr, mkdtemp(m_sFolder.data()));
        m_sOld = m_sFolder + "/LRG", m_sPattern = m_sOld + "*";
        for (std::size_t i = 0; i < kBytes; ++i)
            m_sBytes[i] = static_cast<char>(i * 7 + i / 251);
    }
    ~FailingSystem() override { fs::remove_all(m_sFolder); }
    static auto Held()
    {
        const fs::directory_iterator files("/proc/self/fd");
        return std::pair(std::distance(begin(files), end(files)), g_nMapped.load());
    }
    /// All that clean-ups and stores do, while calls fail. The error of the first step that failed; 0: none
    /// did.
    DWORD Everything(const char* pszCall = nullptr)
    {
        char szName[MAX_PATH] = "";
        HANDLE hFile = nullptr, hMap = nullptr, hOld = nullptr, hOldMap = nullptr, hFind = nullptr;
        void *pView = nullptr, *pSmall = nullptr, *pLarge = nullptr;
        WIN32_FIND_DATAA found;
        DWORD nRead = 0, nError = 0;
        const auto done = [&](auto result) {
            if constexpr (std::is_same_v<HANDLE, decltype(result)>)
                result = result == INVALID_HANDLE_VALUE ? nullptr : result;
            nError = result || nError != 0 ? nError : GetLastError();
            return result;
        };
        const auto openFile = [&](const char* pszPath, DWORD nHow, DWORD nFlags) {
            return done(CreateFileA(pszPath, 0xC0000000, 0, nullptr, nHow, nFlags, nullptr));
        };
        const auto map = [&](HANDLE h, DWORD n) {
            return done(CreateFileMappingA(h, nullptr, PAGE_READWRITE, 0, n, nullptr));
        };
        const auto closeFile = [&](HANDLE& h) { return !h || done(CloseHandle(std::exchange(h, nullptr))); };
        const auto release = [&](void* p, auto call) {
            if (p && !done(call(p))) {
                EXPECT_TRUE(call(p)) << "what could not be released is forgotten";
            }
        };
        const auto freeBlock = [](void* p) { return VirtualFree(p, 0, MEM_RELEASE); };
        std::ofstream(m_sOld).close();
        EXPECT_EQ(0, truncate(m_sOld.c_str(), kMapped)); // nothing but a hole
        g_pszCall = pszCall;
        const bool bAll = (hFind = done(FindFirstFileA(m_sPattern.c_str(), &found))) && FindClose(hFind) &&
                          (hOld = openFile(m_sOld.c_str(), OPEN_EXISTING, 0)) && (hOldMap = map(hOld, 0)) &&
                          closeFile(hOldMap) && closeFile(hOld) &&
                          (hOld = openFile(m_sOld.c_str(), CREATE_ALWAYS, 0)) && closeFile(hOld) &&
                          done(DeleteFileA(m_sOld.c_str())) &&
                          done(GetTempFileNameA(m_sFolder.c_str(), "LRG", 0, szName)) &&
                          (hFile = openFile(szName, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE)) &&
                          (hMap = map(hFile, kMapped)) &&
                          (pView = done(MapViewOfFile(hMap, FILE_MAP_WRITE, 0, 65536, 70000))) &&
                          done(platform::CopyToFile(hFile, hMap, 0, m_sBytes.data(), kBytes, true)) &&
                          done(ReadFile(hFile, m_sRead.data(), kBytes, &nRead, nullptr)) &&
                          (pSmall = done(VirtualAlloc(nullptr, 5000, 0x3000, PAGE_READWRITE)));
        if (bAll) {
            EXPECT_EQ(0, m_sBytes.compare(65536, 70000, static_cast<char*>(pView), 70000));
            EXPECT_TRUE(nRead == kBytes && m_sRead == m_sBytes);
        }
        EXPECT_FALSE(hFile && DeleteFileA(szName)) << "it is open";
        release(pView, UnmapViewOfFile);
        release(pSmall, freeBlock);
        pLarge = bAll ? done(VirtualAlloc(nullptr, 5000001, 0x3000, PAGE_READWRITE)) : nullptr;
        release(pLarge, freeBlock);
        for (HANDLE* pHandle : {&hMap, &hOldMap, &hOld, &hFile})
            closeFile(*pHandle);
        g_pszCall = nullptr;
        return nError;
    }
};

TEST_F(FailingSystem, GivesTheRightBytesOrTheRightErrorAndKeepsNothing)
{
    // the system's error, the layer's error (0: it does without the call), calls
    const std::tuple<int, DWORD, std::vector<const char*>> cases[] = {
        {EINTR, 0, {"open", "O_EXCL", "flock", "ftruncate", "read", "pwrite", "opendir", "close"}},
        {EINTR, 0, {"posix_fallocate", "fallocate"}},
        {EMFILE, 4, {"open", "O_EXCL", "fcntl", "opendir"}},
        {EEXIST, 0, {"O_EXCL"}},
        {EOPNOTSUPP, 0, {"O_TMPFILE", "fallocate"}},
        {EISDIR, 0, {"O_TMPFILE"}},
        {ENOSPC, 112, {"O_TMPFILE", "pwrite"}},
        {ENOMEM, 112, {"posix_fallocate", "fallocate"}},
        {ENOMEM, 8, {"mmap", "munmap", "new"}},
        {EIO, 31, {"fstat", "ftruncate", "read", "close"}},
        {EWOULDBLOCK, 32, {"flock"}}};
    for (const auto& [nErrno, nWanted, calls] : cases)
        for (const char* pszCall : calls) {
            int nTold = 0, nCall = 0;
            // Of the munmap calls the first two are releases; those behind them cut a block to its size.
            for (bool bFailed = true; bFailed && (std::strcmp(pszCall, "munmap") != 0 || nCall < 2);
                 ++nCall) {
                SCOPED_TRACE(testing::Message() << pszCall << " " << nCall << ", errno " << nErrno);
                const auto before = Held();
                g_nBefore = nCall, g_nErrno = nErrno;
                const DWORD nError = Everything(pszCall);
                bFailed = g_nBefore < 0;
                EXPECT_EQ(nError == 0 ? 0 : nWanted, nError);
                nTold += nError == 0 ? 0 : 1;
                EXPECT_EQ(before, Held()) << "descriptors, mapped bytes";
                EXPECT_TRUE(nWanted != 0 || fs::is_empty(m_sFolder)) << "a name stays behind";
                fs::remove_all(m_sFolder), fs::create_directory(m_sFolder);
            }
            EXPECT_GT(nCall, 1) << pszCall << " is never called";
            EXPECT_EQ(nWanted != 0, nTold != 0) << pszCall << ", errno " << nErrno;
        }
    for (const auto& [nMost, nError] : {std::pair(1000, 0), {0, 29}}) {
        g_nMost = std::size_t(nMost);
        EXPECT_EQ(static_cast<DWORD>(nError), Everything()) << "transfers of " << nMost << " bytes";
    }
    g_nMost = SIZE_MAX;
}
