// Band heights and bytes of fixed tables of cases as digests, compared with expected/digests.txt: every
// target must give the same. MM_WRITE_DIGESTS=FILE writes what is found here, for a table that was changed on
// purpose.

#include "Digests.h"

#include "HostFile.h"
#include "TestImages.h"
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

constexpr int kFormats[] = {MM_FORMAT_BGR24, MM_FORMAT_BGRA32, MM_FORMAT_RAW48, MM_FORMAT_RAW64};
constexpr tag_E_ACSTYPE kAccesses[] = {ACS_MMF, ACS_MEMORY, ACS_FILEIO};

// FNV-1a of 64 bits.
struct Digest
{
    std::uint64_t nHash = 0xCBF29CE484222325;

    void Add(const void* pBytes, int nBytes)
    {
        for (int i = 0; i < nBytes; ++i)
            nHash = (nHash ^ static_cast<const unsigned char*>(pBytes)[i]) * 0x100000001B3;
    }
    void Add(std::int64_t nNumber) { Add(&nNumber, sizeof(nNumber)); }
};

std::string Bytes(int nBytes)
{
    std::string s;
    for (int i = 0; i < nBytes; ++i)
        s += static_cast<char>(i * 37 + i / 251 * 11 + 5);
    return s;
}

// A host's image of a data type in a block or file: one to read, or an empty one to write.
struct External
{
    std::string sBlock;
    HostFile file;
    T_ImgInf inf;

    External(int nType, tag_E_ACSTYPE eAccess, bool bRead, int nWidth, int nHeight)
        : sBlock("BM" + Bytes(52 + 8 * (nWidth + 1) * nHeight)), file(bRead ? sBlock : "")
    {
        if (!bRead)
            sBlock.assign(sBlock.size(), '.');
        const int nFormat = kFormats[nType], nLine = nWidth * (nType % 2 + 3) * (nType / 2 + 1);
        inf = {nType / 2, eAccess, sBlock.data(), 54, nWidth, nHeight, nFormat, nFormat, nLine};
        inf.nLineBytes += nType == 0 ? -nLine & 3 : 0;
        if (eAccess != ACS_MEMORY)
            inf.hData = file.Handle();
    }
    void AddTo(Digest& digest) const
    {
        const std::string s = inf.eAcsType == ACS_MEMORY ? sBlock : file.Content();
        digest.Add(s.data(), int(s.size()));
    }
};

// What the sizing pass gives to the images of steps of all sizes up to 2 GiB.
void Plan(Digest& digest, int nMiB)
{
    std::mt19937 random{unsigned(nMiB)};
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int i = 0; i < 3000; ++i) {
        CImageObj::ms_nOnMemory = i / 2 % 2 * 12 * kMiB;
        CImageObj::ms_MinBand = 16 + i % 40;
        CImageObj::InitBaseMemory(nMiB * kMiB, 32 * kMiB);
        std::vector<std::unique_ptr<TestImage>> images;
        std::vector<CImageObj*> list;
        for (int n = 2 + pick(3); n > 0; --n) {
            // Every other step has round numbers, whose quotients are whole but for the rounding.
            const bool bRound = i % 2 == 0;
            const int shape[] = {bRound ? 256 << pick(5) : 1 + pick(12000), 1 + pick(20000),
                                 bRound ? 0 : pick(17), bRound ? 1 : pick(4), pick(3)}; // in this order
            const auto& [nWidth, nHeight, nMargin, nType, nAlign] = shape;
            images.emplace_back(new TestImage(Geometry(nWidth, nHeight, nMargin, kFormats[nType], nAlign)));
            list.push_back(images.back().get());
            list.back()->SetFsize(pick(nMargin + 1));
            list.back()->SetRatio(bRound ? 50 * (1 + pick(4)) : 1 + pick(400));
        }
        tag_MemAlloc request{int(list.size()) - 1, 1, 0, 1 + i % 3};
        digest.Add(CImageObj::MemoryCalculation(&request, list.data(), &list.back()));
        for (CImageObj* pImage : list)
            for (const int n : {pImage->m_ImgInfo.nBandLines, int{pImage->m_nAreaSize}, pImage->IsOnMemory()})
                digest.Add(n);
        digest.Add(CImageObj::AskFreeMemory());
    }
}

// All bands of an object: their pixels, or with margins and frames the whole buffers of unit bands.
void AddBands(Digest& digest, CImageObj& image)
{
    T_ImageLrg_tag band{};
    for (int y = 0; y < image.m_ImgInfo.nHeight; y = band.nBandBottom + 1) {
        ASSERT_EQ(0u, image.MapBand(y, &band, MM_BAND_DOWNWARD, 0));
        for (int k = 0; k < band.nBandLines; ++k)
            digest.Add(band.pImage + k * band.nLineBytes, band.nWidth * band.nPixelBytes);
        digest.Add(image.m_ImgInfo.pBase, image.m_nUnitMode == 1 ? band.nBufSize : 0);
        digest.Add(band.nBandBottom);
        ASSERT_EQ(0u, image.UnmapBand(0));
    }
}

void Transfer(Digest& digest, int nIn, int nObject, int nOut)
{
    for (int i = 0; i < 3 * 3 * 8; ++i) {
        External in(nIn, kAccesses[i / 3 % 3], true, i % 3 * 34 + 1, 37);
        External out(nOut, kAccesses[i / 3 % 3], false, i % 3 * 34 + 1, 37);
        in.inf.nDstFormat = out.inf.nSrcFormat = kFormats[nObject];
        CImageObj::InitBaseMemory(i / 9 % 2 ? 6000 : kMiB, kMiB);
        CImageObj image;
        ASSERT_EQ(0u, ImportImg(&image, &in.inf, i / 18 % 2, nullptr));
        AddBands(digest, image);
        ASSERT_EQ(0u, ExportImg(&image, &out.inf, i / 36, nullptr, i / 36));
        out.AddTo(digest);
    }
}

void UnitTransfer(Digest& digest, int nIn, int nOut)
{
    for (int i = 0; i < 9 * 4 * 4; ++i) {
        External in(nIn, kAccesses[i % 3], true, 13, 11), out(nOut, kAccesses[i / 3 % 3], false, 13, 11);
        CImageObj::ms_nUseMaxMemoryUnit = 1200 * (1 + i / 9 % 4);
        CImageObj image;
        image.m_ImgInfo.nMarginX = image.m_ImgInfo.nMarginY = 2;
        ASSERT_EQ(0u, ImportImgForUnit(&image, &in.inf, &out.inf, i / 36 % 2, nullptr, i % 3, i / 72));
        ASSERT_EQ(0u, image.SetFsize(i / 9 % 4 > 0 ? 2 : 0) | image.SetFrameColor(i / 9 % 4, 0));
        AddBands(digest, image);
        out.AddTo(digest);
    }
}

// In memory and in files: the blocks with their margins, and the whole store.
void FramesAndBlocks(Digest& digest, int nFormat, int nMode)
{
    for (int i = 0; i < 3 * 2 * 4; ++i) {
        CImageObj::InitBaseMemory(i / 3 % 2 ? 20000 : kMiB, kMiB);
        TestImage image(Geometry(29, 41, 4, nFormat, i % 3));
        image.SetFsize(i / 6 + 1);
        ASSERT_EQ(0u, Step({&image}, {}).Alloc());
        const int nBytes = image.m_ImgInfo.nBufSize;
        void* pStore = image.m_pImageCtrl->MapBandAdress(0, DWORD(nBytes), 1);
        std::memcpy(pStore, Bytes(nBytes).data(), std::size_t(nBytes));
        ASSERT_EQ(0u, image.SetFrameColor(nMode, 0x12345678));
        T_ImageLrg_tag block{};
        CImageObj::AllcImgBufLrg(&block, 20, 30, i / 6, i / 6, nFormat, i % 3);
        ASSERT_EQ(0u, image.MapBlock(5, 34, 3, 22, &block));
        digest.Add(block.pBase, block.nBufSize);
        ASSERT_EQ(0u, image.UnMapBlock(7, 36, 4, 23, &block));
        digest.Add(pStore, nBytes);
        ASSERT_EQ(0u, image.UnmapBand(1));
        CImageObj::FreeImgBufLrg(&block);
    }
}

} // namespace

std::string FindDigests()
{
    std::ostringstream found;
    const auto add = [&](const char* pszCase, auto run, auto... arguments) {
        Digest digest;
        CImageObj::ms_nOnMemory = 0;
        run(digest, arguments...);
        found << pszCase;
        ((found << ' ' << std::dec << arguments), ...);
        found << ' ' << std::hex << digest.nHash << '\n';
    };
    for (const int nMiB : {12, 20, 64, 100, 400, 1024})
        add("plan", Plan, nMiB);
    const int transfers[][3] = {{0, 0, 0}, {0, 1, 1}, {0, 3, 2}, {1, 1, 0}, {1, 3, 3},
                                {2, 2, 3}, {2, 3, 2}, {3, 2, 2}, {3, 3, 3}};
    for (const auto& [nIn, nObject, nOut] : transfers)
        add("transfer", Transfer, nIn, nObject, nOut);
    for (int n = 0; n < 8; ++n) // of one sample width
        add("unit-transfer", UnitTransfer, n / 4 * 2 + n / 2 % 2, n / 4 * 2 + n % 2);
    for (int i = 0; i < 4 * 5; ++i)
        add("frames-blocks", FramesAndBlocks, kFormats[i / 5], i % 5);
    return found.str();
}

using Digests = BudgetTest;

TEST_F(Digests, AreTheSameOnEveryTarget)
{
    const std::string sFound = FindDigests();
    if (const char* pszFile = std::getenv("MM_WRITE_DIGESTS"))
        std::ofstream(pszFile, std::ios::binary) << sFound;
    EXPECT_EQ(ExpectedDigests(), sFound);
}
