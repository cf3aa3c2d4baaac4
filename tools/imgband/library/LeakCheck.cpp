// Looking for what a run did not give back.

#include "library/LeakCheck.h"

#include "library/PlannedImage.h"
#include "system/Folders.h"
#include "system/Leftovers.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <system_error>

// Counts the files that were closed, but not removed. Older ones are not this run's: the library cleaned the
// folder when it began. Empty ones may be another process's, which makes a file a moment before it locks it.
int LeakCheck::FilesLeftBehind() const
try {
    const auto age = std::chrono::ceil<std::chrono::seconds>(std::chrono::steady_clock::now() - m_begin);
    const std::vector<os::Leftover> leftovers =
        os::FindLeftovers(os::TemporaryFolder(), {os::IsTemporaryName}, 0, false);
    return static_cast<int>(
        std::count_if(leftovers.begin(), leftovers.end(), [&](const os::Leftover& leftover) {
            return leftover.nBytes > 0 && leftover.nAgeSeconds <= age.count();
        }));
} catch (const std::system_error&) {
    return 0; // a folder that cannot be read took no file
}

// A store in memory is known only by its object; one in a file can also be found by the file.
void LeakCheck::Print() const
{
    const os::HeldFiles held = os::FindHeldFiles();
    const std::int64_t nBudget = std::int64_t{CImageObj::ms_ReserveMemory} - CImageObj::AskFreeMemory();
    const int nStores = std::max(PlannedImage::Holding(), held.nOpen);
    const int nFiles = held.nNamed + FilesLeftBehind();
    if (nBudget == 0 && nStores == 0 && nFiles == 0)
        fmt::print(stderr, "  leak check: nothing left\n");
    else
        fmt::print(stderr,
                   "  leak check: budget not given back: {} bytes, stores not destroyed: {}, temporary files "
                   "left: {}\n",
                   nBudget, nStores, nFiles);
}
