// The layer over POSIX with real files, mappings, signals, limits and processes that hold files and are
// killed.

#include "Platform/posix/PosixLayer.h"
#include "../StandardLibrary.h"

#include <csignal>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform::posix;

class PosixLayer : public testing::Test
{
protected:
    using Names = std::set<std::string>;
    static constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE, kDeleted = FILE_FLAG_DELETE_ON_CLOSE;
    static constexpr SIZE_T kHuge = 2 << 20;
    std::string m_sFolder = "/tmp/platformXXXXXX"; ///< of this test alone

    PosixLayer() { EXPECT_NE(nullptr, mkdtemp(m_sFolder.data())); }
    ~PosixLayer() override { std::filesystem::remove_all(m_sFolder); }
    std::string At(const std::string& sName) const { return m_sFolder + "/" + sName; }
    static HANDLE Open(const std::string& sPath, DWORD nShare = 0, DWORD nCreation = 2, DWORD nFlags = 0)
    {
        return CreateFileA(sPath.c_str(), 0xC0000000, nShare, nullptr, nCreation, nFlags, nullptr);
    }
    static HANDLE Map(HANDLE h, DWORD n) { return CreateFileMappingA(h, nullptr, 4, 0, n, nullptr); }
    static BYTE* View(HANDLE h, DWORD n, SIZE_T nLen) { return (BYTE*)MapViewOfFile(h, 2, 0, n, nLen); }
    std::string Put(const std::string& sName, const std::string& sText = "") const
    {
        std::filesystem::create_directories(std::filesystem::path(At(sName)).parent_path());
        std::ofstream(At(sName)) << sText;
        return At(sName);
    }
    Names Find(const std::string& sPattern) const
    {
        Names names;
        WIN32_FIND_DATAA data;
        const HANDLE hFind = FindFirstFileA((m_sFolder + "\\" + sPattern).c_str(), &data);
        for (BOOL bMore = hFind != INVALID_HANDLE_VALUE; bMore; bMore = FindNextFileA(hFind, &data))
            names.insert(data.cFileName);
        return hFind != INVALID_HANDLE_VALUE && FindClose(hFind) ? names : Names{};
    }
    /// The error of a call that gave this; 0 where it has not failed.
    template <class Result> static DWORD ErrorOf(Result result)
    {
        if constexpr (std::is_same_v<Result, HANDLE>)
            result = result == INVALID_HANDLE_VALUE ? nullptr : result;
        return result ? 0 : GetLastError();
    }
    /// A process that does only this work must end well; one that exits with 77 cannot do it here.
    static void InProcess(const std::function<void()>& work)
    {
        int nStatus = 0;
        const pid_t nProcess = fork();
        if (nProcess == 0)
            _exit((work(), HasFailure() ? 1 : 0));
        waitpid(nProcess, &nStatus, 0);
        if (WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 77)
            GTEST_SKIP() << "needs the right to mount a small file system";
        EXPECT_EQ(0, nStatus) << "status as waitpid gives it";
    }
};

TEST_F(PosixLayer, EveryRefusalHasItsCode)
{
    const std::string sFile = At("file"), sLink = At("link");
    const HANDLE hFile = Open(sFile, kShared), hMap = Map(hFile, 200000);
    const Descriptor appender(open(sFile.c_str(), O_RDWR | O_APPEND));
    ASSERT_EQ(0, symlink("file", sLink.c_str()));
    DWORD n = 0;
    EXPECT_EQ(5u, ErrorOf(Open(sLink))) << "a link laid for a new file";
    EXPECT_EQ(5u, ErrorOf(platform::OpenBinaryFile(sLink.c_str(), 1))) << "a link laid for a dump";
    EXPECT_EQ(80u, ErrorOf(Open(sFile, 0, CREATE_NEW))) << "new file there already";
    EXPECT_EQ(87u, ErrorOf(Open(sFile, 0, CREATE_ALWAYS, 0x40000000))) << "unknown flag";
    EXPECT_EQ(6u, ErrorOf(ReadFile(nullptr, &n, 1, &n, nullptr))) << "read the null handle";
    EXPECT_EQ(5u, ErrorOf(Map(HandleOf(appender.Get()), 4))) << "map what only appends";
    EXPECT_EQ(1132u, ErrorOf(View(hMap, 4096, 4))) << "view between granules";
    EXPECT_EQ(5u, ErrorOf(View(hMap, 65536, 200000 - 65535))) << "view past the end";
    EXPECT_EQ(5u, ErrorOf(platform::CopyToFile(hFile, hMap, 199999, "ab", 2, false))) << "copy past the end";
    EXPECT_EQ(8u, ErrorOf(VirtualAlloc(nullptr, SIZE_MAX, 0x3000, 4))) << "more memory than addresses";
    EXPECT_EQ(200000u, GetFileSize(hFile, nullptr));
    EXPECT_EQ(0u, GetLastError()) << "a size of all ones would look like a failure";
    const std::pair<std::string, mode_t> others[] = {
        {At("pipe"), S_IFIFO | 0600}, {At("socket"), S_IFSOCK | 0600}, {At("theirs"), S_IFREG | 0600}};
    for (const auto& [sPath, nMode] : others) {
        ASSERT_EQ(0, mknod(sPath.c_str(), nMode, 0));
        const bool bMine = S_ISREG(nMode) && chown(sPath.c_str(), geteuid() + 1, getegid()) != 0;
        EXPECT_EQ(bMine ? 0u : 5u, ErrorOf(DeleteFileA(sPath.c_str()))) << sPath;
    }
    EXPECT_EQ(5u, ErrorOf(DeleteFileA(sLink.c_str()))) << "a link";
}

TEST_F(PosixLayer, SharingHoldsAgainstOtherProcessesUntilTheyAreKilled)
{
    const std::string sPath = At("LRG1.tmp");
    for (const auto& [nShare, nFlags, bShares, nBytesLeft] :
         {std::array<DWORD, 4>{0, 0, 0, kHuge}, {kShared, 0, 1, kHuge}, {0, kDeleted, 0, 0}}) {
        const pid_t nHolder = fork();
        if (nHolder == 0) {
            std::memset(View(Map(Open(sPath, nShare, CREATE_ALWAYS, nFlags), kHuge), 0, 0), 1, kHuge);
            raise(SIGSTOP);
        }
        waitpid(nHolder, nullptr, WUNTRACED);
        EXPECT_EQ(bShares, static_cast<DWORD>(CloseHandle(Open(sPath, kShared, OPEN_EXISTING)))) << nFlags;
        EXPECT_EQ(32u, ErrorOf(Open(sPath, 0, OPEN_EXISTING))) << nFlags;
        EXPECT_EQ(32u, ErrorOf(DeleteFileA(sPath.c_str()))) << "took a living process's file";
        kill(nHolder, SIGKILL);
        waitpid(nHolder, nullptr, 0);
        EXPECT_EQ(nBytesLeft, std::filesystem::file_size(sPath)) << nFlags;
        EXPECT_TRUE(DeleteFileA(sPath.c_str())) << nFlags;
    }
}

TEST_F(PosixLayer, TemporaryFilesKeepTheirNamesUnderCleanUpsAndLoseThemWithTheHandle)
{
    const std::jthread cleaner([this](const std::stop_token& end) {
        while (!end.stop_requested())
            for (const std::string& sName : Find("LRG*.*"))
                DeleteFileA(At(sName).c_str());
    });
    for (int i = 0; i < 1500; ++i) {
        char szName[MAX_PATH] = "";
        GetTempFileNameA(m_sFolder.c_str(), "LRGX", 0, szName);
        const HANDLE hFile = Open(szName, 0, CREATE_ALWAYS, kDeleted);
        EXPECT_EQ(0, access(szName, F_OK)) << "store " << i << " lost its name";
        EXPECT_TRUE(CloseHandle(hFile));
        EXPECT_NE(0, access(szName, F_OK)) << "store " << i << " left its name";
    }
}

TEST_F(PosixLayer, NamelessDataIsPrivateAndTakesOnlyItsOwnNameAlong)
{
    Put("data~", "left by a killed process");
    InProcess([&] {
        close(0);
        std::filesystem::current_path(m_sFolder);
        const HANDLE hMine = Open("mine", 0, CREATE_NEW, kDeleted),
                     hGone = Open("gone", 0, CREATE_NEW, kDeleted);
        const Descriptor data = OpenUnlinked("data");
        struct stat file = {};
        std::FILE* pDump = platform::OpenBinaryFile("dump", 1);
        const int nDump = pDump ? fileno(pDump) : -1;
        for (const int n : {DescriptorOf(hMine), DescriptorOf(Map(hMine, 1)), data.Get(), nDump}) {
            EXPECT_GT(n, 2) << "it takes a standard stream's place";
            EXPECT_EQ(FD_CLOEXEC, fcntl(n, F_GETFD)) << "a started program has it too";
            EXPECT_EQ(0, fstat(n, &file));
            EXPECT_EQ(n == nDump ? 1u : 0u, file.st_nlink) << "names";
        }
        for (const char* pszOwn : {"mine", "dump"}) {
            EXPECT_EQ(0, stat(pszOwn, &file)) << pszOwn;
            EXPECT_EQ(mode_t{S_IFREG | 0600}, file.st_mode) << pszOwn;
        }
        std::filesystem::remove("dump");
        std::filesystem::remove("gone");
        Put("gone", "somebody else's");
        std::filesystem::current_path("/");
        EXPECT_TRUE(CloseHandle(hMine) && CloseHandle(hGone));
    });
    EXPECT_EQ((Names{".", "..", "gone"}), Find("*"));
}

TEST_F(PosixLayer, NamesKeepDoubleBytesMatchWithoutCaseAndFitTheirBuffers)
{
    EXPECT_STREQ("a/\xE6\x97\xA5/b", NativePath("a\\\xE6\x97\xA5\\b").Text()) << "UTF-8";
    EXPECT_STREQ("a/\x83\x5C\xB1/", NativePath("a\\\x83\x5C\xB1\\").Text()) << "two bytes, then one";
    EXPECT_STREQ("\xED\xA0\x95\\", NativePath("\xED\xA0\x95\\").Text()) << "looks like UTF-8 only";
    for (const char* pszName : {"LRG1.tmp", "lrg2", "LrGa.b.c", "xLRG.tmp", "LRG\\..\\x", "lrg\x83\\",
                                "\x83\x61", "\xC3\x9F/LRG\x83"})
        Put(pszName);
    EXPECT_EQ((Names{"LRG1.tmp", "lrg2", "LrGa.b.c", "lrg\x83\\"}), Find("LRG*.*")) << "to be deleted";
    EXPECT_EQ(Names{}, Find("\xC3\x9F\\L*")) << "the name makes the separator a second byte";
    EXPECT_EQ((Names{"LRG1.tmp", "xLRG.tmp"}), Find("*rG?*TMP"));
    EXPECT_EQ(Names{}, Find("\x83\x41")) << "another character, not another case";
    EXPECT_EQ(Names{}, Find("*A")) << "half a character";
    char szName[MAX_PATH], szFolder[MAX_PATH];
    InProcess([&] {
        setenv("TMPDIR", (m_sFolder + "\\\x83\\").c_str(), 1);
        std::filesystem::create_directory(At("\x83\\"));
        EXPECT_NE(0u, GetTempPathA(MAX_PATH, szName));
        EXPECT_EQ(m_sFolder + "/\x83\\/", szName);
        EXPECT_NE(0u, GetTempFileNameA(std::getenv("TMPDIR"), "LRG", 0, szName));
        std::filesystem::current_path(m_sFolder);
        for (const char* pszRelative : {"rel", "rel/"}) {
            setenv("TMPDIR", pszRelative, 1);
            EXPECT_EQ(m_sFolder.size() + 5, GetTempPathA(MAX_PATH, szFolder));
            EXPECT_EQ(m_sFolder + "/rel/", szFolder) << "it would move with the current folder";
        }
        EXPECT_EQ(0, access(At("\x83\\/" + std::string(strrchr(szName, 'L'))).c_str(), F_OK)) << szName;
    });
    const std::string sLongest = m_sFolder + std::string(259 - 15 - m_sFolder.size(), '/');
    EXPECT_NE(0u, GetTempFileNameA(sLongest.c_str(), "LRGX", 0, szName)) << "a name of 259 characters fits";
    EXPECT_EQ(0u, GetTempFileNameA((sLongest + "/////").c_str(), "LRG", 0, szName));
}

TEST_F(PosixLayer, ViewsCopiesAndReadsShowTheSameBytesAtEveryGranule)
{
    const DWORD nSize = 5 * (1 << 20) + 100;
    const HANDLE hFile = Open(At("file")), hMap = Map(hFile, nSize);
    for (DWORD nOffset = 0; nOffset < nSize; nOffset += 65536)
        for (const DWORD nWanted : {100u, 65536u, 2u << 20}) {
            const DWORD nBytes = std::min(nWanted, nSize - nOffset), nMark = nOffset + nBytes;
            BYTE* pView = View(hMap, nOffset, nMark == nSize ? 0 : nBytes);
            DWORD nFound = 0, nRead = 0;
            EXPECT_TRUE(platform::CopyToFile(hFile, hMap, nMark - 4, &nMark, 4, nBytes == 100));
            EXPECT_EQ(0, std::memcmp(pView + nBytes - 4, &nMark, 4)) << "a copy does not show in a view";
            std::memcpy(pView, &nOffset, 4);
            SetFilePointer(hFile, static_cast<LONG>(nOffset), nullptr, FILE_BEGIN);
            EXPECT_TRUE(ReadFile(hFile, &nFound, 4, &nRead, nullptr));
            EXPECT_EQ(nOffset, nFound) << "what a view wrote is not read";
            EXPECT_TRUE(FlushViewOfFile(pView + 50, 0));
            EXPECT_FALSE(FlushViewOfFile(pView + 50, nBytes - 49)) << "past the view's end";
            EXPECT_TRUE(UnmapViewOfFile(pView));
            EXPECT_FALSE(UnmapViewOfFile(pView)) << "twice";
        }
    EXPECT_TRUE(CloseHandle(hFile));
    EXPECT_TRUE(UnmapViewOfFile(View(hMap, 0, 0))) << "a mapping outlives its file's handle";
    EXPECT_TRUE(CloseHandle(hMap));
}

TEST_F(PosixLayer, GrowthAndHolesOnAFullDiskAreRefusedAndLeaveTheLength)
{
    InProcess([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", m_sFolder.c_str(), "tmpfs", 0, "size=100m") != 0)
            _exit(77);
        const HANDLE hFile = Open(At("file")), hHoles = Open(Put("holes", "kept"), 0, OPEN_EXISTING);
        EXPECT_NE(nullptr, Map(hFile, 5000));
        EXPECT_EQ(112u, ErrorOf(Map(hFile, 160 << 20)));
        EXPECT_EQ(5000u, GetFileSize(hFile, nullptr)) << "the next append would leave a gap";
        std::filesystem::resize_file(At("holes"), 30 << 20);
        BYTE *pView = View(Map(hFile, 50 << 20), 0, 0), *pHoles = View(Map(hHoles, 40 << 20), 0, 0);
        std::filesystem::resize_file(At("holes"), 160 << 20);
        EXPECT_EQ(112u, ErrorOf(Map(hHoles, 0))) << "would be a signal at some later pixel";
        EXPECT_EQ(160u << 20, GetFileSize(hHoles, nullptr));
        std::filesystem::resize_file(At("holes"), 40 << 20);
        Put("filler", std::string(20 << 20, 'f'));
        EXPECT_EQ("kept", std::string(pHoles, pHoles + 4));
        std::memset(pView, 1, 50 << 20); // a signal here if the mapping had not reserved the blocks
        std::memset(pHoles, 1, 40 << 20);
    });
}

TEST_F(PosixLayer, LimitsAreErrorsAndSignalsCutNothingShort)
{
    const std::string sLong = Put("long", std::string(3 << 20, 'l'));
    InProcess([&] {
        std::signal(SIGALRM, [](int) {});
        ualarm(1000, 1000);
        const DWORD nBefore = GetTickCount();
        Sleep(60);
        EXPECT_GE(GetTickCount() - nBefore, 60u);
        EXPECT_NE(nullptr, Map(HandleOf(open("/dev/shm", O_TMPFILE | O_RDWR, 0600)), 50 << 20));
        const rlimit limit = {1 << 20, 1 << 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        const HANDLE hFile = Open(At("file")), hLong = Open(sLong, kShared, OPEN_EXISTING);
        EXPECT_NE(nullptr, Map(hFile, 1 << 20));
        EXPECT_EQ(223u, ErrorOf(Map(hFile, (1 << 20) + 1)));
        EXPECT_FALSE(platform::CopyToFile(hLong, Map(hLong, 0), 2 << 20, "x", 1, false));
        EXPECT_FALSE(platform::OpenTextFile(sLong.c_str(), "a"));
    });
}

TEST_F(PosixLayer, ThreadsFindTheirOwnBlocksAndViews)
{
    const HANDLE hMap = Map(Open(At("file")), 4 * 65536);
    const SIZE_T sizes[] = {2, kHuge - 1, kHuge, 3 * kHuge + 5000};
    const auto work = [&](DWORD nThread) {
        for (int i = 0; i < 400; ++i) {
            const SIZE_T nBytes = sizes[i % 4];
            auto* pBlock = static_cast<BYTE*>(VirtualAlloc(nullptr, nBytes, 0x103000, PAGE_READWRITE));
            for (BYTE* pEnd : {pBlock, pBlock + nBytes - 1})
                EXPECT_EQ(0, (*pEnd)++) << "another thread's block, or not cleared";
            EXPECT_TRUE(nBytes < kHuge || reinterpret_cast<std::uintptr_t>(pBlock) % kHuge == 0) << nBytes;
            EXPECT_TRUE(UnmapViewOfFile(std::memset(View(hMap, nThread * 65536, 65536), i, 65536)));
            EXPECT_TRUE(VirtualFree(pBlock, 0, MEM_RELEASE));
        }
    };
    const std::jthread first(work, 1), second(work, 2);
}

TEST_F(PosixLayer, MemoryLoadIsTheFullerOfMachineAndControlGroups)
{
    // what belongs to the machine and to its control groups
    Put("above/proc/self/cgroup", "0::/above/b\n");
    Put("above/sys/fs/cgroup/above/memory.max", "400000\n");
    Put("above/sys/fs/cgroup/above/memory.current", "390000\n");
    Put("above/sys/fs/cgroup/above/memory.stat", "anon 1\ninactive_file 30000\n");
    Put("inside/proc/self/cgroup", "3:cpu:/\n9:memory:/out/side\n0::/a\n");
    Put("inside/sys/fs/cgroup/memory/memory.limit_in_bytes", "500000");
    Put("inside/sys/fs/cgroup/memory/memory.usage_in_bytes", "500000");
    Put("inside/sys/fs/cgroup/memory/memory.stat", "total_inactive_file 100000\n");
    Put("fuller/proc/self/cgroup", "0::/b/c\n");
    for (const auto& [sName, sMax, sUsed] :
         {std::tuple("b", "800000", "784000"), {"b/c", "400000", "100000"}}) {
        Put("fuller/sys/fs/cgroup/" + std::string(sName) + "/memory.max", sMax);
        Put("fuller/sys/fs/cgroup/" + std::string(sName) + "/memory.current", sUsed);
    }
    for (const auto& [sRoot, nLoad] :
         {std::pair<std::string, unsigned>("above/", 90), {"inside/", 80}, {"fuller/", 98}}) {
        Put(sRoot + "proc/meminfo", "MemTotal: 1000 kB\nMemFree: 1 kB\nMemAvailable: 400 kB\n");
        EXPECT_EQ(nLoad, ReadMemoryUse(At(sRoot).c_str()).nLoad) << sRoot;
    }
}
