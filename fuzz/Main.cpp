// One run of a target: at its end the whole budget, and everything that was taken from the system, is back.

#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nBytes)
{
    fuzz::Input input(pData, nBytes);
    SetErrLogPath("/dev/null/"); // no such folder can be made: nothing is logged
    BudgetTest::Shrink(64 << 10);
    CImageObj::ms_nUseMaxMemoryUnit = 64 << 10;
    faults::Begin();
    const bool bWhole = fuzz::Run(input);
    const std::int64_t nLack = std::int64_t{CImageObj::ms_ReserveMemory} - CImageObj::AskFreeMemory();
    assert(nLack == 0 || (!bWhole && nLack > 0));
    assert(faults::g_alive == faults::Alive{} && faults::g_nTwice == 0);
    return 0;
}
