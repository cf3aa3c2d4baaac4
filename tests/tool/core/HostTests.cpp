// What the tool asks of the system.

#include "../../StandardLibrary.h"
#include "MemoryManager/MemoryManager.h"
#include "report/Tables.h"
#include "system/Files.h"
#include "system/Folders.h"
#include "system/Leftovers.h"
#include "system/Paths.h"
#include "system/Text.h"
#include "values/Failure.h"
#include "values/ProcessIds.h"

#include <cerrno>

namespace {

using std::string;

TEST(HostCore, CountsTheTemporaryFilesThatThisProcessHolds)
{
    CImageCtrl first, second;
    for (CImageCtrl* pStore : {&first, &second})
        ASSERT_EQ(DWORD{MM_SUCCESS}, pStore->Create(200000, 0, 1));
    const os::HeldFiles held = os::FindHeldFiles();
    EXPECT_EQ(2, held.nOpen);
    EXPECT_EQ(2, held.nNamed);
    first.Destroy();
    EXPECT_EQ(1, os::FindHeldFiles().nOpen);
    second.Destroy();
    EXPECT_EQ(0, os::FindHeldFiles().nOpen);
}

TEST(HostCore, PassesTheLibrarysTablesThroughAnyFolderAndLeavesNothingThere)
{
    const string szFolder = os::TemporaryFolder() + "/" + os::UnusedName("\u8868 \u00e9-");
    std::filesystem::create_directory(os::PathOf(szFolder));
    nlohmann::ordered_json report;
    {
        LibraryReports reports(szFolder);
        reports.Enter(kIpOther, "work");
        AddTables(reports, report);
    }
    EXPECT_EQ("work", report["threads"][0]["work"]);
    EXPECT_TRUE(std::filesystem::is_empty(os::PathOf(szFolder)));
    std::filesystem::remove_all(os::PathOf(szFolder));
}

TEST(HostCore, GivesErrorsTheSameMeaningEverywhere)
{
#if defined(_WIN32)
    constexpr int kErrors[] = {3, 5, 32, 112, 1117};
#else
    constexpr int kErrors[] = {ENOENT, EACCES, EBUSY, ENOSPC, EIO};
#endif
    const char* texts[] = {"No such file or directory", "Permission denied", "Device or resource busy",
                           "No space left on device", "Input/output error"};
    for (int i = 0; i < 5; ++i) {
        const std::error_code error(kErrors[i], std::system_category());
        EXPECT_EQ(i < 4 ? ExitStatus::NoRoom : ExitStatus::JobFailed, StatusOfWriteError(error)) << error;
        EXPECT_EQ(texts[i], ErrorText(error));
    }
}

} // namespace
