// Names of processes and the three reports, byte for byte.

#include "ReportFiles.h"
#include "TestImages.h"

using Reports = BudgetTest;

TEST_F(Reports, NameTheMostSpecificFieldThatIsKnown)
{
    std::map<unsigned, std::string> names;
    std::istringstream list(Expected("process-names.txt", "\n"));
    for (std::string sValue, sName; std::getline(list, sValue, '\t') && std::getline(list, sName);)
        names[unsigned(std::stoul(sValue, nullptr, 16))] = sName;
    EXPECT_EQ(63u, names.size());
    for (unsigned n = 0; n <= 0xFFFF; ++n)
        for (const unsigned nId : {n << 16, n << 16 | 0x0513, n << 16 | 0x3413, 0x04000000 | n << 8}) {
            std::string sName = Cp932("ID指定なし");
            for (const unsigned nMask : {0xFFF00000, 0xF0000u, 0xFF00u})
                sName = names.contains(nId & nMask) ? names[nId & nMask] : sName;
            ASSERT_EQ(sName, CImageObj::GetIpName(int(nId))) << std::hex << nId;
        }
}

TEST_F(Reports, TellWhatThePlannerGaveEachImage)
{
    const RunFolder folder;
    const std::string sMaximum = Cp932("最大使用メモリ量");
    Shrink(100300);
    TestImage in(Geometry(96, 96, 2), 2), out(Geometry(200, 200)), tmp(Geometry(100, 50));
    CImageObj bare;
    EXPECT_OK(out.SetRatio(200));
    EXPECT_OK(Step({&tmp}, {}).Alloc());
    EXPECT_OK(tmp.CnvFileImg());
    Step step({&in}, {&out}, {&tmp}), broken({&out, &bare, nullptr, &in}, {});
    ASSERT_OK(step.Alloc());
    step.request.nIpNo = 0x04944200;
    broken.request.nIpNo = 0x8100;
    const auto report = [](Step& s) {
        return CImageObj::UseMemoryListImg(&s.request, s.in.data(), s.out.data(), s.tmp.data());
    };
    EXPECT_EQ(1, report(broken)) << "switched off";
    EXPECT_EQ(1, CImageObj::UseMemoryListMax(0x4200, 1)) << "switched off";

    CWorkTableList table;
    CImageObj::ms_WorkList = &table;
    EXPECT_EQ(1, report(step));
    EXPECT_OK(out.SetBandHeight(20));
    EXPECT_EQ(1, report(step));
    EXPECT_EQ(200000, table.KeyReadInt(sMaximum.c_str(), sMaximum.c_str(), -1)) << "reports add up";
    EXPECT_EQ(0, report(broken)) << "a null object ends the report";
    EXPECT_EQ(0, CImageObj::UseMemoryListImg(&broken.request, nullptr, nullptr, nullptr));
    EXPECT_EQ(0, CImageObj::UseMemoryListImg(nullptr, step.in.data(), step.out.data(), nullptr));
    for (const auto& [nIpNo, nUsed] : {std::pair(0, INT_MAX), {0x00040500, INT_MIN}})
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(1, CImageObj::UseMemoryListMax(nIpNo, nUsed));
    CImageObj::ms_WorkList = nullptr;
    EXPECT_EQ(INT_MAX, table.KeyReadInt(sMaximum.c_str(), sMaximum.c_str(), -1));
    EXPECT_EQ(1, table.FlushData("table"));
    EXPECT_EQ(Expected("memory-table.txt", "\r\n"), FileBytes("table"));
}

TEST_F(Reports, ListThreadsAndMappingsWhileTheyAreSwitchedOn)
{
    const RunFolder folder;
    const auto enter = [](int nIpNo, int nEvent, const char* pszName) {
        EXPECT_EQ(1, CImageObj::ThreadList(nIpNo, nEvent, pszName)) << (pszName ? pszName : "");
    };
    const auto map = [](unsigned nAddress, const char* pszName) {
        EXPECT_EQ(1, CImageObj::MapList(reinterpret_cast<void*>(std::uintptr_t{nAddress}), pszName));
    };
    enter(0x1300, 0, "off");
    map(8, "off");
    CImageObj::DbgCImgLogInit();
    enter(0x1300, 0, "nowhere");
    map(8, "nowhere");
    CImageObj::DbgCImgLogEnd();
    EXPECT_EQ(nullptr, CImageObj::ms_ThreadList);
    EXPECT_EQ(nullptr, CImageObj::ms_MapList);
    EXPECT_FALSE(fs::exists("../logdata"));

    const std::string sWork = Cp932("ソア表示"), sLong(300, 'x'); // second bytes 0x5C and 0x41
    const std::string sDouble = Cp932(std::regex_replace(sLong, std::regex("x"), "あ"));
    const char *pszWork = sWork.c_str(), *pszLong = sLong.c_str();
    fs::create_directories("../logdata/trace");
    CImageObj::DbgCImgLogInit();
    std::thread([&] { enter(0x1300, 0, pszWork); }).join();
    enter(0x1300, 0, pszWork);
    enter(0x1300, 1, pszWork);
    CImageObj::DbgCImgLogInit(); // both lists go on
    enter(0x0500, -1, nullptr);
    enter(0x3400, 0, pszLong);
    const std::pair<unsigned, const char*> mappings[] = {
        {0x10, pszWork},       {0x7FFFFFFF, nullptr},         {0x80000008, "  blank"},
        {0x8000000F, pszLong}, {0xFFFFFFF8, sDouble.c_str()}, {1, "abc\x83"}};
    map(0x1008, Cp932("入力画像").c_str());
    for (const auto& [nAddress, pszName] : mappings)
        map(nAddress, pszName);
    CImageObj::DbgCImgLogEnd();
    CImageObj::DbgCImgLogInit();
    map(0, "again");
    CImageObj::DbgCImgLogEnd();
    EXPECT_EQ(Expected("map-list.txt", "\r\n"), FileBytes("../logdata/trace/debugmap.txt"));

    std::string sThreads = FileBytes("../logdata/trace/debugthread.txt");
    EXPECT_TRUE(std::regex_search(sThreads, std::regex("\n[^\t\n]{254}]\t"))) << "a key has 255 bytes";
    sThreads = std::regex_replace(sThreads, std::regex("x{100,}"), "*");
    for (const char* pszName : {"ID[B]", "ID[A]"}) { // the threads' numbers by their first appearance
        const std::string sNumber = std::regex_replace(sThreads, std::regex(R"([^]*?ID\[(\d+)\][^]*)"), "$1");
        sThreads = std::regex_replace(sThreads, std::regex(R"(ID\[)" + sNumber + "]"), pszName);
    }
    EXPECT_EQ(Expected("thread-list.txt", "\r\n"), sThreads);
}
