// The image store in every state, each reached along a path of steps, and with every call failing on the way.

#include "MemoryManager/stores/StoreLifetime.h"
#include "StoreTest.h"

#include <functional>

class ImageStores : public StoreTest
{
protected:
    using Store = CImageCtrl;
    using Step = std::function<DWORD(Store&)>;
    using Path = std::vector<Step>;

    inline static const Step Put = [](Store&store) { return Pass(store, true); },
                             Get = [](Store&store) { return Pass(store, false); },
                             Convert = [](Store&store) { return store.ConvertFile(kBytes); },
                             MapAll = [](Store&store) { return store.MapBandAll(0, kBytes, 0); },
                             Plan = [](Store&store) { return store.Create(kBytes, kBytes, 1); };

    // Makes a store that may take so much memory and takes it along a path while calls fail as planned. The
    // code of the first step that fails.
    DWORD Walk(LONG nMemory, const Path& path, const faults::Plan& plan, int nHeader = 0)
    {
        m_store = {};
        m_store.SetHdrSize(nHeader);
        faults::Begin(plan);
        DWORD nResult = m_store.Create(kBytes, nMemory, 1);
        for (auto step = path.begin(); step != path.end() && nResult == MM_SUCCESS; ++step)
            nResult = (*step)(m_store);
        return nResult;
    }
    // After a path on which nothing failed.
    void ExpectState(tag_E_ACSTYPE eType, bool bAllMapped, int nHeader)
    {
        char* pWhole = static_cast<char*>(m_store.GetMemPtr());
        EXPECT_EQ(std::pair(eType, int{bAllMapped}), std::pair(m_store.GetAcsType(), m_store.GetAllMapFlg()));
        EXPECT_EQ(bAllMapped, pWhole != nullptr);
        if (pWhole) {
            EXPECT_EQ(pWhole + nHeader + 5, m_store.MapBandAdress(5, 1, 3));
        }
        EXPECT_OK(m_store.FreeBandAdress(7)) << "nothing is mapped there";
        EXPECT_CODE(bAllMapped ? MM_SUCCESS : MM_BAD_ARGUMENT, m_store.FreeBandAdress(-1));
        for (const int nSlot : {-1, 10})
            EXPECT_EQ(bAllMapped, m_store.MapBandAdress(0, 0x20000, nSlot) != nullptr) << nSlot;
        EXPECT_EQ(bAllMapped, m_store.MapBandAdress(0, 0, 0) != nullptr) << "a band of no bytes";
        for (const int nOffset : {kBytes, -1, -70000})
            EXPECT_EQ(nullptr, m_store.MapBandAdress(static_cast<DWORD>(nOffset), 0x20000, 0)) << nOffset;
        EXPECT_NE(nullptr, m_store.MapBandAdress(kBytes - 1, 0xFFFFFFFF, 2)) << "its end may lie behind";
    }
    CImageCtrl m_store;
};

TEST_F(ImageStores, HandOutTheSameBytesInEveryStateAndLeaveNothingWhateverFails)
{
    const struct
    {
        const char* pszCase;
        LONG nMemory;
        Path path;
        tag_E_ACSTYPE eType;
        bool bAllMapped;
        int nHeader = 0;
    } cases[] = {
        {"in memory", kBytes, {Put, Get}, ACS_MEMORY, true},
        {"one byte too large for memory", kBytes - 1, {Put, Get}, ACS_MMF, false},
        {"made a file", kBytes, {Put, Convert, Get}, ACS_MMF, false},
        {"made a file and mapped", kBytes, {Put, Convert, MapAll, Get}, ACS_MMF, true},
        {"a file that is mapped", 0, {Put, MapAll, Get}, ACS_MMF, true},
        {"mapped and made a file again", 0, {Put, Get, Plan, Get, Convert, Get}, ACS_MMF, false},
        {"a file with a header", 0, {Put, Get}, ACS_MMF, false, kHeader},
        {"in memory with a header", kBytes, {Put, Get}, ACS_MEMORY, true, kHeader},
        {"mapped with a header", 0, {Put, Get, Plan, Get}, ACS_MMF, true, kHeader},
    };
    for (const auto& c : cases)
        for (auto [nCall, bFailed] = std::pair(1, true); bFailed; ++nCall) {
            SCOPED_TRACE(testing::Message() << c.pszCase << ", call " << nCall << " fails");
            const DWORD nResult = Walk(c.nMemory, c.path, {"", nCall}, c.nHeader);
            bFailed = faults::g_nCalls >= nCall;
            faults::Begin();
            if (!bFailed) {
                EXPECT_OK(nResult);
                ExpectState(c.eType, c.bAllMapped, c.nHeader);
            } else if (m_store.GetMemPtr() && m_store.GetAcsType() == ACS_MEMORY) {
                EXPECT_EQ(INVALID_HANDLE_VALUE, m_store.GetFHandle());
                EXPECT_OK(Pass(m_store, false)) << "the image in memory is not as before";
            }
            const bool bConverted = c.nMemory == kBytes && m_store.GetAcsType() == ACS_MMF; // its file stays
            EXPECT_OK(m_store.Destroy());
            EXPECT_OK(m_store.Destroy());
            EXPECT_EQ(bConverted, !fs::is_empty(m_sFolder + "temp"));
            EXPECT_TRUE(SameBytes(bConverted ? kImage : "", Take("temp")));
            EXPECT_EQ(faults::Alive{}, faults::g_alive);
            EXPECT_EQ(nullptr, m_store.MapBandAdress(0, 1, 0)) << "a destroyed store has bytes";
            EXPECT_CODE(MM_FILE_ACCESS, m_store.ConvertFile(kBytes));
        }
}

TEST_F(ImageStores, RefuseWhatTheyCannotHold)
{
    CImageCtrl* pStore = NewStore<CImageCtrl>();
    EXPECT_CODE(MM_STORE_NOT_MAPPED, pStore->MapBandAll(0, 1, 0));
    EXPECT_CODE(MM_FILE_ACCESS, pStore->ConvertFile(1));
    EXPECT_EQ(LogLine("CImageCtrl", 1026, 6), Take("log"));
    pStore->SetHdrSize(kHeader);
    EXPECT_CODE(MM_BAD_ARGUMENT, pStore->Create(INT32_MAX - 53, 0, 1));
    EXPECT_OK(pStore->Create(1, 1, 1));
    for (const int nSize : {kHeader + 2, 0}) {
        EXPECT_CODE(MM_FILE_ACCESS, pStore->ConvertFile(nSize));
        EXPECT_EQ(LogLine("CImageCtrl", 1026, 87), Take("log"));
    }
    pStore->Destroy();
    pStore->SetHdrSize(-1);
    EXPECT_CODE(MM_BAD_ARGUMENT, pStore->Create(50, 200, 1));
    DeleteStore(pStore);
}

TEST_F(ImageStores, MapAFileWholeOnlyBelowAShortHeader)
{
    CImageCtrl headed; // band addresses are counted from slot 0, which a long header would move
    headed.SetHdrSize(70000);
    EXPECT_OK(headed.Create(kBytes, 0, 1));
    EXPECT_CODE(MM_STORE_NOT_MAPPED, headed.MapBandAll(0, kBytes, 0));
    headed.Destroy();
    EXPECT_OK(headed.Create(9, 9, 1));
    EXPECT_OK(headed.MapBandAll(0, 9, 0)) << "memory needs no mapping";
    EXPECT_NE(nullptr, headed.MapBandAdress(0, 9, 0));
    headed.Destroy();
    CImageCtrl converted; // its file has no room for the header
    converted.SetHdrSize(kHeader);
    EXPECT_OK(converted.Create(kBytes, kBytes, 1));
    EXPECT_OK(converted.ConvertFile(kBytes));
    EXPECT_OK(converted.Create(kBytes, kBytes, 1));
    converted.Destroy();
}

TEST_F(ImageStores, HaveACodeAndALogLineForEveryFailingCall)
{
    const struct
    {
        LONG nMemory;
        Path path;
        const char* pszCall;
        int nFirst; // of these calls fails
        DWORD nResult;
        int nLine = 0; // that reports it
    } cases[] = {
        {0, {}, "GetTempFileNameA", 1, MM_FILE_ACCESS, 287},
        {0, {}, "CreateFileA", 1, MM_FILE_ACCESS, 303},
        {0, {}, "CreateFileMappingA", 1, MM_FILE_ACCESS, 322},
        {0, {Put}, "MapViewOfFile", 3, MM_NO_BAND_ADDRESS},
        {0, {Put}, "UnmapViewOfFile", 2, MM_STORE_UNMAP},
        {0, {Plan}, "MapViewOfFile", 1, MM_STORE_VIEW},
        {0, {MapAll}, "MapViewOfFile", 1, MM_STORE_NOT_MAPPED},
        {kBytes, {}, "VirtualAlloc", 1, MM_NO_MEMORY},
        {kBytes, {Convert}, "GetTempFileNameA", 1, MM_FILE_ACCESS, 1005},
        {kBytes, {Convert}, "CreateFileA", 1, MM_FILE_ACCESS, 1019},
        {kBytes, {Convert}, "GetFileSize", 1, MM_FILE_ACCESS, 1026},
        {kBytes, {Convert}, "CreateFileMappingA", 1, MM_FILE_ACCESS, 1026},
        {kBytes, {Convert}, "CopyToFile", 1, MM_FILE_ACCESS, 1026},
        {kBytes, {Convert}, "CreateFileA", 2, MM_FILE_ACCESS, 1043},
        {kBytes, {Convert}, "CreateFileMappingA", 2, MM_FILE_ACCESS, 1057},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.pszCall << ", line " << c.nLine);
        EXPECT_CODE(c.nResult, Walk(c.nMemory, c.path, {c.pszCall, c.nFirst, 1, ERROR_DISK_FULL}));
        EXPECT_EQ(c.nLine > 0 ? LogLine("CImageCtrl", c.nLine, ERROR_DISK_FULL) : "", Take("log"));
        m_store.Destroy();
    }
}
