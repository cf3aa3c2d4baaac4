// Range arithmetic and appends.

#include "StoreTest.h"

using Helpers = StoreTest;

/// The error of a call that gave this; 0 where it has not failed.
template <class Result> DWORD ErrorOf(Result result)
{
    return result ? 0 : GetLastError();
}

TEST_F(Helpers, ViewRangesAreWholeGranulesCutAtTheEndOfTheFile)
{
    EXPECT_EQ(131072u, CoverRange(65535, 2, 200000).nBytes);
    EXPECT_EQ(68928u, CoverRange(131072, 68929, 200000).nBytes);
    EXPECT_EQ(0xFFFFu, CoverRange(0x7FFFFFF0, 0x20, 0x7FFFFFFF).nBytes);
    EXPECT_EQ(0xFFFFFFFFu, CoverRange(0, 0xFFFFFFFF, 0xFFFFFFFF).nBytes);
}

TEST_F(Helpers, AppendsAndMappedRangesShowTheSameBytes)
{
    std::string sFile = std::string(12345, 'h') + Numbered(33 << 20);
    const HANDLE hFile = m_job.File(sFile.substr(0, 12345), false);
    DWORD nWritten = 0;
    faults::Begin({{"CopyToFile", 3, 1, 112}});
    EXPECT_EQ(112u, ErrorOf(WriteFileByView(hFile, &sFile[12345], 33 << 20, &nWritten, kAppend, 60)));
    EXPECT_EQ(32u << 20, nWritten) << "whole chunks only";
    EXPECT_TRUE(WriteFileByView(hFile, &sFile[12345], 33 << 20, &nWritten, 12345, 0));
    EXPECT_TRUE(WriteFileByView(hFile, "append", 6, &nWritten, kAppend, 101));
    EXPECT_EQ(223u, ErrorOf(WriteFileByView(hFile, "abc", 3, &nWritten, 0xFFFFFFFD, 60)));
    for (const auto nBytes : {5ull << 30, (8ull << 30) - 1, (4ull << 30) - 1}) {
        fs::resize_file(m_home.sRoot + "host/0", nBytes);
        EXPECT_EQ(223u, ErrorOf(WriteFileByView(hFile, "abc", 3, &nWritten, kAppend, 60))) << nBytes;
    }
    fs::resize_file(m_home.sRoot + "host/0", sFile.size() + 6);
    const HANDLE hMap = CreateFileMappingA(hFile, nullptr, PAGE_READWRITE, 0, 0, nullptr);
    for (const DWORD nOffset : {65535u, 131072u, (33u << 20) + 12300}) {
        char* pBytes = static_cast<char*>(MapFileRange(hFile, hMap, nOffset, 100000, nOffset == 131072));
        EXPECT_EQ(0, sFile.compare(nOffset, 45, pBytes, 45));
        if (nOffset == 131072)
            sFile[nOffset] = *pBytes = 'w';
        EXPECT_TRUE(UnmapView(pBytes - nOffset % 65536)) << "the view starts on its granule";
    }
    EXPECT_EQ(nullptr, MapFileRange(hFile, hMap, (33u << 20) + 12351, 1, 0)) << "at the end of the file";
    EXPECT_TRUE(CloseHandle(hMap));
    m_job.Close();
    EXPECT_TRUE(SameBytes(sFile + "append", m_job.sOutput));
}
