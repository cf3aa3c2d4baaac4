#pragma once
// What several tests need: image geometries, one-image steps, and a budget of known size.

#include "ResultChecks.h"

#include "MemoryManager/MemoryManager.h"

constexpr LONG kMiB = 1 << 20;

inline T_ImageLrg_tag Geometry(int nWidth, int nHeight, int nMargin = 0, int nFormat = MM_FORMAT_BGRA32,
                               int nAlign = MM_ALIGN_PACKED)
{
    T_ImageLrg_tag info{};
    info.nWidth = nWidth;
    info.nHeight = nHeight;
    info.nMarginX = info.nMarginY = nMargin;
    info.nFormat = nFormat;
    info.nAlignType = nAlign;
    info.nRatio = 100;
    return info;
}

/// An object with a geometry and a frame, destroyed with its scope.
class TestImage final : public CImageObj
{
public:
    explicit TestImage(T_ImageLrg_tag info, int nFrame = 0)
    {
        EXPECT_OK(SetImageInfo(&info));
        EXPECT_OK(SetFsize(nFrame));
    }
};

/// An I/O object over a file or block of the host.
struct HostImage : CImageObjIO
{
    HostImage(T_ImgInf inf, tag_E_IMGTYPE eRole, int nBottomUp = 0, int nTmpBufMode = 0)
    {
        EXPECT_OK(InitForUnify(&inf, eRole, 0, 0, 0, MM_ALIGN_LINES, nBottomUp, nTmpBufMode));
    }
};

/// The bytes of an image that is whole.
inline unsigned char* BufferOf(CImageObj& image)
{
    return static_cast<unsigned char*>(image.m_pImageCtrl->GetMemPtr());
}

/// One step's lists, kept together for the planner.
struct Step
{
    std::vector<CImageObj*> in, out, tmp;
    tag_MemAlloc request;

    Step(std::vector<CImageObj*> inputs, std::vector<CImageObj*> outputs,
         std::vector<CImageObj*> temporaries = {})
        : in(std::move(inputs)), out(std::move(outputs)),
          tmp(std::move(temporaries)), request{int(in.size()), int(out.size()), int(tmp.size())}
    {
    }
    DWORD Alloc()
    {
        return CImageObj::MemoryAlloc(&request, in.data(), out.empty() ? nullptr : out.data(), tmp.data());
    }
};

/// Gives the image's bands to the work, from the top down.
template <class Work> void ForEachBand(CImageObj& image, Work work)
{
    T_ImageLrg_tag band{};
    for (int nLine = 0; nLine < image.m_ImgInfo.nHeight; nLine = band.nBandBottom + 1) {
        ASSERT_OK(image.MapBand(nLine, &band, MM_BAND_DOWNWARD, 0));
        ASSERT_EQ(nLine, band.nBandTop);
        ASSERT_NO_FATAL_FAILURE(work(band));
        ASSERT_OK(image.UnmapBand(0));
    }
}

/// Starts every test with a budget of 100 MiB, expects all charges back at its end, and gives the statics
/// back as the library loads them.
class BudgetTest : public testing::Test
{
public:
    static void Reset()
    {
        CImageObj::ms_nOnMemory = 12 * kMiB;
        CImageObj::SetUseMaxBandMemory(24);
        CImageObj::InitBaseMemory(100 * kMiB, 32 * kMiB);
        CImageObj::ms_MinBand = 16;
        CImageObj::ms_nUseMaxMemoryUnit = 24 * kMiB;
    }
    /// A small budget in which small images are banded too.
    static void Shrink(LONG nReserve)
    {
        CImageObj::ms_nOnMemory = 0;
        CImageObj::InitBaseMemory(nReserve, nReserve);
    }

protected:
    BudgetTest() { Reset(); }
    ~BudgetTest() override
    {
        EXPECT_EQ(CImageObj::ms_ReserveMemory, CImageObj::AskFreeMemory()) << "charged for good";
        Reset();
    }
};

/// A test of every byte that is moved, against its reference: it is made at high addresses too.
#define TEST_AT_ANY_ADDRESS(Suite, Name)                                                                     \
    void Check##Suite();                                                                                     \
    TEST_F(Suite, Name)                                                                                      \
    {                                                                                                        \
        Check##Suite();                                                                                      \
    }                                                                                                        \
    void Check##Suite()
