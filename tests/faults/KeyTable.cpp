// Tables and blocks while memory and files fail: nothing half done, nothing left.

#include "MemoryManager/MemoryManager.h"
#include "StoreTest.h"

using KeyTableFaults = StoreTest;

TEST_F(KeyTableFaults, LeaveATableConsistentWhicheverCallFails)
{
    // clang-format off
    const std::tuple<const char*, const char*, int> writes[] = {{"one", "A", 1}, {"one", "b", 2},
        {"two", "A", 9}, {"one", "a", 3}};
    // clang-format on
    for (auto [nCall, bFailed] = std::pair(1, true); bFailed; ++nCall) {
        CWorkTableList table;
        for (const bool bFail : {true, false}) {
            Take("temp");
            faults::Begin({"", bFail ? nCall : 0});
            int nDone = 0;
            for (const auto& [pszSection, pszKey, nValue] : writes) {
                const int nResult = table.KeyWriteInt(pszSection, pszKey, nValue);
                EXPECT_EQ(nResult ? nValue : -1, table.KeyReadInt(pszSection, pszKey, -1));
                nDone += nResult;
            }
            nDone += table.FlushData((m_sFolder + "temp/text").c_str());
            bFailed = bFail ? faults::g_nCalls >= nCall : bFailed;
            EXPECT_TRUE(nDone == 5 || (bFail && bFailed && nDone == 4)) << nDone << ", call " << nCall;
        }
        EXPECT_EQ(39u, Take("temp").size()) << "nothing is there twice";
    }
}

TEST_F(KeyTableFaults, LeaveTheHostsBuffersAloneWithoutMemory)
{
    CWorkTableList table;
    unsigned char mark = 0, *pBuffer = &mark;
    faults::Begin({"VirtualAlloc", 1, INT_MAX, 8});
    EXPECT_TRUE(table.SetWorkTable(&pBuffer, 10) && !table.AllocWorkTable() && pBuffer == &mark);
    EXPECT_LE(60000u, faults::g_nTicks);
    faults::Begin({"VirtualFree", 1});
    EXPECT_TRUE(table.AllocWorkTable() == 1 && table.AllocWorkTable() == 0) << "the old block stays";
    T_BaseBuf_tag r{};
    faults::Begin({"VirtualAlloc", 2});
    EXPECT_EQ(0, BaseMallocInit(&r));
    r.nBufCnt = r.nBufLines[0] = 1;
    r.nBufPitch[0] = r.nMemSize + 1;
    EXPECT_TRUE(BaseMallocMain(&r, 1, 0) == 1 && !r.pMem && !r.pBuf[0] && r.nMemSize + r.nBufCnt == 0);
}
