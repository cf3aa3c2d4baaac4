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
        EXPECT_OK(m_store.Destroy());
        EXPECT_OK(m_store.Destroy());
        if (m_store.GetFHandle() != INVALID_HANDLE_VALUE) {
            EXPECT_TRUE(CloseHandle(m_hHost)) << "the store closed the host's handle";
        }
        m_store.SetFileHandle(INVALID_HANDLE_VALUE);
        EXPECT_EQ(faults::Alive{}, faults::g_alive);
        const std::string sFile = Take("host");
        const bool bAppended = sFile.compare(0, kBefore.size(), kBefore) == 0;
        return m_store.GetAcsType() == ACS_MEMORY ? m_sBlock : sFile.substr(bAppended ? kBefore.size() : 0);
    }
    // How an image is reached, and how much memory it is given.
    struct Way
    {
        tag_E_ACSTYPE eAccess;
        tag_E_IMGTYPE eRole;
        LONG nLimit;
    };
    // A whole transfer; the code of the first step that fails.
    DWORD Transfer(const Way& way, const faults::Plan& plan)
    {
        const bool bAppends = way.eRole == IMG_OUTPUT && way.eAccess != ACS_MEMORY;
        const std::string sHost = (bAppends && way.eAccess == ACS_FILEIO ? kBefore : "") +
                                  (bAppends ? kPicture.substr(0, kHeader) : kPicture);
        auto& store = Bind(way.eAccess, way.eRole, sHost, plan);
        DWORD nResult = store.CreateTMPBuf(kBand);
        if (nResult == MM_SUCCESS)
            nResult = store.Create(kWhole, way.nLimit, 1);
        return nResult == MM_SUCCESS ? Pass(store, way.eRole == IMG_OUTPUT) : nResult;
    }
    ~ExternalStores() override { Release(); }

    static constexpr tag_E_ACSTYPE kAccesses[] = {ACS_MMF, ACS_FILEIO, ACS_MEMORY};
    inline static const std::string kBefore = "what the host's file holds already";
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
                    const DWORD nResult = Transfer({eAccess, eRole, nLimit}, {"", nCall});
                    bFailed = faults::g_nCalls >= nCall;
                    if (!bFailed) {
                        EXPECT_OK(nResult);
                    }
                    faults::Begin();
                    EXPECT_EQ(nullptr, m_store.MapBandAdress(kBytes, 1, 0)) << "behind the image";
                    if (eAccess != ACS_MMF) {
                        EXPECT_CODE(MM_FILE_ACCESS, m_store.ConvertFile(9)) << "the host's";
                    }
                    if (nResult == MM_SUCCESS) {
                        EXPECT_OK(m_store.FreeBandAdress(0)) << "a band is written once";
                        if (nLimit == kWhole) {
                            EXPECT_NE(nullptr, m_store.MapBandAdress(kBand, 9, 0));
                        }
                        EXPECT_OK(m_store.FreeBandAdress(0)) << "a whole image's band goes to its own place";
                        EXPECT_TRUE(SameBytes(kPicture, Release()));
                    } else {
                        Release();
                    }
                }
}

TEST_F(ExternalStores, RefuseShortInputsUntouchedAndUnknownAccess)
{
    const std::tuple<tag_E_ACSTYPE, const char*, int> cases[] = {{ACS_MMF, "CImageCtrl", 322},
                                                                 {ACS_FILEIO, "CImageCtrlIO", 156}};
    const std::string sShort = kPicture.substr(1);
    for (const auto& [eAccess, pszUnit, nLine] : cases)
        for (const LONG nLimit : {100, kWhole}) {
            EXPECT_CODE(MM_FILE_ACCESS, Bind(eAccess, IMG_INPUT, sShort).Create(kWhole, nLimit, 1));
            EXPECT_FALSE(m_store.IsCreated());
            EXPECT_EQ(nullptr, m_store.GetMemPtr());
            EXPECT_EQ(m_hHost, m_store.GetFHandle());
            EXPECT_TRUE(SameBytes(sShort, Release()));
            EXPECT_EQ(LogLine(pszUnit, nLine, 38), Take("log"));
        }
    EXPECT_CODE(MM_UNKNOWN_MODE, Bind(ACS_NONE, IMG_INPUT, "").Create(1, 1, 1));
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
            ASSERT_OK(io.InitForUnify(&inf, IMG_INPUT, 0, 0, 0, MM_ALIGN_LINES, 0, nMode));
            const auto pStore = static_cast<CImageCtrlIO*>(io.m_pImageCtrl);
            for (const LONG nLimit : {9000, 20000, 80000, 9000}) { // of 30000 bytes of external lines
                faults::Begin();
                ASSERT_OK(io.Create(30000, nLimit, 1));
                if (nMode == 1 || eAccess == ACS_FILEIO) {
                    EXPECT_GT(faults::g_nCalls, 0) << "not made anew";
                }
                const int nLines = io.GetBandHeight();
                unsigned char* pWork = pStore->GetTMPBuf(0);
                faults::Begin();
                EXPECT_OK(io.Create(30000, nLimit, 1));
                EXPECT_EQ(0, faults::g_nCalls) << "made anew without need";
                EXPECT_EQ(pWork, pStore->GetTMPBuf(0));
                if (nMode == 1) {
                    faults::Begin({"VirtualAlloc", 1});
                    EXPECT_CODE(MM_NO_MEMORY, io.Create(30000, nLimit + 1000, 1));
                    EXPECT_EQ(nLines, io.GetBandHeight()) << "of a buffer that was not made";
                }
                EXPECT_NE(nullptr, pStore->MapBandAdress(0, 60, 0));
                EXPECT_OK(pStore->FreeBandAdress(0));
                EXPECT_EQ(eAccess != ACS_FILEIO || nLimit == 80000,
                          pStore->MapBandAdress(0, 29999, 0) != nullptr);
                EXPECT_OK(pStore->FreeBandAdress(0));
            }
        }
    ASSERT_OK(Bind(ACS_FILEIO, IMG_INPUT, kPicture).Create(1000, 600, 1));
    EXPECT_NE(nullptr, m_store.MapBandAdress(0, 100, 0));
    const char* pLast = static_cast<char*>(m_store.MapBandAdress(kBytes - 10, 100, 0));
    EXPECT_TRUE(SameBytes(kImage.substr(kBytes - 10).append(90, '\0'), BytesAt(pLast, 100)))
        << "an older band shows";
}

TEST_F(ExternalStores, AnswerFailingCallsWithPatienceACodeAndALogLineAndNeverShiftABand)
{
    const auto counted = [](int nError, int nCounter) { // while the disk is full or out of reach
        const std::string sLine = LogLine("CImageCtrlIO", 402, static_cast<DWORD>(nError));
        return sLine.substr(0, sLine.size() - 1) + ",counter=" + std::to_string(nCounter) + '\n';
    };
    const Way mapped{ACS_MMF, IMG_INPUT, kWhole}, read{ACS_FILEIO, IMG_INPUT, kWhole};
    const Way readBands{ACS_FILEIO, IMG_INPUT, kBand};
    const Way written{ACS_FILEIO, IMG_OUTPUT, kBand}, writtenWhole{ACS_FILEIO, IMG_OUTPUT, kWhole};
    const struct
    {
        Way way;
        faults::Plan plan;
        DWORD nResult;
        int nCalls;
        DWORD nTicks;
        std::string sLog = {}; // the latest line
    } cases[] = {
        {mapped, {"CreateFileMappingA", 1, 1, 5}, MM_FILE_ACCESS, 1, 0, LogLine("CImageCtrl", 322, 5)},
        {mapped, {"MapViewOfFile", 1, 1, 5}, MM_EXTERNAL_VIEW, 1, 0},
        {mapped, {"UnmapViewOfFile", 1, 1, 5}, MM_EXTERNAL_UNMAP, 1, 0},
        {read, {"VirtualAlloc", 1, 1, 8}, MM_NO_MEMORY, 1, 0},
        {read, {"VirtualAlloc", 2, 1, 8}, MM_NO_MEMORY, 2, 0},
        {read, {"ReadFile", 1, 1, 5}, MM_FILE_ACCESS, 1, 0, LogLine("CImageCtrlIO", 156, 5)},
        {read, {"ReadFile", 2, 1, 5}, MM_SUCCESS, 1, 0},
        {readBands, {"ReadFile", 3, 1, 5}, MM_NO_BAND_ADDRESS, 3, 0},
        {written, {"ReadFile", 1, 1, 5}, MM_SUCCESS, 0, 0},
        {written, {"CopyToFile", 1, INT_MAX, 112}, MM_FILE_ACCESS, 600, 60000, counted(112, 599)},
        {written, {"CopyToFile", 1, INT_MAX, 5}, MM_FILE_ACCESS, 10, 1000, counted(5, 540)},
        {written, {"GetFileSize", 1, INT_MAX, 6}, MM_FILE_ACCESS, 10, 1000, counted(6, 540)},
        {written, {"CopyToFile", 1, 599, 112}, MM_SUCCESS, 602, 59900, counted(112, 598)},
        {written, {"GetFileSize", 2, 1, 6}, MM_SUCCESS, 4, 100, counted(6, 0)},
        {writtenWhole, {"CopyToFile", 2, 9, 5}, MM_SUCCESS, 12, 900, counted(5, 480)},
        {writtenWhole, {"CopyToFile", 1, INT_MAX, 5}, MM_FILE_ACCESS, 10, 1000, counted(5, 540)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.plan.sCall << " " << c.plan.nFirst << ", error " << c.plan.nError);
        EXPECT_CODE(c.nResult, Transfer(c.way, c.plan));
        EXPECT_EQ(std::pair(c.nCalls, c.nTicks), std::pair(faults::g_nCalls, faults::g_nTicks));
        const std::string sLog = Take("log");
        EXPECT_EQ(c.sLog, sLog.substr(0, sLog.find('\n') + 1));
        faults::Begin();
        const bool bAgain = c.nResult == MM_FILE_ACCESS && c.way.eRole == IMG_OUTPUT;
        if (bAgain) {
            EXPECT_OK(m_store.FreeBandAdress(0)) << "once the disk has room";
        }
        const std::string sHost = Release();
        if (c.nResult == MM_SUCCESS || bAgain) {
            EXPECT_TRUE(SameBytes(kPicture.substr(0, bAgain ? kHeader + kBand : kWhole), sHost))
                << "a band is shifted";
        }
    }
}

TEST_F(ExternalStores, WriteBitmapHeadersThatSayWhatFollows)
{
    const char szSmall[] = "BM\x4E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\3\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x18";
    for (const auto eAccess : kAccesses) {
        auto& store = Bind(eAccess, IMG_OUTPUT, std::string(eAccess == ACS_MEMORY ? kHeader : 0, 'x'));
        EXPECT_EQ(0, store.OutPutDIBHeader(30000, 30000, 3)) << "too large";
        EXPECT_EQ(1, store.OutPutDIBHeader(3, 2, 3));
        EXPECT_EQ(std::string(szSmall, 35).append(19, '\0'), Release());
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
    EXPECT_TRUE(ReadFile(m_hHost, &chNext, 1, &nRead, nullptr));
    EXPECT_EQ('!', chNext) << "the file's position is not behind the pair";
    EXPECT_EQ(-1, Bind(ACS_MMF, IMG_INPUT, sShort).SchDIBHeader(4, 1, 4, 0)) << "shorter than its picture";
    EXPECT_EQ(-1, Bind(ACS_MMF, IMG_INPUT, sShort, {"UnmapViewOfFile", 1}).SchDIBHeader(3, 1, 4, 0));
}
