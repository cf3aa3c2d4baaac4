// A whole pipeline, import to export, and single objects, with every platform call failing in turn. Whatever
// fails: the right bytes or a code, nothing left alive, and the budget where it is documented to be.

#include "MemoryManager/CImageObjIO.h"
#include "StoreTest.h"

namespace {

constexpr int kWidth = 64, kHeight = 300, kLineBytes = 3 * kWidth;

std::string Bitmap()
{
    return "BM" + std::string(kHeader - 2, 'h') + Numbered(kLineBytes * kHeight);
}

class Pipeline : public StoreTest
{
protected:
    Pipeline() { CImageObj::ms_nOnMemory = 0; }

    // An image that is planned for: as wide as the bitmap, in bands where it is high.
    struct Planned : CImageObj
    {
        explicit Planned(int nHeight)
        {
            T_ImageLrg_tag info{};
            info.nWidth = kWidth;
            info.nHeight = nHeight;
            info.nFormat = MM_FORMAT_BGRA32;
            info.nRatio = 100;
            EXPECT_OK(SetImageInfo(&info));
        }
    };

    // The bitmap to 32 bits in the object and back, inside the budget. *pExported are the pixels.
    DWORD Run(LONG nBudget, const faults::Plan& plan, std::string* pExported)
    {
        CImageObj::InitBaseMemory(nBudget, nBudget);
        const HANDLE hIn = OpenHost(Bitmap());
        const std::string sOut = m_sFolder + "host/out";
        fs::remove(sOut);
        const HANDLE hOut = CreateFileA(sOut.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        T_ImgInf in{MM_FILE_BITMAP, ACS_FILEIO, hIn, kHeader, kWidth, kHeight, 0, 0, kLineBytes}, out = in;
        in.nSrcFormat = out.nDstFormat = MM_FORMAT_BGR24;
        in.nDstFormat = out.nSrcFormat = MM_FORMAT_BGRA32;
        out.hData = hOut;
        DWORD nResult;
        {
            faults::Begin(plan);
            CImageObj image;
            nResult = ImportImg(&image, &in, 1, nullptr);
            if (nResult == MM_SUCCESS)
                nResult = ExportImg(&image, &out, 1, nullptr, 1);
        }
        m_nCalls = faults::g_nCalls;
        m_nTicks = faults::g_nTicks;
        faults::Begin();
        CloseHandle(hIn);
        CloseHandle(hOut);
        std::ostringstream bytes;
        bytes << std::ifstream(sOut, std::ios::binary).rdbuf();
        *pExported = bytes.str().substr(std::min<std::size_t>(kHeader, bytes.str().size()));
        return nResult;
    }
    int m_nCalls = 0;   // that the last run's plan could have failed
    DWORD m_nTicks = 0; // milliseconds slept in it
};

} // namespace

TEST_F(Pipeline, EndsWithTheRightBytesOrACodeWhateverFails)
{
    // A charge is lost only where a store could not be made: the planner's second attempt must find less.
    const struct
    {
        const char* pszCall;
        bool bMakesStores;
    } calls[] = {
        {"VirtualAlloc", true},     {"CreateFileA", true},    {"CreateFileMappingA", true},
        {"GetTempFileNameA", true}, {"MapViewOfFile", false}, {"UnmapViewOfFile", false},
        {"ReadFile", true},         {"GetFileSize", true},    {"CopyToFile", false},
        {"CloseHandle", false},     {"VirtualFree", false},
    };
    const std::string sPixels = Bitmap().substr(kHeader);
    for (LONG nBudget : {1 << 16, 1 << 20})
        for (const auto& call : calls)
            for (DWORD nError : {5u, 8u, 112u})
                for (auto [n, bFailed] = std::pair(1, true); bFailed; ++n) {
                    SCOPED_TRACE(testing::Message() << call.pszCall << " " << n << ", error " << nError
                                                    << ", budget " << nBudget);
                    std::string sExported;
                    const DWORD nResult = Run(nBudget, {call.pszCall, n, 1, nError}, &sExported);
                    bFailed = m_nCalls >= n;
                    if (nResult == MM_SUCCESS) {
                        ASSERT_TRUE(SameBytes(sPixels, sExported));
                    } else {
                        ASSERT_TRUE(bFailed) << "it fails although no call does";
                        ASSERT_STRNE("unknown result code", MM_ResultText(nResult));
                    }
                    ASSERT_LE(CImageObj::AskFreeMemory(), nBudget);
                    if (!bFailed || !call.bMakesStores) {
                        ASSERT_EQ(nBudget, CImageObj::AskFreeMemory());
                    }
                    ASSERT_EQ(faults::Alive{}, faults::g_alive);
                    ASSERT_EQ("", Take("temp"));
                }
}

TEST_F(Pipeline, WritesABandThatTheDiskHadNoRoomForAtFirst)
{
    std::string sExported;
    ASSERT_OK(Run(1 << 16, {"CreateFileMappingA", 4, 300, ERROR_DISK_FULL}, &sExported));
    EXPECT_TRUE(SameBytes(Bitmap().substr(kHeader), sExported));
    EXPECT_EQ(300u * 100, m_nTicks) << "a pause after every failed attempt";
}

TEST_F(Pipeline, PlansOnceMoreWithSmallestBandsWhenAStoreCannotBeMade)
{
    const LONG nBudget = 1 << 18;
    CImageObj::InitBaseMemory(nBudget, nBudget);
    {
        Planned in(2000), out(2000);
        CImageObj *pIn = &in, *pOut = &out;
        tag_MemAlloc request;
        request.nOutCnt = 1;
        faults::Begin({"GetTempFileNameA", 1, 1, 5});
        ASSERT_OK(CImageObj::MemoryAlloc(&request, &pIn, &pOut, nullptr));
        EXPECT_EQ(1, in.m_nReserveTaken);
        EXPECT_EQ(std::pair(16, 16), std::pair(in.m_ImgInfo.nBandLines, out.m_ImgInfo.nBandLines));
        EXPECT_EQ(-nBudget - in.m_nAreaSize - out.m_nAreaSize, CImageObj::AskFreeMemory());
    }
    EXPECT_EQ(0, CImageObj::AskFreeMemory()) << "the reserve is back, the first attempt's charges are not";
}

TEST_F(Pipeline, MakesAHostsBlockAgainThatAFailedStepPlannedAndDidNotReach)
{
    CImageObj::InitBaseMemory(1 << 20, 1 << 20);
    std::vector<unsigned char> block(8 * 10 * 10, 7), lines(10 * 400);
    T_ImgInf inf{MM_FILE_RAW, ACS_MEMORY, block.data(), 0, 10, 10, MM_FORMAT_RAW64, MM_FORMAT_RAW64, 80};
    CImageObjIO host;
    ASSERT_OK(host.InitForUnify(&inf, IMG_INPUT, 0, 0, 0, MM_ALIGN_LINES, 0, 0));
    Planned first(2000);
    CImageObj* inputs[] = {&first, &host};
    tag_MemAlloc request;
    request.nInCnt = 2;
    faults::Begin({"VirtualAlloc", 1, 1, 8});
    ASSERT_OK(CImageObj::MemoryAlloc(&request, inputs, nullptr, nullptr));
    EXPECT_EQ(1, first.m_nReserveTaken);
    T_ImageLrg_tag band{};
    EXPECT_OK(host.MapBandRangeBuf(0, 9, lines.data(), &band));
}

TEST_F(Pipeline, ChargesNothingForABufferThatCannotBeHad)
{
    const LONG nBudget = 1 << 18;
    CImageObj::InitBaseMemory(nBudget, nBudget);
    T_ImageLrg_tag buffer{};
    faults::Begin({"VirtualAlloc", 1, 10000, ERROR_NOT_ENOUGH_MEMORY});
    EXPECT_CODE(MM_NO_MEMORY, CImageObj::AllcImgBufLrg(&buffer, 10, 10, 0, 0, MM_FORMAT_BGR24, 0));
    EXPECT_EQ(60000u, faults::g_nTicks) << "as long as memory may be short";
    EXPECT_EQ(nullptr, buffer.pBase);
    EXPECT_EQ(nBudget, CImageObj::AskFreeMemory());
}

TEST_F(Pipeline, LeavesAnImageInMemoryThatCouldNotBecomeAFile)
{
    CImageObj::InitBaseMemory(1 << 18, 1 << 18);
    Planned image(100);
    CImageObj* pImage = &image;
    tag_MemAlloc request;
    ASSERT_OK(CImageObj::MemoryAlloc(&request, &pImage, nullptr, nullptr));
    const LONG nCharged = image.m_nAreaSize;
    for (const char* pszCall : {"GetTempFileNameA", "CreateFileA", "CopyToFile", "CreateFileMappingA"}) {
        faults::Begin({pszCall, 1, 1, ERROR_DISK_FULL});
        EXPECT_CODE(MM_FILE_ACCESS, image.CnvFileImg()) << pszCall;
        EXPECT_EQ(nCharged, image.m_nAreaSize);
        EXPECT_EQ(1, image.IsOnMemory());
    }
}
