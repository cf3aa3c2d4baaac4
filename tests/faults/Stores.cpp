// What stores hold, refuse and write where no call fails, and what a failed plan leaves of the budget.

#include "StoreTest.h"

#include "MemoryManager/stores/StoreLifetime.h"

namespace {

constexpr tag_E_ACSTYPE kAccesses[] = {ACS_MMF, ACS_FILEIO, ACS_MEMORY};

class Stores : public StoreTest
{
protected:
    ~Stores() override
    {
        faults::Begin();
        EXPECT_OK(m_store.Destroy());
    }
    /// A store over a host's file or block with a header, before its Create.
    Opened<CImageCtrlIO>& Bind(tag_E_ACSTYPE eAccess, tag_E_IMGTYPE eRole, const std::string& s,
                               std::vector<faults::Fault> faults = {})
    {
        m_store.Destroy();
        m_store = {};
        m_store.SetAcsType(eAccess);
        m_store.SetImgType(eRole);
        m_store.SetHederSize(kHeader);
        m_store.SetFileSize(kPicture);
        eAccess == ACS_MEMORY ? m_store.SetImageData(m_job.Block(s, false))
                              : m_store.SetFileHandle(m_job.File(s, false));
        faults::Begin(std::move(faults));
        return m_store;
    }
    /// What the host's file or block holds.
    std::string Written(std::size_t nBytes)
    {
        m_store.Destroy();
        m_job.sOutput.clear();
        m_job.Close();
        return m_job.sOutput.substr(0, nBytes);
    }
    Opened<CImageCtrlIO> m_store;
};

struct Planned : CImageObj
{
    explicit Planned(int nHeight)
    {
        T_ImageLrg_tag info{};
        info.nWidth = 64;
        info.nHeight = nHeight;
        info.nFormat = MM_FORMAT_BGRA32;
        info.nRatio = 100;
        EXPECT_OK(SetImageInfo(&info));
    }
};

} // namespace

TEST_F(Stores, AddressBytesOfTheImageOnly)
{
    for (const auto& [nMemory, nHeader, bMapped] : {std::tuple(kBytes, kHeader, false),
                                                    {kBytes - 1, 0, false},
                                                    {0, kHeader, false},
                                                    {0, kHeader, true}}) {
        SCOPED_TRACE(testing::Message() << nMemory << " " << bMapped);
        CImageCtrl* pStore = NewStore<CImageCtrl>();
        pStore->SetHdrSize(nHeader);
        const bool bWhole = nMemory == kBytes || bMapped;
        EXPECT_OK(pStore->Create(kBytes, nMemory, 1));
        if (bMapped)
            pStore->MapBandAll(0, kBytes, 0);
        EXPECT_EQ(std::pair(nMemory == kBytes ? ACS_MEMORY : ACS_MMF, int{bWhole}),
                  std::pair(pStore->GetAcsType(), pStore->GetAllMapFlg()));
        EXPECT_OK(pStore->FreeBandAdress(7)) << "nothing is mapped there";
        EXPECT_CODE(bWhole ? MM_SUCCESS : MM_BAD_ARGUMENT, pStore->FreeBandAdress(-1));
        for (const int nSlot : {-1, 10})
            EXPECT_EQ(bWhole, pStore->MapBandAdress(0, 0x20000, nSlot) != nullptr) << nSlot;
        EXPECT_EQ(bWhole, pStore->MapBandAdress(0, 0, 0) != nullptr) << "a band of no bytes";
        for (const int nOffset : {kBytes, -1, -70000})
            EXPECT_EQ(nullptr, pStore->MapBandAdress(static_cast<DWORD>(nOffset), 0x20000, 0)) << nOffset;
        EXPECT_NE(nullptr, pStore->MapBandAdress(kBytes - 1, 0xFFFFFFFF, 2)) << "its end may lie behind";
        for (int i = 0; i < 2; ++i) {
            EXPECT_OK(pStore->Destroy());
            EXPECT_EQ(nullptr, pStore->MapBandAdress(0, 1, 0)) << "a destroyed store has bytes";
        }
        EXPECT_CODE(MM_FILE_ACCESS, pStore->ConvertFile(kBytes));
        DeleteStore(pStore);
    }
}

TEST_F(Stores, RefuseWhatTheyCannotHold)
{
    CImageCtrl store, headed; // band addresses are counted from slot 0, which a long header would move
    EXPECT_CODE(MM_STORE_NOT_MAPPED, store.MapBandAll(0, 1, 0));
    store.SetHdrSize(kHeader);
    EXPECT_CODE(MM_BAD_ARGUMENT, store.Create(INT32_MAX - 53, 0, 1));
    EXPECT_OK(store.Create(1, 1, 1));
    for (const int nSize : {kHeader + 2, 0}) {
        EXPECT_CODE(MM_FILE_ACCESS, store.ConvertFile(nSize));
        EXPECT_EQ(LogLine("CImageCtrl", 1026, 87), m_home.Take("log"));
    }
    store.Destroy();
    EXPECT_CODE(MM_FILE_ACCESS, store.ConvertFile(1));
    EXPECT_EQ(LogLine("CImageCtrl", 1026, 6), m_home.Take("log"));
    store.SetHdrSize(-1);
    EXPECT_CODE(MM_BAD_ARGUMENT, store.Create(50, 200, 1));
    headed.SetHdrSize(70000);
    EXPECT_OK(headed.Create(kBytes, 0, 1));
    EXPECT_CODE(MM_STORE_NOT_MAPPED, headed.MapBandAll(0, kBytes, 0));
    headed.Destroy();
    EXPECT_OK(headed.Create(9, 9, 1));
    EXPECT_OK(headed.MapBandAll(0, 9, 0)) << "memory needs no mapping";
    headed.Destroy();

    const std::tuple<tag_E_ACSTYPE, const char*, int> cases[] = {{ACS_MMF, "CImageCtrl", 322},
                                                                 {ACS_FILEIO, "CImageCtrlIO", 156}};
    const std::string sShort(kPicture - 1, 's');
    for (const auto& [eAccess, pszUnit, nLine] : cases)
        for (const LONG nLimit : {100, kPicture}) {
            EXPECT_CODE(MM_FILE_ACCESS, Bind(eAccess, IMG_INPUT, sShort).Create(kPicture, nLimit, 1));
            EXPECT_TRUE(SameBytes(sShort, Written(kPicture)));
            EXPECT_EQ(LogLine(pszUnit, nLine, 38), m_home.Take("log"));
        }
    EXPECT_CODE(MM_UNKNOWN_MODE, Bind(ACS_NONE, IMG_INPUT, "").Create(1, 1, 1));
}

TEST_F(Stores, OfTheHostAreMadeAnewForAnotherAllotmentOnlyAndKeepBandsInsideIt)
{
    const std::string sFile = std::string(kHeader, 'h') + kImage;
    for (const auto eAccess : kAccesses)
        for (const int nMode : {0, 1}) {
            SCOPED_TRACE(testing::Message() << eAccess << " " << nMode);
            void* pData = eAccess == ACS_MEMORY ? m_job.Block(sFile, true) : m_job.File(sFile, true);
            T_ImgInf inf{MM_FILE_RAW, eAccess, pData, 0, 10, 500, 0x1322, 0x1322, 0};
            CImageObjIO io;
            ASSERT_OK(io.InitForUnify(&inf, IMG_INPUT, 0, 0, 0, MM_ALIGN_LINES, 0, nMode));
            const auto pStore = static_cast<CImageCtrlIO*>(io.m_pImageCtrl);
            for (const LONG nLimit : {9000, 20000, 80000, 9000}) { // of 30000 bytes of external lines
                faults::Begin();
                ASSERT_OK(io.Create(30000, nLimit, 1));
                EXPECT_TRUE(!faults::g_calls.empty() || (nMode == 0 && eAccess != ACS_FILEIO))
                    << "not made anew";
                const int nLines = io.GetBandHeight();
                unsigned char* pWork = pStore->GetTMPBuf(0);
                faults::Begin();
                EXPECT_OK(io.Create(30000, nLimit, 1));
                EXPECT_EQ(0u, faults::g_calls.size()) << "made anew without need";
                EXPECT_EQ(pWork, pStore->GetTMPBuf(0));
                if (nMode == 1) {
                    faults::Begin({{"VirtualAlloc", 1}});
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
    ASSERT_OK(Bind(ACS_FILEIO, IMG_INPUT, sFile).Create(1000, 600, 1));
    EXPECT_NE(nullptr, m_store.MapBandAdress(0, 100, 0));
    const char* pLast = static_cast<char*>(m_store.MapBandAdress(kBytes - 10, 100, 0));
    EXPECT_TRUE(SameBytes(kImage.substr(kBytes - 10).append(90, '\0'), BytesAt(pLast, 100)))
        << "an older band shows";
}

TEST_F(Stores, WriteBitmapHeadersThatSayWhatFollows)
{
    const char szSmall[] = "BM\x4E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\3\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x18";
    for (const auto eAccess : kAccesses) {
        auto& store = Bind(eAccess, IMG_OUTPUT, std::string(eAccess == ACS_MEMORY ? kHeader : 0, 'x'));
        EXPECT_EQ(0, store.OutPutDIBHeader(30000, 30000, 3)) << "too large";
        EXPECT_EQ(1, store.OutPutDIBHeader(3, 2, 3));
        EXPECT_EQ(std::string(szSmall, 35).append(19, '\0'), Written(kHeader));
    }
    Bind(ACS_MEMORY, IMG_OUTPUT, std::string(kHeader, 'x')).OutPutDIBHeader(5, 7, 4);
    EXPECT_EQ(std::string("\x20\0\0\0\0\0\x8C\0\0\0", 10), Written(kHeader).substr(28, 10)) << "bits, size";
    EXPECT_EQ(0, Bind(ACS_MMF, IMG_OUTPUT, "", {{"MapViewOfFile", 1}}).OutPutDIBHeader(3, 2, 3));
    EXPECT_NE(nullptr, m_store.m_hMap) << "until Destroy";
}

TEST_F(Stores, FindSignaturesAlikeInAllAccessTypes)
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
    char chNext = 0;
    DWORD nRead = 0;
    EXPECT_EQ(2, Bind(ACS_FILEIO, IMG_INPUT, "--BM!-------").SchDIBHeader(4, 1, 3, 0));
    EXPECT_TRUE(ReadFile(m_store.GetFHandle(), &chNext, 1, &nRead, nullptr));
    EXPECT_EQ('!', chNext) << "the file's position is not behind the pair";
    EXPECT_EQ(-1, Bind(ACS_MMF, IMG_INPUT, "--BM!-------").SchDIBHeader(4, 1, 4, 0))
        << "shorter than its picture";
}

#if !defined(_WIN32) // there no file becomes shorter while it is mapped
TEST_F(Stores, OfUnitObjectsNeverTouchBytesThatAFileDoesNotHave)
{
    for (const bool bShortSource : {true, false}) {
        CImageObj image;
        T_ImageLrg_tag band{};
        const HANDLE hIn = m_job.File(kImage.substr(0, 60), true), hOut = m_job.File("", false);
        T_ImgInf in{MM_FILE_RAW, ACS_MMF, hIn, 0, 5, 3, MM_FORMAT_BGRA32, 0, 20}, out = in;
        out.hData = hOut, out.nDstFormat = MM_FORMAT_BGRA32;
        ASSERT_OK(ImportImgForUnit(&image, &in, &out, 0, nullptr, 0, 0));
        fs::resize_file(m_home.sRoot + "host/" + (bShortSource ? "0" : "1"), 59);
        ASSERT_OK(image.MapBandRange(0, 2, &band, 0));
        EXPECT_EQ(bShortSource ? 0 : kImage[7], char(band.pImage[7]));
        EXPECT_OK(image.UnmapBand(0));
        EXPECT_EQ(LogLine("CImageObj", bShortSource ? 610 : 810, 38), m_home.Take("log"));
        EXPECT_EQ(std::string(bShortSource ? 60 : 59, '\0'), Written(60));
        m_job.bHarmed = false;
    }
}
#endif

TEST_F(Stores, ThatCannotBeMadeAreChargedOnceMoreWithSmallestBands)
{
    const LONG nBudget = 1 << 18;
    CImageObj::ms_nOnMemory = 0;
    CImageObj::InitBaseMemory(nBudget, nBudget);
    {
        Planned in(2000), out(2000);
        CImageObj *pIn = &in, *pOut = &out;
        tag_MemAlloc request;
        request.nOutCnt = 1;
        faults::Begin({{"GetTempFileNameA", 1}});
        ASSERT_OK(CImageObj::MemoryAlloc(&request, &pIn, &pOut, nullptr));
        EXPECT_EQ(1, in.m_nReserveTaken);
        EXPECT_EQ(std::pair(16, 16), std::pair(in.m_ImgInfo.nBandLines, out.m_ImgInfo.nBandLines));
        EXPECT_EQ(-nBudget - in.m_nAreaSize - out.m_nAreaSize, CImageObj::AskFreeMemory());
    }
    EXPECT_EQ(0, CImageObj::AskFreeMemory()) << "the reserve is back, the first attempt's charges are not";
}

TEST_F(Stores, OfTheHostsBlocksAreMadeAgainThatAFailedStepPlannedAndDidNotReach)
{
    CImageObj::ms_nOnMemory = 0;
    CImageObj::InitBaseMemory(1 << 20, 1 << 20);
    std::vector<unsigned char> lines(10 * 400);
    char* pBlock = m_job.Block(std::string(800, '7'), true);
    T_ImgInf inf{MM_FILE_RAW, ACS_MEMORY, pBlock, 0, 10, 10, MM_FORMAT_RAW64, MM_FORMAT_RAW64, 80};
    CImageObjIO host;
    ASSERT_OK(host.InitForUnify(&inf, IMG_INPUT, 0, 0, 0, MM_ALIGN_LINES, 0, 0));
    Planned first(2000);
    CImageObj* inputs[] = {&first, &host};
    tag_MemAlloc request;
    request.nInCnt = 2;
    faults::Begin({{"VirtualAlloc", 1, 1, 8}});
    ASSERT_OK(CImageObj::MemoryAlloc(&request, inputs, nullptr, nullptr));
    EXPECT_EQ(1, first.m_nReserveTaken);
    T_ImageLrg_tag band{};
    EXPECT_OK(host.MapBandRangeBuf(0, 9, lines.data(), &band));
}
