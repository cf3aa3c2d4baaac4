// What one band costs: an image in memory takes no lock, no allocation and no system call; a banded file two
// system calls (map and unmap).

#include "MemoryManager/MemoryManager.h"

#include <benchmark/benchmark.h>

namespace {

constexpr LONG kMiB = 1 << 20;

void MapBands(benchmark::State& state, bool bInMemory)
{
    const LONG nBudget = bInMemory ? 100 * kMiB : 12 * kMiB;
    CImageObj::InitBaseMemory(nBudget, nBudget);
    T_ImageLrg_tag info{};
    info.nWidth = 4000;
    info.nHeight = 4000;
    info.nFormat = MM_FORMAT_BGRA32;
    info.nRatio = 100;
    {
        CImageObj image;
        CImageObj* pImage = &image;
        tag_MemAlloc request;
        image.SetImageInfo(&info);
        if (bInMemory)
            image.SetOnMemory();
        if (CImageObj::MemoryAlloc(&request, &pImage, nullptr, nullptr) != MM_SUCCESS)
            state.SkipWithError("not planned");
        image.SetBandHeight(500);
        T_ImageLrg_tag band{};
        int nLine = 0;
        for (auto _ : state) {
            if (image.MapBand(nLine, &band, MM_BAND_DOWNWARD, 0) != MM_SUCCESS ||
                image.UnmapBand(0) != MM_SUCCESS) {
                state.SkipWithError("not mapped");
                break;
            }
            benchmark::DoNotOptimize(band.pImage);
            nLine = band.nBandBottom + 1 < info.nHeight ? band.nBandBottom + 1 : 0;
        }
        state.counters["band_lines"] = image.m_ImgInfo.nBandLines;
    }
    CImageObj::InitBaseMemory(100 * kMiB, 32 * kMiB);
}

void MapBandInMemory(benchmark::State& state)
{
    MapBands(state, true);
}
void MapBandInFile(benchmark::State& state)
{
    MapBands(state, false);
}

} // namespace

BENCHMARK(MapBandInMemory);
BENCHMARK(MapBandInFile);
