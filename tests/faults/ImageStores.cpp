// The image store in every state, each reached along a path of steps, and with every call failing on the way.

#include "MemoryManager/stores/StoreLifetime.h"
#include "StoreTest.h"

class ImageStores : public StoreTest
{
protected:
    // Takes a fresh store along a path while calls fail as planned: c create, p put the image in, g get it
    // back, f convert to a file, a map all, w plan whole. The code of the first step that fails.
    DWORD Walk(const char* pszPath, LONG nLimit, const faults::Plan& plan, int nHeader = 0)
    {
        m_store = {};
        m_store.SetHdrSize(nHeader);
        faults::Begin(plan);
        DWORD nResult = 0;
        for (; *pszPath != '\0' && nResult == 0; ++pszPath)
            nResult = *pszPath == 'c'   ? m_store.Create(kBytes, nLimit, 1)
                      : *pszPath == 'w' ? m_store.Create(kBytes, kBytes, 1)
                      : *pszPath == 'f' ? m_store.ConvertFile(kBytes)
                      : *pszPath == 'a' ? m_store.MapBandAll(0, kBytes, 0)
                                        : Pass(m_store, *pszPath == 'p');
        return nResult;
    }
    CImageCtrl m_store;
};

TEST_F(ImageStores, HandOutTheSameBytesInEveryStateAndLeaveNothingWhateverFails)
{
    // path, limit, header; access type, all mapped
    // clang-format off
    const std::tuple<const char*, LONG, int, tag_E_ACSTYPE, int> cases[] = {
        {"cpg", kBytes, 0, ACS_MEMORY, 1}, {"cpg", kBytes - 1, 0, ACS_MMF, 0}, {"cpfg", kBytes, 0, ACS_MMF, 0},
        {"cpfag", kBytes, 0, ACS_MMF, 1}, {"cpag", 0, 0, ACS_MMF, 1}, {"cpgwgfg", 0, 0, ACS_MMF, 0},
        {"cpg", 0, kHeader, ACS_MMF, 0}, {"cpg", kBytes, kHeader, ACS_MEMORY, 1}, {"cpgwg", 0, kHeader, ACS_MMF, 1}};
    // clang-format on
    for (const auto& [pszPath, nLimit, nHeader, eType, nAllMapped] : cases)
        for (auto [nCall, bFailed] = std::pair(1, true); bFailed; ++nCall) {
            SCOPED_TRACE(testing::Message() << pszPath << ", limit " << nLimit << ", call " << nCall);
            const DWORD nResult = Walk(pszPath, nLimit, {"", nCall}, nHeader);
            bFailed = faults::g_nCalls >= nCall;
            faults::Begin();
            char* pWhole = static_cast<char*>(m_store.GetMemPtr());
            if (!bFailed) {
                EXPECT_TRUE(nResult == 0 && m_store.GetAcsType() == eType &&
                            m_store.GetAllMapFlg() == nAllMapped);
                EXPECT_EQ(nAllMapped == 1, pWhole && m_store.MapBandAdress(5, 1, 3) == pWhole + nHeader + 5);
                EXPECT_TRUE(m_store.FreeBandAdress(7) == 0 && m_store.FreeBandAdress(-1) == 18);
                for (const auto& [nOffset, nSlot] :
                     {std::pair(0, -1), {0, 10}, {kBytes, 0}, {-1, 0}, {-70000, 0}})
                    EXPECT_EQ(nullptr, m_store.MapBandAdress(static_cast<DWORD>(nOffset), 0x20000, nSlot))
                        << nOffset;
                EXPECT_NE(nullptr, m_store.MapBandAdress(kBytes - 1, 0xFFFFFFFF, 2))
                    << "its end may lie behind";
            } else if (pWhole && m_store.GetAcsType() == ACS_MEMORY) {
                EXPECT_TRUE(m_store.GetFHandle() == INVALID_HANDLE_VALUE && Pass(m_store, false) == 0)
                    << "as before";
            }
            const bool bConverted = nLimit == kBytes && m_store.GetAcsType() == ACS_MMF; // its file stays
            EXPECT_EQ(0u, m_store.Destroy() | m_store.Destroy());
            EXPECT_EQ(bConverted, !fs::is_empty(m_sFolder + "temp"));
            EXPECT_TRUE((bConverted ? kImage : "") == Take("temp"));
            EXPECT_EQ(0, faults::g_nBlocks | faults::g_nViews | faults::g_nHandles);
            EXPECT_TRUE(!m_store.MapBandAdress(0, 1, 0) && m_store.ConvertFile(kBytes) == 49)
                << "nothing is left";
        }
}

TEST_F(ImageStores, RefuseWhatTheyCannotHold)
{
    CImageCtrl* pStore = NewStore<CImageCtrl>();
    EXPECT_TRUE(pStore->MapBandAll(0, 1, 0) == 66 && pStore->ConvertFile(1) == 49) << "empty";
    EXPECT_EQ("MemoryManager/CImageCtrl(1026):LastError=6\n", Take("log"));
    pStore->SetHdrSize(kHeader);
    EXPECT_EQ(18u, pStore->Create(INT32_MAX - 53, 0, 1));
    EXPECT_TRUE(pStore->Create(1, 1, 1) == 0 && pStore->ConvertFile(kHeader + 2) == 18);
    pStore->Destroy();
    pStore->SetHdrSize(-1);
    EXPECT_EQ(18u, pStore->Create(50, 200, 1));
    DeleteStore(pStore);

    CImageCtrl headed; // band addresses are counted from slot 0, which a long header would move
    headed.SetHdrSize(70000);
    EXPECT_TRUE(headed.Create(kBytes, 0, 1) == 0 && headed.MapBandAll(0, kBytes, 0) == 66);
    headed.Destroy();
    EXPECT_TRUE(headed.Create(9, 9, 1) == 0 && headed.MapBandAll(0, 9, 0) == 0 &&
                headed.MapBandAdress(0, 9, 0));
    headed.Destroy();
    CImageCtrl converted; // its file has no room for the header
    converted.SetHdrSize(kHeader);
    EXPECT_TRUE(converted.Create(kBytes, kBytes, 1) == 0 && converted.ConvertFile(kBytes) == 0);
    EXPECT_EQ(0u, converted.Create(kBytes, kBytes, 1));
    converted.Destroy();
}

TEST_F(ImageStores, HaveACodeAndALogLineForEveryFailingCall)
{
    // path, limit; call that fails, which of them; result, reporting line or 0
    // clang-format off
    const std::tuple<const char*, LONG, const char*, int, DWORD, int> cases[] = {
        {"c", 0, "GetTempFileNameA", 1, 49, 287}, {"c", 0, "CreateFileA", 1, 49, 303},
        {"c", 0, "CreateFileMappingA", 1, 49, 322}, {"cp", 0, "MapViewOfFile", 3, 69, 0},
        {"cp", 0, "UnmapViewOfFile", 2, 81, 0}, {"cw", 0, "MapViewOfFile", 1, 65, 0},
        {"ca", 0, "MapViewOfFile", 1, 66, 0}, {"c", kBytes, "VirtualAlloc", 1, 1, 0},
        {"cf", kBytes, "GetTempFileNameA", 1, 49, 1005}, {"cf", kBytes, "CreateFileA", 1, 49, 1019},
        {"cf", kBytes, "GetFileSize", 1, 49, 1026}, {"cf", kBytes, "CreateFileMappingA", 1, 49, 1026},
        {"cf", kBytes, "CopyToFile", 1, 49, 1026}, {"cf", kBytes, "CreateFileA", 2, 49, 1043},
        {"cf", kBytes, "CreateFileMappingA", 2, 49, 1057}};
    // clang-format on
    for (const auto& [pszPath, nLimit, pszCall, nFirst, nResult, nLine] : cases) {
        EXPECT_EQ(nResult, Walk(pszPath, nLimit, {pszCall, nFirst, 1, 112})) << pszPath << ", " << pszCall;
        const std::string sLine = "MemoryManager/CImageCtrl(" + std::to_string(nLine) + "):LastError=112\n";
        EXPECT_EQ(nLine > 0 ? sLine : "", Take("log"));
        m_store.Destroy();
    }
}
