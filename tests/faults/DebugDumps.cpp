// Images moved between flat buffers and objects, and the pictures of both, byte for byte against lookups
// pixel by pixel.

#include "MemoryManager/CImageObjIO.h"
#include "StoreTest.h"

class DebugDumps : public StoreTest
{
protected:
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
            ASSERT_OK(object.SetImageInfo(&info));
            object.m_pImageCtrl->SetHdrSize(54);
        }
        object.m_ImgInfo.nBandLines = nGap ? H : n % 5 - 1;
        CImageObj::ms_FreeMemory = nFree;
        ASSERT_OK(CImageObj::DebugConvertCImageObj(&flat, &object));
        EXPECT_EQ(nullptr, flat.pBase) << "the object has the buffer";
        EXPECT_EQ(nCharged, object.m_nAreaSize);
        EXPECT_EQ(nFree - nCharged, CImageObj::AskFreeMemory());
        tag_MemAlloc request;
        if (n % 2) {
            EXPECT_OK(CImageObj::MemoryAlloc(&request, &pObject, nullptr, nullptr));
        }
        object.m_ImgInfo.nBandLines = nGap ? H : n % 4;
        object.OutPutBmp("whole", nScale);
        for (int i = 0; i < 4 * flat.nAllocWidth * flat.nAllocHeight; ++i) {
            const int x = i / 4 % flat.nAllocWidth, y = flat.nAllocHeight - 1 - i / 4 / flat.nAllocWidth;
            const char* p = &sBuffer[std::size_t(y * L + x * P)];
            const int nValue = P == 8 ? (p[i % 4 * 2] & 255) | p[i % 4 * 2 + 1] << 8 : p[i % 4];
            sWhole += static_cast<char>(P == 8 && nScale != 1 ? nValue >> 4 : nValue);
        }
        sWhole = Header(flat.nAllocWidth, flat.nAllocHeight, 4, 1, 0) + sWhole;
        EXPECT_TRUE(SameBytes(sWhole, m_home.Take("logdata/trace")));

        flat = MakeFlat(W, H, flat.nMarginX, flat.nFormat, flat.nAlignType);
        sBuffer.assign(flat.pBase, flat.pBase + flat.nBufSize).replace(nFirst, nBytes, sImage);
        ASSERT_OK(CImageObj::DebugConvertT_Image(&object, &flat));
        EXPECT_EQ(nFree, CImageObj::AskFreeMemory());
        EXPECT_TRUE(SameBytes(sBuffer, BytesAt(flat.pBase, sBuffer.size())));
        CImageObj::Output("flat", &flat);
        for (int y = 0; y < H; ++y, sBitmap.resize((sBitmap.size() + 3) / 4 * 4))
            for (int i = 0; i < W * 3; ++i) {
                const char* p = &sImage[std::size_t(i / 3 * P)];
                const char* pUp = p + (H - 1 - y) * L + i % 3 * S;
                sBitmap += S == 1 ? *pUp : static_cast<char>((pUp[0] & 255) >> 4 | pUp[1] << 4);
                sRaw.append(p + y * L + (2 - i % 3) * S, std::size_t(S));
            }
        sBitmap = Header(W, H, 3, 0, 2834) + sBitmap;
        const std::string sBoth = m_home.Take("tmp"); // in the order of the folder
        EXPECT_TRUE(SameBytes(sBoth.starts_with("BM") ? sBitmap + sRaw : sRaw + sBitmap, sBoth));
        FreeMemoryBlock(flat.pBase);
    }
}

TEST_F(DebugDumps, RefuseWhatWouldReachBeyondABuffer)
{
    T_Image_tag flat = MakeFlat(13, 9, 2, MM_FORMAT_BGRA32, 0);
    CImageObj image, fresh, unit;
    unit.m_nUnitMode = 1;
    ASSERT_OK(CImageObj::DebugConvertCImageObj(&flat, &image));
    flat = MakeFlat(13, 9, 2, MM_FORMAT_BGRA32, 0);
    const std::pair<int T_Image_tag::*, int> claims[] = {{&T_Image_tag::nBufSize, flat.nBufSize - 1},
                                                         {&T_Image_tag::nAllocHeight, 1 << 30},
                                                         {&T_Image_tag::nLineBytes, 64},
                                                         {&T_Image_tag::nPixelBytes, 1 << 30},
                                                         {&T_Image_tag::nHeight, INT_MAX},
                                                         {&T_Image_tag::nMarginX, INT_MAX},
                                                         {&T_Image_tag::nMarginY, 3},
                                                         {&T_Image_tag::nSamples, 2},
                                                         {&T_Image_tag::nSamples, 5},
                                                         {&T_Image_tag::nWidth, -1}};
    for (const auto& [pField, nValue] : claims) {
        T_Image_tag claimed = flat;
        claimed.*pField = nValue;
        CImageObj::Output("claimed", &claimed);
        claimed.pBase = claimed.nSamples == flat.nSamples ? flat.pBase : nullptr;
        EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertT_Image(&image, &claimed)) << nValue;
        EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertCImageObj(&claimed, &fresh)) << nValue;
    }
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertCImageObj(&flat, &image)) << "would lose an image";
    fresh.m_ImgInfo.nFsize = 3;
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertCImageObj(&flat, &fresh))
        << "its frame is higher than the margin";
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertCImageObj(&flat, &unit));
    std::vector<unsigned char> block(9 * 40);
    T_ImgInf inf{MM_FILE_BITMAP, ACS_MEMORY, block.data(), 0, 13, 9, MM_FORMAT_BGRA32, MM_FORMAT_BGR24, 0};
    CImageObjIO host, plain;
    ASSERT_OK(host.InitForUnify(&inf, IMG_OUTPUT, 0, 0, 0, 0, 0, 0));
    ASSERT_OK(host.Create(400, 400, 1));
    host.m_ImgInfo = image.m_ImgInfo;
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertT_Image(&host, &flat))
        << "the host's lines are shorter";
    EXPECT_CODE(MM_BAD_ARGUMENT, CImageObj::DebugConvertCImageObj(&flat, &plain)) << "of no use to it";
    CImageObj::Output(std::string(300, 'n').c_str(), &flat);
    image.OutPutBmp(std::string(300, 'n').c_str(), 1);
    unit.OutPutBmp("unit", 1);
    EXPECT_TRUE(fs::is_empty("../tmp"));
    EXPECT_TRUE(fs::is_empty("../logdata/trace"));
    EXPECT_EQ(nullptr, fresh.m_pImageCtrl);
    image.m_ImgInfo.nHeight = 0;
    EXPECT_OK(CImageObj::DebugConvertT_Image(&image, &flat)) << "no line";
    EXPECT_EQ(nullptr, image.m_pImageCtrl);
    FreeMemoryBlock(flat.pBase);
}

TEST_F(DebugDumps, WriteABufferIntoAStoreThatHasNoFile)
{
    T_Image_tag flat = MakeFlat(13, 9, 2, MM_FORMAT_BGRA32, 0);
    CImageCtrl store;
    for (const auto& [nTotal, nHeader] : {std::pair(flat.nBufSize + 1, 0), {200, 101}, {50, 51}, {50, -1}})
        EXPECT_CODE(MM_BAD_ARGUMENT, store.DebugConvertWrite(&flat, nTotal, nHeader)) << nTotal;
    faults::Begin({{"CopyToFile", 1, 1, 112}});
    EXPECT_CODE(MM_FILE_ACCESS, store.DebugConvertWrite(&flat, 154, 54));
    EXPECT_EQ(LogLine("CImageCtrl", 865, 112), m_home.Take("log"));
    EXPECT_EQ("", m_home.Take("temp"));
    store.SetHdrSize(54);
    EXPECT_OK(store.DebugConvertWrite(&flat, 154, 54)) << "the store is as it was";
    EXPECT_TRUE(SameBytes(BytesAt(flat.pBase, 100), BytesAt(store.MapBandAdress(0, 100, 3), 100)))
        << "behind the header";
    EXPECT_CODE(MM_BAD_ARGUMENT, store.DebugConvertWrite(&flat, 100, 0)) << "it would lose its file";
    store.Destroy();
    FreeMemoryBlock(flat.pBase);
}

// The geometry of a unit object becomes that of its picture with the first band.
TEST_F(DebugDumps, TakeNoMoreOfAUnitObjectThanFits)
{
    std::string sPicture = kImage.substr(0, 16 * 200 * 8), sOut(sPicture.size(), 'o');
    for (const int nHeight : {10, 200}) {
        T_ImgInf in{MM_FILE_RAW, ACS_MEMORY, sPicture.data(), 0, 16, 200, 0x422, 0x422, 128}, out = in;
        out.hData = sOut.data();
        T_Image_tag flat = MakeFlat(16, nHeight, 0, MM_FORMAT_RAW64, 0);
        const std::string sBefore(flat.pBase, flat.pBase + flat.nBufSize);
        CImageObj image;
        ASSERT_OK(ImportImgForUnit(&image, &in, &out, 0, nullptr, 0, 0));
        T_ImageLrg_tag info{};
        image.GetImageInfo(&info);
        info.nHeight = nHeight;
        ASSERT_OK(image.SetImageInfo(&info));
        EXPECT_CODE(nHeight == 200 ? MM_SUCCESS : MM_BAD_ARGUMENT,
                    CImageObj::DebugConvertT_Image(&image, &flat));
        if (nHeight == 200) {
            EXPECT_TRUE(SameBytes(sPicture, BytesAt(flat.pBase, sPicture.size())));
        } else {
            EXPECT_EQ(nullptr, flat.pBase) << "a buffer with another picture";
        }
        FreeMemoryBlock(flat.pBase);
    }
}
