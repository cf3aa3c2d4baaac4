// The store over a host's file or block: what each access type reads, writes, keeps and refuses, and how it
// bears failing calls.

#include "MemoryManager/CImageObjIO.h"
#include "StoreTest.h"

class ExternalStores : public StoreTest
{
protected:
    // A store over a host's file or block with a header, before its Create; from then on calls fail as
    // planned.
    auto& Bind(tag_E_ACSTYPE eAccess, tag_E_IMGTYPE eRole, const std::string& sContent,
               const faults::Plan& plan = {})
    {
        Release();
        m_store = {};
        m_store.SetAcsType(eAccess);
        m_store.SetImgType(eRole);
        m_store.SetHederSize(kHeader);
        m_store.SetFileSize(kWhole);
        m_store.SetFileHandle(m_hHost = OpenHost(sContent));
        if (eAccess == ACS_MEMORY)
            m_store.SetImageData((m_sBlock = sContent).data());
        faults::Begin(plan);
        return m_store;
    }
    // Ends the store and gives what the host then has; a handle that the store did not close is the host's.
    std::string Release()
    {
        faults::Begin();
        EXPECT_EQ(0u, m_store.Destroy() | m_store.Destroy());
        EXPECT_TRUE(m_store.GetFHandle() == INVALID_HANDLE_VALUE || CloseHandle(m_hHost));
        m_store.SetFileHandle(INVALID_HANDLE_VALUE);
        EXPECT_EQ(0, faults::g_nBlocks | faults::g_nViews | faults::g_nHandles);
        const std::string sFile = Take("host");
        return m_store.GetAcsType() == ACS_MEMORY ? m_sBlock : sFile;
    }
    // A whole transfer; the code of the first step that fails.
    DWORD Transfer(tag_E_ACSTYPE eAccess, tag_E_IMGTYPE eRole, LONG nLimit, const faults::Plan& plan)
    {
        const bool bAppends = eRole == IMG_OUTPUT && eAccess != ACS_MEMORY;
        auto& store = Bind(eAccess, eRole, bAppends ? kPicture.substr(0, kHeader) : kPicture, plan);
        DWORD nResult = store.CreateTMPBuf(kBand);
        nResult = nResult != 0 ? nResult : store.Create(kWhole, nLimit, 1);
        return nResult != 0 ? nResult : Pass(store, eRole == IMG_OUTPUT);
    }
    ~ExternalStores() override { Release(); }

    static constexpr tag_E_ACSTYPE kAccesses[] = {ACS_MMF, ACS_FILEIO, ACS_MEMORY};
    Opened<CImageCtrlIO> m_store;
    HANDLE m_hHost = INVALID_HANDLE_VALUE;
    std::string m_sBlock;
};

TEST_F(ExternalStores, BringEveryByteToItsPlaceOrFailAndKeepNothing)
{
    for (const auto eAccess : kAccesses)
        for (const auto eRole : {IMG_INPUT, IMG_OUTPUT})
            for (const LONG nLimit : {kBand, kWhole})
                for (auto [nCall, bFailed] = std::pair(1, true); bFailed; ++nCall) {
                    SCOPED_TRACE(testing::Message()
                                 << eAccess << " " << eRole << " " << nLimit << " " << nCall);
                    const DWORD nResult = Transfer(eAccess, eRole, nLimit, {"", nCall});
                    bFailed = faults::g_nCalls >= nCall;
                    EXPECT_TRUE(nResult == 0 || bFailed);
                    faults::Begin();
                    EXPECT_TRUE(!m_store.MapBandAdress(kBytes, 1, 0) && !m_store.MapBandAdress(0, 1, 10));
                    EXPECT_EQ(18u, m_store.FreeBandAdress(-1));
                    EXPECT_TRUE(eAccess == ACS_MMF || m_store.ConvertFile(9) == 49) << "the host's";
                    if (nResult == 0) { // a band is written once, and a whole image's again to its own place
                        EXPECT_EQ(0u, m_store.FreeBandAdress(0));
                        EXPECT_TRUE(nLimit == kBand || m_store.MapBandAdress(kBand, 9, 0));
                        EXPECT_EQ(0u, m_store.FreeBandAdress(0));
                    }
                    EXPECT_TRUE(Release() == kPicture || nResult != 0);
                }
}

TEST_F(ExternalStores, RefuseShortInputsUntouchedAndUnknownAccess)
{
    for (const auto& [eAccess, sSite] : {std::pair(ACS_MMF, "(322)"), std::pair(ACS_FILEIO, "IO(156)")})
        for (const LONG nLimit : {100, kWhole}) {
            EXPECT_EQ(49u, Bind(eAccess, IMG_INPUT, kPicture.substr(1)).Create(kWhole, nLimit, 1));
            EXPECT_TRUE(!m_store.IsCreated() && !m_store.GetMemPtr() && m_store.GetFHandle() == m_hHost);
            EXPECT_TRUE(kPicture.substr(1) == Release());
            EXPECT_EQ(std::string("MemoryManager/CImageCtrl") + sSite + ":LastError=38\n", Take("log"));
        }
    EXPECT_EQ(33u, Bind(ACS_NONE, IMG_INPUT, "").Create(1, 1, 1));
}

TEST_F(ExternalStores, AreMadeAnewForAnotherAllotmentOnlyAndKeepBandsInsideIt)
{
    for (const auto eAccess : kAccesses)
        for (const int nMode : {0, 1}) {
            SCOPED_TRACE(testing::Message() << eAccess << " " << nMode);
            Bind(eAccess, IMG_INPUT, kPicture);
            void* pData = eAccess == ACS_MEMORY ? m_sBlock.data() : m_hHost;
            T_ImgInf inf{MM_FILE_RAW, eAccess, pData, 0, 10, 500, 0x1322, 0x1322, 0};
            CImageObjIO io;
            ASSERT_EQ(0u, io.InitForUnify(&inf, IMG_INPUT, 0, 0, 0, MM_ALIGN_LINES, 0, nMode));
            const auto pStore = static_cast<CImageCtrlIO*>(io.m_pImageCtrl);
            for (const LONG nLimit : {9000, 20000, 80000, 9000}) { // of 30000 bytes of external lines
                faults::Begin();
                ASSERT_EQ(0u, io.Create(30000, nLimit, 1));
                EXPECT_TRUE(faults::g_nCalls > 0 || (nMode == 0 && eAccess != ACS_FILEIO));
                const int nLines = io.GetBandHeight();
                unsigned char* pWork = pStore->GetTMPBuf(0);
                if (nMode == 1)
                    pWork[59] = 'w';
                faults::Begin();
                EXPECT_EQ(0u, io.Create(30000, nLimit, 1));
                EXPECT_TRUE(faults::g_nCalls == 0 && pWork == pStore->GetTMPBuf(0));
                EXPECT_TRUE(nMode == 0 || pWork[59] == 'w');
                faults::Begin({"VirtualAlloc", 1});
                EXPECT_TRUE(nMode == 0 || io.Create(30000, nLimit + 1000, 1) == 1);
                EXPECT_EQ(nLines, io.GetBandHeight()) << "of a buffer that was not made";
                EXPECT_TRUE(pStore->MapBandAdress(0, 60, 0) && pStore->FreeBandAdress(0) == 0);
                EXPECT_EQ(eAccess != ACS_FILEIO || nLimit == 80000,
                          pStore->MapBandAdress(0, 29999, 0) != nullptr);
                EXPECT_EQ(0u, pStore->FreeBandAdress(0));
            }
        }
    ASSERT_EQ(0u, Bind(ACS_FILEIO, IMG_INPUT, kPicture).Create(1000, 600, 1));
    const char* pLast = static_cast<char*>(m_store.MapBandAdress(kBytes - 10, 100, 0));
    EXPECT_EQ(kImage.substr(kBytes - 10) + std::string(90, '\0'), std::string(pLast, 100))
        << "an older band shows";
}

TEST_F(ExternalStores, AnswerFailingCallsWithPatienceACodeAndALogLineAndNeverShiftABand)
{
    // access type, role, limit; call that fails, from which on, how often, error; result, calls, ms, latest
    // log line
    // clang-format off
    const std::tuple<tag_E_ACSTYPE, tag_E_IMGTYPE, LONG, faults::Plan, DWORD, int, DWORD, std::string> cases[] = {
        {ACS_MMF, IMG_INPUT, kWhole, {"CreateFileMappingA", 1, 1, 5}, 49, 1, 0, "(322):LastError=5"},
        {ACS_MMF, IMG_INPUT, kWhole, {"MapViewOfFile", 1, 1, 5}, 68, 1, 0, ""},
        {ACS_MMF, IMG_INPUT, kWhole, {"UnmapViewOfFile", 1, 1, 5}, 82, 1, 0, ""},
        {ACS_FILEIO, IMG_INPUT, kWhole, {"VirtualAlloc", 1, 1, 8}, 1, 1, 0, ""},
        {ACS_FILEIO, IMG_INPUT, kWhole, {"VirtualAlloc", 2, 1, 8}, 1, 2, 0, ""},
        {ACS_FILEIO, IMG_INPUT, kWhole, {"ReadFile", 1, 1, 5}, 49, 1, 0, "IO(156):LastError=5"},
        {ACS_FILEIO, IMG_INPUT, kWhole, {"ReadFile", 2, 1, 5}, 0, 1, 0, ""},
        {ACS_FILEIO, IMG_OUTPUT, kBand, {"ReadFile", 1, 1, 5}, 0, 0, 0, ""},
        {ACS_FILEIO, IMG_INPUT, kBand, {"ReadFile", 3, 1, 5}, 69, 3, 0, ""},
        {ACS_FILEIO, IMG_OUTPUT, kBand, {"CopyToFile", 1, INT_MAX, 112}, 49, 600, 60000, "IO(402):LastError=112,counter=599"},
        {ACS_FILEIO, IMG_OUTPUT, kBand, {"CopyToFile", 1, INT_MAX, 5}, 49, 10, 1000, "IO(402):LastError=5,counter=540"},
        {ACS_FILEIO, IMG_OUTPUT, kBand, {"GetFileSize", 1, INT_MAX, 6}, 49, 10, 1000, "IO(402):LastError=6,counter=540"},
        {ACS_FILEIO, IMG_OUTPUT, kBand, {"CopyToFile", 1, 599, 112}, 0, 602, 59900, "IO(402):LastError=112,counter=598"},
        {ACS_FILEIO, IMG_OUTPUT, kBand, {"GetFileSize", 2, 1, 6}, 0, 4, 100, "IO(402):LastError=6,counter=0"},
        {ACS_FILEIO, IMG_OUTPUT, kWhole, {"CopyToFile", 2, 9, 5}, 0, 12, 900, "IO(402):LastError=5,counter=480"}};
    // clang-format on
    for (const auto& [eAccess, eRole, nLimit, plan, nResult, nCalls, nTicks, sLine] : cases) {
        EXPECT_EQ(nResult, Transfer(eAccess, eRole, nLimit, plan)) << plan.sCall << " " << plan.nError;
        EXPECT_TRUE(faults::g_nCalls == nCalls && faults::g_nTicks == nTicks)
            << plan.sCall << " " << plan.nError;
        const std::string sLog = Take("log");
        EXPECT_EQ(sLine != "" ? "MemoryManager/CImageCtrl" + sLine : "", sLog.substr(0, sLog.find('\n')));
        faults::Begin();
        const bool bAgain = nResult == 49 && eRole == IMG_OUTPUT; // once the disk has room
        EXPECT_TRUE(!bAgain || m_store.FreeBandAdress(0) == 0);
        const std::string sHost = Release(), sWanted = kPicture.substr(0, bAgain ? kHeader + kBand : kWhole);
        EXPECT_TRUE(sHost == sWanted || (nResult != 0 && !bAgain)) << plan.sCall << " shifts a band";
    }
}

TEST_F(ExternalStores, WriteBitmapHeadersThatSayWhatFollows)
{
    const char szSmall[] = "BM\x4E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\3\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x18";
    for (const auto eAccess : kAccesses) {
        auto& store = Bind(eAccess, IMG_OUTPUT, std::string(eAccess == ACS_MEMORY ? kHeader : 0, 'x'));
        EXPECT_TRUE(store.OutPutDIBHeader(30000, 30000, 3) == 0 && store.OutPutDIBHeader(3, 2, 3) == 1);
        EXPECT_EQ(std::string(szSmall, 35) + std::string(19, '\0'), Release());
    }
    Bind(ACS_MEMORY, IMG_OUTPUT, std::string(kHeader, 'x')).OutPutDIBHeader(5, 7, 4);
    EXPECT_EQ(std::string("\x20\0\0\0\0\0\x8C\0\0\0", 10), m_sBlock.substr(28, 10)) << "bits, size";
    EXPECT_EQ(0, Bind(ACS_MMF, IMG_OUTPUT, "", {"MapViewOfFile", 1}).OutPutDIBHeader(3, 2, 3));
    EXPECT_NE(nullptr, m_store.m_hMap) << "until Destroy";
}

TEST_F(ExternalStores, FindSignaturesAlikeInAllAccessTypes)
{
    // text, where it stands, pixels of 4 bytes in the picture, where the signature is found
    const std::tuple<const char*, std::size_t, int, int> cases[] = {
        {"BM", 0, 100, 0},     {"B-BM", 98, 100, 100}, {"BBBM", 10, 100, 12},       {"BM", 399, 100, 399},
        {"BBM", 399, 100, -1}, {"B-M", 9, 100, -1},    {"BM", 65535, 20000, 65535}, {"BM", 65536, 20000, -1}};
    for (const auto& [pszText, nAt, nWidth, nFound] : cases)
        for (const auto eAccess : kAccesses) {
            std::string sFile(static_cast<std::size_t>(nWidth) * 4 + kHeader, '-');
            auto& store = Bind(eAccess, IMG_INPUT, sFile.replace(nAt, std::strlen(pszText), pszText));
            EXPECT_EQ(nFound, store.SchDIBHeader(nWidth, 1, 4, 0)) << pszText << nAt << " by " << eAccess;
            EXPECT_EQ(nullptr, store.m_hMap);
        }
    const std::string sShort = "--BM!-------";
    char chNext = 0;
    DWORD nRead = 0;
    EXPECT_EQ(2, Bind(ACS_FILEIO, IMG_INPUT, sShort).SchDIBHeader(4, 1, 3, 0));
    EXPECT_TRUE(ReadFile(m_hHost, &chNext, 1, &nRead, nullptr) && chNext == '!') << "left behind the pair";
    EXPECT_EQ(-1, Bind(ACS_MMF, IMG_INPUT, sShort).SchDIBHeader(4, 1, 4, 0)) << "shorter than its picture";
    EXPECT_EQ(-1, Bind(ACS_MMF, IMG_INPUT, sShort, {"UnmapViewOfFile", 1}).SchDIBHeader(3, 1, 4, 0));
}
