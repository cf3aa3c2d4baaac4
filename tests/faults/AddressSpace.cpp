// Addresses that run out in a 32-bit process: a band waits its time, fails with its code, and nothing is
// lost.

#include "StoreTest.h"

namespace {

constexpr int kWidth = 4000, kHeight = 2000, kLineBytes = 8 * kWidth;
constexpr LONG kBudget = 16 << 20;

class AddressSpace : public StoreTest
{
protected:
    AddressSpace() { m_taken.reserve(10000); }

    // Leaves no piece of a megabyte. What is smaller stays for those who need little.
    void TakeAddresses()
    {
        for (SIZE_T nBytes = SIZE_T{1} << 30; nBytes >= SIZE_T{1} << 20; nBytes /= 2)
            while (void* p = VirtualAlloc(nullptr, nBytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))
                m_taken.push_back(p);
    }
    void GiveAddressesBack()
    {
        for (void* p : m_taken)
            VirtualFree(p, 0, MEM_RELEASE);
        m_taken.clear();
    }
    std::vector<void*> m_taken;
};

} // namespace

TEST_F(AddressSpace, ThatRunsOutFailsABandAfterItsTimeAndLosesNothing)
{
    if (sizeof(void*) != 4)
        GTEST_SKIP() << "there is no end of addresses of 64 bits";
    CImageObj::ms_nOnMemory = 0;
    CImageObj::InitBaseMemory(kBudget, kBudget);
    const std::string sPixels = Numbered(kLineBytes * kHeight);
    T_ImgInf inf{MM_FILE_RAW, ACS_FILEIO, OpenHost(sPixels), 0, kWidth, kHeight, 0x422, 0x422, kLineBytes};
    CImageObj image;
    ASSERT_OK(ImportImg(&image, &inf, 0, nullptr));
    CloseHandle(inf.hData);
    T_ImageLrg_tag held{}, band{};
    ASSERT_OK(image.MapBand(0, &held, MM_BAND_DOWNWARD, 1));
    ASSERT_GT(held.nBandLines * held.nLineBytes, 1 << 20);
    for (const bool bLast : {false, true}) {
        TakeAddresses();
        faults::Begin();
        EXPECT_CODE(MM_NO_BAND_ADDRESS, image.MapBand(kHeight - 1, &band, MM_BAND_UPWARD, 0));
        EXPECT_EQ(60000u, faults::g_nTicks) << "as long as addresses may be short";
        EXPECT_TRUE(SameBytes(BytesAt(sPixels.data(), kLineBytes), BytesAt(held.pImage, kLineBytes)));
        if (bLast) {
            EXPECT_OK(image.Destroy()) << "without a single address to be had";
        }
        GiveAddressesBack();
        EXPECT_EQ((bLast ? faults::Alive{} : faults::Alive{0, 1, 2}), faults::g_alive);
        for (int y = 0; y < kHeight && !bLast; y = band.nBandBottom + 1) {
            ASSERT_OK(image.MapBand(y, &band, MM_BAND_DOWNWARD, 0));
            EXPECT_TRUE(SameBytes(BytesAt(&sPixels[std::size_t(kLineBytes * y)], kLineBytes),
                                  BytesAt(band.pImage, kLineBytes)));
            ASSERT_OK(image.UnmapBand(0));
        }
    }
    EXPECT_EQ(kBudget, CImageObj::AskFreeMemory());
}
