// A host of the installed library: plans an image of 300 MB inside 16 MiB, and paints a line of one of its
// bands.
#include <MemoryManager/MemoryManager.h>

#include <cstdio>
#include <cstring>

int main()
{
    CImageObj::InitBaseMemory(16 << 20, 16 << 20);
    CImageObj image;
    CImageObj* pImage = &image;
    T_ImageLrg_tag info{}, band{};
    info.nWidth = info.nHeight = 10000;
    info.nFormat = MM_FORMAT_BGR24;
    info.nRatio = 100;
    tag_MemAlloc request;
    const bool bDone = image.SetImageInfo(&info) == MM_SUCCESS &&
                       CImageObj::MemoryAlloc(&request, &pImage, nullptr, nullptr) == MM_SUCCESS &&
                       image.MapBand(9000, &band, MM_BAND_DOWNWARD, 0) == MM_SUCCESS &&
                       std::memset(band.pImage, 0x7F, 30000) != nullptr && image.UnmapBand(0) == MM_SUCCESS;
    std::printf("MemoryManager %s, headers of %s: %s\n", MM_GetVersion(), MM_VERSION,
                bDone ? "done" : "failed");
    return bDone ? 0 : 1;
}
