// The sizing pass that runs under the lock: it grows in proportion to its images.

#include "MemoryManager/MemoryManager.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

void SizingPass(benchmark::State& state)
{
    T_ImageLrg_tag info{};
    info.nWidth = 10000;
    info.nHeight = 10000;
    info.nFormat = MM_FORMAT_BGRA32;
    info.nRatio = 100;
    std::vector<std::unique_ptr<CImageObj>> images;
    std::vector<CImageObj*> list;
    for (int i = 0; i < state.range(0); ++i) {
        images.push_back(std::make_unique<CImageObj>());
        images.back()->SetImageInfo(&info);
        list.push_back(images.back().get());
    }
    tag_MemAlloc request;
    request.nInCnt = static_cast<int>(list.size());
    const LONG nFree = CImageObj::AskFreeMemory();
    for (auto _ : state) {
        if (CImageObj::MemoryCalculation(&request, list.data(), nullptr) != MM_SUCCESS)
            state.SkipWithError("not sized");
        for (CImageObj* pImage : list)
            pImage->m_nAreaSize = 0;
        CImageObj::ms_FreeMemory = nFree;
    }
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(SizingPass)->RangeMultiplier(4)->Range(1, 256)->Complexity(benchmark::oN);
