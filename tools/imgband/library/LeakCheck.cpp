// Looking for what a run did not give back.

#include "library/LeakCheck.h"

#include "library/PlannedImage.h"
#include "system/Folders.h"
#include "system/Leftovers.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <system_error>

// Those that are closed, but not removed: the library cleaned the folder when the run began. Names without
// bytes are left out, for another process makes them a moment before it locks them.
int LeakCheck::FilesLeftBehind() const
try {
    const auto age = std::chrono::ceil<std::chrono::seconds>(std::chrono::steady_clock::now() - m_begin);
    const std::vector<os::Leftover> leftovers = os::FindLeftovers(os::TemporaryFolder(), false);
    return static_cast<int>(
        std::count_if(leftovers.begin(), leftovers.end(), [&](const os::Leftover& leftover) {
            return leftover.nBytes > 0 && leftover.nAgeSeconds <= age.count();
        }));
} catch (const std::system_error&) {
    return 0; // a folder that cannot be read took no file
}

// A store in memory is known by its object only, one in a file by the file too.
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
