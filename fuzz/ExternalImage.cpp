// I/O objects over external images in the three access types: the header search, the set-up, and bands in any
// order. What a file holds is hostile; the caller is not.

#include "fuzz/Fuzzing.h"

bool fuzz::Run(Input& input)
{
    static BYTE buffer[kMostBytes]; // of bands in the object's layout
    const int nMarginX = input.Number(3), nMarginY = input.Number(3), nOut = input.UpTo(1);
    const auto eRole = nOut == 1 ? IMG_OUTPUT : input.PickValueInArray({IMG_INPUT, IMG_WORK});
    T_ImgInf inf{input.UpTo(MM_FILE_RAW), ACS_NONE, nullptr, 0, input.Number(40), input.Number(40), 0, 0, 0};
    inf.nSrcFormat = kLayouts[input.UpTo(3)].nFormat;
    inf.nDstFormat = kLayouts[input.UpTo(3)].nFormat;
    const External external(input, inf, (inf.nWidth + 2.0 * nMarginX) * 8 + 3, inf.nHeight + 2.0 * nMarginY);
    CImageObjIO io;
    if (!inf.hData || !Done(io.InitForUnify(&inf, eRole, nMarginX, nMarginY, 0, input.UpTo(3), input.UpTo(1),
                                            input.UpTo(2))))
        return true;
    CImageObj* pIo = &io;
    tag_MemAlloc request{1 - nOut, nOut};
    const bool bPlanned = Done(CImageObj::MemoryAlloc(&request, &pIo, &pIo, nullptr));
    for (int i = 0; i < 6 && bPlanned; ++i) {
        const int nFirst = input.Number(40), nLast = input.Behind(nFirst, 20);
        const double nBytes = io.m_ImgInfo.nLineBytes * (double(nLast) - nFirst + 1);
        if (inf.eAcsType == ACS_MMF)
            io.UnmapBand(0); // a view that is still there would be overwritten, not released
        T_ImageLrg_tag band{};
        input.CallOneOf(
            {[&] { return io.MapBand(nFirst, &band, input.UpTo(2), 0); },
             [&] { return io.MapBandRange(nFirst, nLast, &band, 0); }, [&] { return io.UnmapBand(nFirst); },
             [&] { return nBytes > kMostBytes ? 0 : io.MapBandRangeBuf(nFirst, nLast, buffer, &band); },
             [&] { return io.GetAreaSize() > kMostBytes ? 0 : io.UnmapBand(buffer, input.Number(2)); }});
    }
    io.UnmapBand(0);
    if (inf.eAcsType == ACS_MMF && io.m_pImageCtrl->GetFHandle() == INVALID_HANDLE_VALUE)
        ++faults::g_alive.nHandles; // the host's file, which a failed mapping closes
    return bPlanned;
}
