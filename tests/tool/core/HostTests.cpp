// What the tool asks of the system.

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
#include <gmock/gmock.h>

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
    constexpr int kMissing = 3, kDenied = 5, kBusy = 32, kFull = 112, kBroken = 1117;
#else
    constexpr int kMissing = ENOENT, kDenied = EACCES, kBusy = EBUSY, kFull = ENOSPC, kBroken = EIO;
#endif
    const std::tuple<int, ExitStatus, const char*> cases[] = {
        {kMissing, ExitStatus::NoRoom, "No such file or directory"},
        {kDenied, ExitStatus::NoRoom, "Permission denied"},
        {kBusy, ExitStatus::NoRoom, "Device or resource busy"},
        {kFull, ExitStatus::NoRoom, "No space left on device"},
        {kBroken, ExitStatus::JobFailed, "Input/output error"},
    };
    for (const auto& [nError, eStatus, pszText] : cases) {
        const std::error_code error(nError, std::system_category());
        EXPECT_EQ(eStatus, StatusOfWriteError(error)) << nError;
        EXPECT_EQ(pszText, ErrorText(error));
    }
}

} // namespace
