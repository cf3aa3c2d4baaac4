// The sizing pass that runs under the lock: it grows in proportion to its images.

#include "MemoryManager/MemoryManager.h"

#include <benchmark/benchmark.h>

#include <deque>
#include <vector>

namespace {

// The library's destructor is not virtual: objects are destroyed as what they are.
struct Image final : CImageObj
{
};

void SizingPass(benchmark::State& state)
{
    T_ImageLrg_tag info{};
    info.nWidth = 10000;
    info.nHeight = 10000;
    info.nFormat = MM_FORMAT_BGRA32;
    info.nRatio = 100;
    std::deque<Image> images;
    std::vector<CImageObj*> list;
    for (int i = 0; i < state.range(0); ++i) {
        images.emplace_back().SetImageInfo(&info);
        list.push_back(&images.back());
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
