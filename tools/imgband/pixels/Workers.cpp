// Threads of the tool's own that share the lines of a band.

#include "pixels/Workers.h"

#include "system/Process.h"

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <thread>
#include <vector>

Workers::Workers(int nThreads) : m_nThreads(nThreads) {}

void Workers::ForLines(int nLines, const std::function<void(int nFirst, int nEnd)>& fnLines) const
{
    const int nShares = std::min(m_nThreads, nLines);
    const auto fnShare = [&](int i) {
        const auto fnStart = [&](int n) { return static_cast<int>(std::int64_t{nLines} * n / nShares); };
        fnLines(fnStart(i), fnStart(i + 1));
    };

    std::vector<std::jthread> threads;
    threads.reserve(static_cast<std::size_t>(std::max(nShares, 0)));
    int nStarted = 1; // the caller keeps share 0
    try {
        for (; nStarted < nShares; ++nStarted)
            threads.push_back(os::StartThread([&fnShare, i = nStarted](std::stop_token) { fnShare(i); }));
    } catch (const std::system_error&) {
        // The system has no thread left: the caller does the other shares itself.
    }
    if (nShares > 0)
        fnShare(0);
    for (; nStarted < nShares; ++nStarted)
        fnShare(nStarted);
}
