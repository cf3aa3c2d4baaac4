// A section that grows far beyond what a report has: adding and finding scan it, so that a table of n keys
// takes n squared steps.

#include "MemoryManager/MemoryManager.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

void WriteAndReadKeys(benchmark::State& state)
{
    const int nKeys = static_cast<int>(state.range(0));
    for (auto _ : state) {
        CWorkTableList table;
        for (int i = 0; i < nKeys; ++i)
            table.KeyWriteInt("section", ("key " + std::to_string(i)).c_str(), i);
        for (int i = 0; i < nKeys; ++i)
            if (table.KeyReadInt("section", ("key " + std::to_string(i)).c_str(), -1) != i)
                state.SkipWithError("not found");
    }
}

} // namespace

BENCHMARK(WriteAndReadKeys)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
