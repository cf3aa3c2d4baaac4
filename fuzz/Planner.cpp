// Geometries and memory requests: whatever a step asks for, the charges add up to what the budget lacks, no
// band is taller than its image, bands can be mapped, and everything comes back.

#include "fuzz/Fuzzing.h"

bool fuzz::Run(Input& input)
{
    std::array<CImageObj, 6> objects;
    std::vector<CImageObj*> images;
    tag_MemAlloc request{input.UpTo(3), input.UpTo(2), input.UpTo(1), input.Number(3), 0, input.Number(40)};
    for (int i = 0; i < request.nInCnt + request.nOutCnt + request.nTmpCnt; ++i) {
        CImageObj& image = *images.emplace_back(&objects[std::size_t(i)]);
        const int nFormat = input.ConsumeBool() ? input.ConsumeIntegral<short>() : int{MM_FORMAT_BGRA32};
        auto info = Geometry(input.Number(300), input.Number(300), input.Number(20), nFormat, input.UpTo(3));
        if (!Done(image.SetImageInfo(&info)))
            return true;
        Done(image.SetRatio(input.Number(200))), Done(image.SetFsize(input.Number(4)));
        if (input.UpTo(7) == 0)
            image.SetOnMemory();
    }
    CImageObj **ppTmp = images.data() + request.nInCnt + request.nOutCnt,
              **ppOut = request.nOutCnt > 0 ? ppTmp - request.nOutCnt : nullptr;
    if (!Done(CImageObj::MemoryAlloc(&request, images.data(), ppOut, ppTmp)))
        return false;
    std::int64_t nCharged = CImageObj::AskFreeMemory();
    for (CImageObj* pImage : images) {
        nCharged += pImage->m_nAreaSize;
        T_ImageLrg_tag band{};
        assert(pImage->m_nAreaSize >= 0 && pImage->GetBandHeight() <= pImage->m_ImgInfo.nHeight);
        if (Done(pImage->MapBand(input.Number(300), &band, input.UpTo(1), 0)))
            std::memset(band.pImage, 0x5A, std::size_t(band.nWidth) * std::size_t(band.nPixelBytes));
        Done(pImage->UnmapBand(0));
    }
    assert(nCharged == CImageObj::ms_ReserveMemory || objects[0].m_nReserveTaken == 1);
    CImageObj::MemoryClear(&request, ppOut, ppTmp);
    return true;
}
