// What the tool asks of the system.

#include "../../StandardLibrary.h"
#include "MemoryManager/MemoryManager.h"
#include "pictures/InputFile.h"
#include "report/Tables.h"
#include "schemes/BandLoop.h"
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

#if !defined(_WIN32)
TEST(HostCore, NamesTheFileThatCannotBeClosed)
{
    std::ofstream("in.raw") << "123456";
    InputFile input({"in.raw", Format::Raw48, ImageSize{1, 1}}, {});
    close(static_cast<int>(reinterpret_cast<std::intptr_t>(input.Handle())));
    EXPECT_THAT([&] { input.Close(); }, testing::Throws<Failure>(testing::Field(&Failure::szFile, "in.raw")));
    std::filesystem::remove("in.raw");
}
#endif

// Writing it could take another minute of waiting for memory.
TEST(HostCore, TellsOfShortMemoryWithoutWritingTheBand)
{
    std::vector<unsigned char> in(54 + 12, 7), out(54 + 12, 0);
    ZBT_IMAGE_ON_MEMORY pair{};
    pair.hInImage = in.data();
    pair.hOutImage = out.data();
    pair.nInType = pair.nOutType = MM_DATA_BITMAP32;
    pair.nInWidth = pair.nInHeight = pair.nOutWidth = pair.nOutHeight = 1;
    T_ImgInf inInf{}, outInf{};
    CreateParam(&pair, MM_FORMAT_BGRA32, MM_FORMAT_BGRA32, &inInf, &outInf);
    {
        CImageObj object;
        ASSERT_EQ(DWORD{MM_SUCCESS},
                  ImportImgForUnit(&object, &inInf, &outInf, 0, nullptr, MM_ALIGN_LINES, 0));
        ASSERT_EQ(DWORD{MM_SUCCESS}, MappedBand(object, {0, 0}).Result());
    }
    EXPECT_EQ(std::vector<unsigned char>(12, 0), std::vector<unsigned char>(out.begin() + 54, out.end()));
    LibrarySettings settings;
    settings.szTempDir = os::TemporaryFolder();
    const Library library(settings, false);
    for (const DWORD nCode : {MM_NO_MEMORY, MM_NO_BAND_ADDRESS, MM_EXTERNAL_VIEW, MM_STORE_VIEW})
        EXPECT_THAT([&] { library.CheckRead(nCode, "in"); },
                    testing::Throws<Failure>(testing::Field(&Failure::eStatus, ExitStatus::JobFailed)))
            << nCode;
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
