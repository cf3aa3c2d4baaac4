// Finding and cleaning the temporary folder, and the two text helpers that ignore case.

#include "StoreTest.h"

// An explicit instantiation may name private members; the friend hands them to the test.
auto TextHelpers();
template <auto pFind, auto pCompare> struct Reach
{
    friend auto TextHelpers() { return std::pair(pFind, pCompare); }
};
template struct Reach<&CImageCtrl::strchri, &CImageCtrl::strncmpi>;

using TempFolder = StoreTest;

TEST_F(TempFolder, CleaningDeletesOwnNamesOnceAndSkipsPathsThatOverrun)
{
    const auto clean = [this] { // once per process, so in one of its own
        // So deep that a name of 8 characters fits a path of 259 and one of 9 does not.
        const std::string sDeep = m_home.sRoot + std::string(250 - m_home.sRoot.size(), 'd') + "/";
        fs::create_directories(sDeep + "LRGdir");
        for (const char* pszName : {"LRG1.tmp", "lrg", "LRG12.tmp", "Oth.LRG", "xLRG.tmp"})
            std::ofstream(sDeep + pszName) << "left behind";
        std::strcpy(m_pszTemp, sDeep.c_str());
        EXPECT_OK(CImageCtrl::CleanTempFolder());
        for (const char* pszKept : {"LRG12.tmp", "Oth.LRG", "xLRG.tmp", "LRGdir"})
            EXPECT_TRUE(fs::remove(sDeep + pszKept)) << pszKept;
        EXPECT_TRUE(fs::is_empty(sDeep));
        std::ofstream(sDeep + "LRG1.tmp") << "later";
        EXPECT_OK(CImageCtrl::CleanTempFolder());
        EXPECT_FALSE(fs::is_empty(sDeep)) << "only the first call cleans";
        std::error_code ignored; // Windows removes no folder in which a program runs
        fs::remove_all(m_home.sRoot, ignored);
        std::exit(HasFailure() ? 1 : 0);
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(clean(), testing::ExitedWithCode(0), "");
}

TEST_F(TempFolder, IsFoundOnDemandUnlessForbidden)
{
    Opened<CImageCtrl> store;
    *m_pszTemp = '\0';
    Opened<CImageCtrl>::ms_ExecuteFlg = 1;
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageCtrl::CleanTempFolder());
    EXPECT_CODE(MM_FILE_ACCESS, store.Create(1000, 0, 1));
    EXPECT_EQ(LogLine("CImageCtrl", 287, 3), m_home.Take("log"));
    Opened<CImageCtrl>::ms_ExecuteFlg = 0;
    EXPECT_OK(CImageCtrl::CleanTempFolder());
    EXPECT_STREQ("", m_pszTemp) << "the failed call was the only one";
    EXPECT_OK(store.Create(1000, 0, 1));
    EXPECT_OK(store.Destroy());
    EXPECT_TRUE(fs::is_directory(m_pszTemp));
}

TEST_F(TempFolder, TextHelpersIgnoreCase)
{
    const auto [pFind, pCompare] = TextHelpers();
    const char szText[] = "Abc";
    EXPECT_EQ(szText + 1, pFind(szText, 'B'));
    EXPECT_EQ(szText + 3, pFind(szText, 0));
    EXPECT_EQ(nullptr, pFind(szText, 'x'));
    EXPECT_EQ(0, pCompare("ABCx", "abcy", 3));
    EXPECT_EQ(1, pCompare("abd", "ABC", 3));
    EXPECT_EQ(-1, pCompare("ab", "abc", 5));
    EXPECT_EQ(1, pCompare("\xE0", "z", 1));
}
