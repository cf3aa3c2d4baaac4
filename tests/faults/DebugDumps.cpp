// Images moved between flat buffers and objects, and the pictures of both, byte for byte against lookups
// pixel by pixel; then with every platform call failing in turn.

#include "MemoryManager/CImageObjIO.h"
#include "StoreTest.h"

class DebugDumps : public StoreTest
{
protected:
    DebugDumps()
    {
        for (const char* pszFolder : {"logdata/trace", "tmp", "current"})
            fs::create_directories(m_sFolder + pszFolder);
        fs::current_path(m_sFolder + "current");
    }
    ~DebugDumps() override
    {
        CImageObj::ms_FreeMemory = CImageObj::ms_ReserveMemory;
        fs::current_path(m_before);
    }
    // A buffer that tells its bytes. Its charge is given back: it does not count here.
    static T_Image_tag MakeFlat(int nWidth, int nHeight, int nMargin, int nFormat, int nAlign)
    {
        T_ImageLrg_tag info{};
        CImageObj::AllcImgBufLrg(&info, nWidth, nHeight, nMargin, nMargin / 2, nFormat, nAlign);
        CImageObj::UpdateUseMemory(info.nBufSize);
        std::memcpy(info.pBase, kImage.data(), std::size_t(info.nBufSize));
        T_Image_tag flat;
        std::memcpy(&flat, &info, sizeof(flat));
        return flat;
    }
    static std::string Header(int nWidth, int nHeight, int nPixel, int nImage, int nScale)
    {
        const int n = (nWidth * nPixel + 3) / 4 * 4 * nHeight, nKind = 1 | nPixel << 19;
        const int fields[] = {n + 54, 0, 54, 40, nWidth, nHeight, nKind, 0, nImage * n, nScale, nScale, 0, 0};
        return "BM" + std::string(reinterpret_cast<const char*>(fields), sizeof(fields));
    }
    const fs::path m_before = fs::current_path();
};

TEST_F(DebugDumps, AreTheImageOnItsWayThroughAnObject)
{
    const int formats[] = {MM_FORMAT_BGR24, MM_FORMAT_BGRA32, MM_FORMAT_RAW48, MM_FORMAT_RAW64}, H = 8;
    for (int n = 0; n < 96; ++n) {
        SCOPED_TRACE(n);
        const int W = n / 24 % 2 ? 13 : 1024; // wide lines without margins fill whole pages
        T_Image_tag flat = MakeFlat(W, H, n / 12 % 2 * 5, formats[n / 3 % 4], n % 3);
        const int L = flat.nLineBytes, P = flat.nPixelBytes, S = flat.nSampleBytes, nScale = n / 12 % 3;
        const int nGap = (flat.nAllocWidth - W) * P; // stays between bands: then there is only one
        const auto nFirst = std::size_t(flat.nMarginY * L + flat.nMarginX * P),
                   nBytes = std::size_t(H * L - nGap);
        const std::string sImage(flat.pImage, flat.pImage + nBytes);
        const LONG nCharged = n < 48 ? flat.nBufSize : 0, nFree = flat.nBufSize - (n < 48 ? 0 : 1);
        std::string sBuffer(flat.pImage - nFirst, flat.pBase + flat.nBufSize), sWhole, sRaw, sBitmap;
        if (n < 48) // only files hold the outer margins
            sBuffer.assign(sBuffer.size(), '\0').replace(nFirst, nBytes, sImage);
        sBuffer.resize(std::size_t(L * flat.nAllocHeight));
        sBuffer.resize(sBuffer.size() + 4); // what follows the last pixel if that is short

        CImageObj object, *pObject = &object;
        if (n >= 48) { // a store of an earlier life, which was told a header
            T_ImageLrg_tag info{};
            std::memcpy(&info, &flat, sizeof(flat));
            ASSERT_EQ(0u, object.SetImageInfo(&info));
            object.m_pImageCtrl->SetHdrSize(54);
        }
        object.m_ImgInfo.nBandLines = nGap ? H : n % 5 - 1;
        CImageObj::ms_FreeMemory = nFree;
        ASSERT_EQ(0u, CImageObj::DebugConvertCImageObj(&flat, &object));
        EXPECT_TRUE(!flat.pBase && object.m_nAreaSize == nCharged &&
                    nFree - CImageObj::AskFreeMemory() == nCharged);
        tag_MemAlloc request;
        EXPECT_EQ(0u, n % 2 ? CImageObj::MemoryAlloc(&request, &pObject, nullptr, nullptr) : 0);
        object.m_ImgInfo.nBandLines = nGap ? H : n % 4;
        object.OutPutBmp("whole", nScale);
        for (int i = 0; i < 4 * flat.nAllocWidth * flat.nAllocHeight; ++i) {
            const int x = i / 4 % flat.nAllocWidth, y = flat.nAllocHeight - 1 - i / 4 / flat.nAllocWidth;
            const char* p = &sBuffer[std::size_t(y * L + x * P)];
            const int nValue = P == 8 ? (p[i % 4 * 2] & 255) | p[i % 4 * 2 + 1] << 8 : p[i % 4];
            sWhole += static_cast<char>(P == 8 && nScale != 1 ? nValue >> 4 : nValue);
        }
        EXPECT_TRUE(Header(flat.nAllocWidth, flat.nAllocHeight, 4, 1, 0) + sWhole == Take("logdata/trace"));

        flat = MakeFlat(W, H, flat.nMarginX, flat.nFormat, flat.nAlignType);
        sBuffer.assign(flat.pBase, flat.pBase + flat.nBufSize).replace(nFirst, nBytes, sImage);
        ASSERT_EQ(0u, CImageObj::DebugConvertT_Image(&object, &flat));
        EXPECT_EQ(nFree, CImageObj::AskFreeMemory());
        EXPECT_EQ(0, std::memcmp(sBuffer.data(), flat.pBase, sBuffer.size()));
        CImageObj::Output("flat", &flat);
        for (int y = 0; y < H; ++y, sBitmap.resize((sBitmap.size() + 3) / 4 * 4))
            for (int i = 0; i < W * 3; ++i) {
                const char* p = &sImage[std::size_t(i / 3 * P)];
                const char* pUp = p + (H - 1 - y) * L + i % 3 * S;
                sBitmap += S == 1 ? *pUp : static_cast<char>((pUp[0] & 255) >> 4 | pUp[1] << 4);
                sRaw.append(p + y * L + (2 - i % 3) * S, std::size_t(S));
            }
        sBitmap = Header(W, H, 3, 0, 2834) + sBitmap;
        const std::string sBoth = Take("tmp"); // in the order of the folder
        EXPECT_TRUE(sBoth == sRaw + sBitmap || sBoth == sBitmap + sRaw);
        FreeMemoryBlock(flat.pBase);
    }
}

TEST_F(DebugDumps, RefuseWhatWouldReachBeyondABuffer)
{
    T_Image_tag flat = MakeFlat(13, 9, 2, MM_FORMAT_BGRA32, 0);
    CImageObj image, fresh, unit;
    unit.m_nUnitMode = 1;
    ASSERT_EQ(0u, CImageObj::DebugConvertCImageObj(&flat, &image));
    flat = MakeFlat(13, 9, 2, MM_FORMAT_BGRA32, 0);
    // clang-format off
    const std::pair<int T_Image_tag::*, int> claims[] = {
        {&T_Image_tag::nBufSize, flat.nBufSize - 1}, {&T_Image_tag::nLineBytes, 64}, {&T_Image_tag::nHeight, INT_MAX},
        {&T_Image_tag::nAllocHeight, 1 << 30}, {&T_Image_tag::nMarginX, INT_MAX}, {&T_Image_tag::nMarginY, 3},
        {&T_Image_tag::nPixelBytes, 1 << 30}, {&T_Image_tag::nWidth, -1}, {&T_Image_tag::nSamples, 2}, {&T_Image_tag::nSamples, 5}};
    // clang-format on
    for (const auto& [pField, nValue] : claims) {
        T_Image_tag claimed = flat;
        claimed.*pField = nValue;
        CImageObj::Output("claimed", &claimed);
        claimed.pBase = claimed.nSamples == flat.nSamples ? flat.pBase : nullptr;
        EXPECT_EQ(18u, CImageObj::DebugConvertT_Image(&image, &claimed)) << nValue;
        EXPECT_EQ(18u, CImageObj::DebugConvertCImageObj(&claimed, &fresh)) << nValue;
    }
    EXPECT_EQ(18u, CImageObj::DebugConvertCImageObj(&flat, &image)) << "would lose an image";
    fresh.m_ImgInfo.nFsize = 3;
    EXPECT_EQ(18u, CImageObj::DebugConvertCImageObj(&flat, &fresh)) << "its frame is higher than the margin";
    EXPECT_EQ(18u, CImageObj::DebugConvertCImageObj(&flat, &unit));
    std::vector<unsigned char> block(9 * 40);
    T_ImgInf inf{MM_FILE_BITMAP, ACS_MEMORY, block.data(), 0, 13, 9, MM_FORMAT_BGRA32, MM_FORMAT_BGR24, 0};
    CImageObjIO host, plain;
    ASSERT_EQ(0u, host.InitForUnify(&inf, IMG_OUTPUT, 0, 0, 0, 0, 0, 0) | host.Create(400, 400, 1));
    host.m_ImgInfo = image.m_ImgInfo;
    EXPECT_EQ(18u, CImageObj::DebugConvertT_Image(&host, &flat)) << "the host's lines are shorter";
    EXPECT_EQ(18u, CImageObj::DebugConvertCImageObj(&flat, &plain)) << "of no use to it";
    CImageObj::Output(std::string(300, 'n').c_str(), &flat);
    image.OutPutBmp(std::string(300, 'n').c_str(), 1);
    unit.OutPutBmp("unit", 1);
    EXPECT_TRUE(fs::is_empty("../tmp") && fs::is_empty("../logdata/trace") && !fresh.m_pImageCtrl);
    image.m_ImgInfo.nHeight = 0;
    EXPECT_TRUE(CImageObj::DebugConvertT_Image(&image, &flat) == 0 && !image.m_pImageCtrl) << "no line";

    CImageCtrl store;
    for (const auto& [nTotal, nHeader] : {std::pair(flat.nBufSize + 1, 0), {200, 101}, {50, 51}, {50, -1}})
        EXPECT_EQ(18u, store.DebugConvertWrite(&flat, nTotal, nHeader)) << nTotal;
    faults::Begin({"CopyToFile", 1, 1, 112});
    EXPECT_EQ(49u, store.DebugConvertWrite(&flat, 154, 54));
    EXPECT_EQ("MemoryManager/CImageCtrl(865):LastError=112\n" + Take("temp"), Take("log"));
    store.SetHdrSize(54);
    EXPECT_EQ(0u, store.DebugConvertWrite(&flat, 154, 54)) << "the store is as it was";
    EXPECT_EQ(0, std::memcmp(store.MapBandAdress(0, 100, 3), flat.pBase, 100)) << "behind the header";
    EXPECT_EQ(18u, store.DebugConvertWrite(&flat, 100, 0)) << "it would lose its file";
    store.Destroy();
    FreeMemoryBlock(flat.pBase);
}

// The geometry of a unit object becomes that of its picture with the first band.
TEST_F(DebugDumps, TakeNoMoreOfAUnitObjectThanFits)
{
    std::string sPicture = kImage.substr(0, 16 * 200 * 8), sOut(sPicture.size(), 'o');
    for (const int nHeight : {10, 200}) {
        T_ImgInf in{MM_FILE_RAW, ACS_MEMORY,      sPicture.data(), 0,  16,
                    200,         MM_FORMAT_RAW64, MM_FORMAT_RAW64, 128};
        T_ImgInf out = in;
        out.hData = sOut.data();
        T_Image_tag flat = MakeFlat(16, nHeight, 0, MM_FORMAT_RAW64, 0);
        const std::string sBefore(flat.pBase, flat.pBase + flat.nBufSize);
        CImageObj image;
        ASSERT_EQ(0u, ImportImgForUnit(&image, &in, &out, 0, nullptr, 0, 0));
        T_ImageLrg_tag info{};
        image.GetImageInfo(&info);
        info.nHeight = nHeight;
        ASSERT_EQ(0u, image.SetImageInfo(&info));
        EXPECT_EQ(nHeight == 200 ? 0u : 18u, CImageObj::DebugConvertT_Image(&image, &flat));
        EXPECT_EQ(nHeight == 200,
                  flat.pBase && std::memcmp(sPicture.data(), flat.pBase, sPicture.size()) == 0);
        FreeMemoryBlock(flat.pBase);
    }

    std::ofstream("short") << sPicture;
    CImageObj image;
    T_ImgInf in{MM_FILE_RAW, ACS_FILEIO, nullptr, 0, 16, 200, MM_FORMAT_RAW64, MM_FORMAT_RAW64, 128},
        out = in;
    in.hData = CreateFileA("short", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    out.eAcsType = ACS_MEMORY;
    out.hData = sOut.data();
    T_Image_tag flat = MakeFlat(16, 200, 0, MM_FORMAT_RAW64, 0);
    ASSERT_EQ(0u, ImportImgForUnit(&image, &in, &out, 0, nullptr, 0, 0));
    sOut.assign(sOut.size(), 'o');
    faults::Begin({"ReadFile", 1, 1, 23});
    EXPECT_EQ(49u, CImageObj::DebugConvertT_Image(&image, &flat));
    EXPECT_EQ(0u, image.UnmapBand(0));
    EXPECT_EQ(std::string(sOut.size(), 'o'), sOut) << "a band that was not read is written";
    EXPECT_TRUE(CloseHandle(in.hData) && CImageObj::AskFreeMemory() == CImageObj::ms_ReserveMemory);
    Take("log");
}

TEST_F(DebugDumps, LeaveNothingWhateverFails)
{
    std::string sLog;                       // of all failures in turn
    for (const LONG nFree : {80000, 79999}) // in memory and in a file
        for (auto [nCall, bFailed] = std::pair(1, true); bFailed; ++nCall) {
            SCOPED_TRACE(testing::Message() << nFree << ", call " << nCall);
            T_Image_tag flat = MakeFlat(100, 100, 0, MM_FORMAT_RAW64, 0), back = flat;
            back.pBase = static_cast<unsigned char*>(AllocMemoryBlock(80000, 0));
            CImageObj image;
            image.m_ImgInfo.nBandLines = 60;
            CImageObj::ms_FreeMemory = nFree;
            faults::Begin({"", nCall});
            const DWORD nMade = CImageObj::DebugConvertCImageObj(&flat, &image);
            EXPECT_TRUE(nMade == 0 || (flat.pBase && CImageObj::AskFreeMemory() == nFree)) << nMade;
            image.OutPutBmp("image", 0);
            const DWORD nTaken = nMade == 0 ? CImageObj::DebugConvertT_Image(&image, &back) : 0;
            CImageObj::Output("flat", &back);
            bFailed = faults::g_nCalls >= nCall;
            EXPECT_EQ(0, faults::g_nTwice) << "released twice";
            faults::Begin();
            EXPECT_TRUE(nTaken == 0 ? !!back.pBase : (nTaken == 69 || nTaken == 81) && !back.pBase) << nTaken;
            EXPECT_TRUE(nMade + nTaken > 0 || std::memcmp(kImage.data(), back.pBase, 80000) == 0);
            EXPECT_TRUE(image.Destroy() == 0 && CImageObj::AskFreeMemory() == nFree);
            EXPECT_EQ(nFree < 80000 && nMade == 0, !Take("temp").empty());
            EXPECT_TRUE(bFailed || Take("tmp").size() + Take("logdata/trace").size() == 130108);
            sLog += nMade == 1 ? "no memory\n" : Take("log");
            FreeMemoryBlock(flat.pBase);
            FreeMemoryBlock(back.pBase);
            EXPECT_EQ(0, faults::g_nBlocks | faults::g_nViews | faults::g_nHandles);
        }
    std::string sWanted = "no memory\n";
    for (const char* pszLine : {"842", "856", "872", "872", "872", "889", "907"})
        sWanted += std::string("MemoryManager/CImageCtrl(") + pszLine + "):LastError=5\n";
    EXPECT_EQ(sWanted, sLog);
}
