// Images, views and buffers above 2 GiB, and an image across that address: what takes a 32-bit address for a
// signed number goes wrong there.

#include "TestImages.h"
#if !defined(_WIN32)
#include <sys/mman.h>
#endif

namespace {

constexpr std::uintptr_t kHigh = 0x80000000;

bool IsHigh(const void* pAddress)
{
    return reinterpret_cast<std::uintptr_t>(pAddress) >= kHigh;
}

#if defined(_WIN32)
// Takes all that the system gives below 2 GiB; it then gives higher addresses.
struct LowerHalf
{
    std::vector<void*> taken;
    LowerHalf()
    {
        SYSTEM_INFO system;
        GetSystemInfo(&system);
        if (!IsHigh(system.lpMaximumApplicationAddress))
            throw std::runtime_error("the program is not linked for addresses above 2 GiB");
        for (SIZE_T nBytes = 64 * kMiB; nBytes >= 65536; nBytes /= 2)
            do
                taken.push_back(VirtualAlloc(nullptr, nBytes, MEM_RESERVE, PAGE_NOACCESS));
            while (taken.back() && !IsHigh(taken.back()));
    }
    ~LowerHalf()
    {
        for (void* p : taken)
            VirtualFree(p, 0, MEM_RELEASE);
    }
};
#else
using LowerHalf = std::nullptr_t; // from where the system gives addresses last
#endif

class HighAddresses : public BudgetTest
{
    void SetUp() override
    {
        if (sizeof(void*) != 4)
            GTEST_SKIP() << "only addresses of 32 bits can look negative";
    }
};

} // namespace

void CheckFrames(), CheckBlocks(), CheckImportExport(), CheckUnitBands();

TEST_F(HighAddresses, GiveTheSameBytes)
{
    [[maybe_unused]] const LowerHalf taken{};
    for (const bool bWhole : {true, false}) {
        bWhole ? Reset() : Shrink(kMiB);
        TestImage image(Geometry(1000, 1000));
        ASSERT_OK(Step({&image}, {}).Alloc());
        T_ImageLrg_tag band{}, block{};
        EXPECT_OK(image.MapBand(0, &band, MM_BAND_DOWNWARD, 0));
        EXPECT_OK(CImageObj::AllcImgBufLrg(&block, 10, 10, 0, 0, MM_FORMAT_BGR24, 0));
        CWorkTableList table;
        unsigned char* pBuffer = nullptr;
        EXPECT_EQ(1, table.SetWorkTable(&pBuffer, 1));
        EXPECT_EQ(1, table.AllocWorkTable());
        EXPECT_THAT((std::array{band.pImage, block.pBase, pBuffer}), testing::Each(testing::Truly(IsHigh)));
        CImageObj::FreeImgBufLrg(&block);
    }
    for (const auto pCheck : {CheckFrames, CheckBlocks, CheckImportExport, CheckUnitBands}) {
        Reset();
        pCheck();
    }
}

#if !defined(_WIN32) // which has pages of its own in front of that address
TEST_F(HighAddresses, AreReachedFromLowOnes)
{
    constexpr int kWidth = 501, kHeight = 1000, kBytes = kWidth * 8 * kHeight;
    void* pAcross = mmap(reinterpret_cast<void*>(kHigh - kBytes / 4096 * 2048), 2 * kBytes,
                         PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    ASSERT_NE(MAP_FAILED, pAcross);
    auto* pSource = static_cast<unsigned char*>(pAcross);
    std::vector<unsigned char> copy(kBytes);
    for (int i = 0; i < kBytes; ++i)
        pSource[i] = static_cast<unsigned char>(i % 251 + i / 65536);
    T_ImgInf in{MM_FILE_RAW, ACS_MEMORY, pSource, 0, kWidth, kHeight, 0x422, 0x422, kWidth * 8}, out = in;
    out.hData = copy.data();
    Shrink(kMiB); // bands on both sides
    CImageObj whole, bands;
    EXPECT_OK(ImportImgForUnit(&bands, &in, &out, 0, nullptr, MM_ALIGN_LINES, 0));
    EXPECT_OK(DuplicateImageForUnit(&bands));
    EXPECT_TRUE(SameBytes(BytesAt(copy.data(), kBytes), BytesAt(pSource, kBytes)));
    std::memset(pSource, 0, kBytes);
    EXPECT_OK(ImportImg(&whole, &out, 0, nullptr));
    EXPECT_OK(ExportImg(&whole, &in, 0, nullptr, 0));
    EXPECT_TRUE(SameBytes(BytesAt(copy.data(), kBytes), BytesAt(pSource, kBytes)));
    munmap(pAcross, 2 * kBytes);
}
#endif
