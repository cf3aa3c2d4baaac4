// Tables and blocks while memory and files fail: nothing half done, nothing left.

#include "MemoryManager/MemoryManager.h"
#include "StoreTest.h"

using KeyTableFaults = StoreTest;

TEST_F(KeyTableFaults, LeaveATableConsistentWhicheverCallFails)
{
    const std::tuple<const char*, const char*, int> writes[] = {
        {"one", "A", 1}, {"one", "b", 2}, {"two", "A", 9}, {"one", "a", 3}};
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
            EXPECT_GE(nDone, bFail && bFailed ? 4 : 5) << "call " << nCall;
        }
        EXPECT_EQ(39u, Take("temp").size()) << "nothing is there twice";
    }
}

TEST_F(KeyTableFaults, LeaveTheHostsBuffersAloneWithoutMemory)
{
    CWorkTableList table;
    unsigned char mark = 0, *pBuffer = &mark;
    faults::Begin({"VirtualAlloc", 1, INT_MAX, 8});
    EXPECT_EQ(1, table.SetWorkTable(&pBuffer, 10));
    EXPECT_EQ(0, table.AllocWorkTable());
    EXPECT_EQ(&mark, pBuffer);
    EXPECT_LE(60000u, faults::g_nTicks);
    faults::Begin({"VirtualFree", 1});
    EXPECT_EQ(1, table.AllocWorkTable());
    EXPECT_EQ(0, table.AllocWorkTable()) << "the old block stays";
    T_BaseBuf_tag r{};
    faults::Begin({"VirtualAlloc", 2});
    EXPECT_OK(BaseMallocInit(&r));
    r.nBufCnt = r.nBufLines[0] = 1;
    r.nBufPitch[0] = r.nMemSize + 1;
    EXPECT_CODE(MM_NO_MEMORY, BaseMallocMain(&r, 1, 0));
    const std::tuple<void*, void*, int, int> nothing;
    EXPECT_EQ(nothing, std::tuple(r.pMem, r.pBuf[0], r.nMemSize, r.nBufCnt));
}
