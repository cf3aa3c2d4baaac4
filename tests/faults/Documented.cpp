// What is documented to the letter of failing calls: the result, the lines in the error log, how often a call
// is tried and for how long.

#include "Runs.h"

#include "../ResultChecks.h"

namespace {

// A job; the call that fails, the first of its kind that does, how many do (0: from then on), the error; the
// result; how often the call is made and for how many milliseconds the job waits (-: not of interest, none);
// unit and line of the log's entries, and a counter behind the last entry of a write that is tried again. The
// jobs of stores end a band that was not written once more.
constexpr char kCases[] = R"(
StoreFile_pg GetTempFileNameA 1 1 112 49 - - CImageCtrl(287)
StoreFile_pg CreateFileA 1 1 112 49 - - CImageCtrl(303)
StoreFile_pg CreateFileMappingA 1 1 112 49 - - CImageCtrl(322)
StoreFile_pg MapViewOfFile 3 1 5 69 3 -
StoreFile_pg MapViewOfFile 1 0 5 69 1 -
StoreFile_pg MapViewOfFile 1 0 8 69 6000 60000
StoreFile_pg UnmapViewOfFile 2 1 5 81 - -
StoreFileMade_pwgcg MapViewOfFile 4 1 5 65 - -
StoreFile_pmg MapViewOfFile 4 1 5 66 - -
Store_pg VirtualAlloc 1 1 8 1 1 -
StoreMade_pcg GetTempFileNameA 1 1 112 49 - - CImageCtrl(1005)
StoreMade_pcg CreateFileA 1 1 112 49 - - CImageCtrl(1019)
StoreMade_pcg GetFileSize 1 1 6 49 - - CImageCtrl(1026)
StoreMade_pcg CreateFileMappingA 1 1 112 49 - - CImageCtrl(1026)
StoreMade_pcg CopyToFile 1 1 112 49 - - CImageCtrl(1026)
StoreMade_pcg CreateFileA 2 1 5 49 - - CImageCtrl(1043)
StoreMade_pcg CreateFileMappingA 2 1 112 49 - - CImageCtrl(1057)
FlatBands GetTempFileNameA 1 1 112 49 - - CImageCtrl(842)
FlatBands CreateFileA 1 1 112 49 - - CImageCtrl(856)
FlatBands CopyToFile 1 1 112 49 - - CImageCtrl(872)
FlatBands CreateFileA 2 1 5 49 - - CImageCtrl(889)
FlatBands CreateFileMappingA 2 1 112 49 - - CImageCtrl(907)
ExternalInputMappedWhole CreateFileMappingA 1 1 5 49 - - CImageCtrl(322)
ExternalInputMappedWhole MapViewOfFile 1 1 5 68 - -
ExternalInputMappedWhole UnmapViewOfFile 1 1 5 82 - -
ExternalInputFileIoWhole VirtualAlloc 2 1 8 1 2 -
ExternalInputFileIoWhole ReadFile 1 1 5 49 - - CImageCtrlIO(156)
ExternalInputFileIoBands ReadFile 3 1 5 69 - -
ExternalOutputFileIoBands CopyToFile 1 599 112 0 602 59900 CImageCtrlIO(402),counter=598
ExternalOutputFileIoBands CopyToFile 1 601 112 0 604 60100 CImageCtrlIO(402),counter=0
ExternalOutputFileIoBands CopyToFile 1 0 112 49 1200 120000 CImageCtrlIO(402),counter=599
ExternalOutputFileIoBands CopyToFile 1 0 5 49 20 2000 CImageCtrlIO(402),counter=540
ExternalOutputFileIoBands GetFileSize 1 0 6 49 20 2000 CImageCtrlIO(402),counter=540
ExternalOutputFileIoBands GetFileSize 2 1 6 0 4 100 CImageCtrlIO(402),counter=0
ExternalOutputFileIoWhole CopyToFile 1 0 5 49 20 2000 CImageCtrlIO(402),counter=540
ExternalOutputFileIoWhole CopyToFile 2 9 5 0 12 900 CImageCtrlIO(402),counter=480
TransferBitmapFileIoBands CopyToFile 2 0 112 49 601 60000 CImageCtrlIO(402),counter=599
TransferBitmapFileIoBands ReadFile 1 1 5 49 - - CImageObjIO(189)
TransferBitmapFileIoBands CopyToFile 1 1 112 49 - - CImageObjIO(199)
UnitCopyBitmapFileIoFileIoBands SetFilePointer 1 1 6 0 - - CImageObj(720)
UnitCopyBitmapFileIoFileIoBands SetFilePointer 2 1 6 49 - - CImageObj(655)
UnitCopyBitmapFileIoFileIoBands SetFilePointer 3 1 6 49 - - CImageObj(862)
UnitCopyBitmapFileIoFileIoBands ReadFile 2 1 5 49 - - CImageObj(668)
UnitCopyBitmapFileIoFileIoBands VirtualAlloc 2 1 87 1 - -
UnitCopyBitmapFileIoFileIoBands CopyToFile 1 1 112 49 - - ImgObjUty(1475) ImgObjUty(537)
ReaderPairFileIoFileIoBands CopyToFile 2 1 112 49 - - ImgObjUty(1480) ImgObjUty(852)
UnitCopyBitmapFileIoFileIoBands CopyToFile 3 1 112 49 - - CImageObj(884)
UnitCopyBitmapMappedMappedBands CreateFileMappingA 1 1 112 1 - -
UnitCopyBitmapMappedMappedBands CreateFileMappingA 2 1 112 1 - -
UnitCopyBitmapMappedMappedBands MapViewOfFile 1 1 5 49 - - ImgObjUty(1490) ImgObjUty(537)
UnitCopyBitmapMappedMappedBands MapViewOfFile 2 1 5 0 - - CImageObj(610)
UnitCopyBitmapMappedMappedBands MapViewOfFile 3 1 5 0 - - CImageObj(810)
OneBuffer VirtualAlloc 1 5999 8 0 6000 59990
OneBuffer VirtualAlloc 1 0 8 1 6000 60000
OneBuffer VirtualAlloc 1 0 87 1 1 -
WorkBuffers VirtualAlloc 1 0 8 1 6000 60000
WorkBuffers VirtualFree 1 1 87 1 - -
BaseBuffers VirtualAlloc 2 0 8 1 6001 60000
SilentCleanUp GetTempPathA 1 1 3 18 - -
)";

} // namespace

TEST(FailingCalls, AreAnsweredAsDocumented)
{
    std::istringstream cases(kCases + 1);
    for (std::string sCase; std::getline(cases, sCase);) {
        SCOPED_TRACE(sCase);
        std::istringstream fields(sCase);
        std::string sJob, sCall, sCalls, sWaited, sEntry, sLog;
        faults::Fault fault;
        DWORD nResult = 0;
        fields >> sJob >> sCall >> fault.nFirst >> fault.nTimes >> fault.nError >> nResult >> sCalls >>
            sWaited;
        fault.sCall = sCall;
        fault.nTimes = fault.nTimes == 0 ? INT_MAX : fault.nTimes;
        const std::string sError = ":LastError=" + std::to_string(fault.nError);
        while (fields >> sEntry)
            sLog += "MemoryManager/" + sEntry.insert(sEntry.find(')') + 1, sError) + '\n';
        const auto job = std::find_if(Scenarios().begin(), Scenarios().end(),
                                      [&](const Scenario& scenario) { return scenario.sName == sJob; });
        ASSERT_NE(Scenarios().end(), job);

        const Outcome got = RunJob(*job, {fault});
        EXPECT_EQ("", Judge(*job, RunJob(*job), got));
        EXPECT_CODE(nResult, got.nResult);
        EXPECT_EQ(sLog,
                  got.sLog.substr(0, got.sLog.find("c:"))); // a counted entry is followed by the disks' space
        EXPECT_EQ(sCalls, sCalls == "-"
                              ? "-"
                              : std::to_string(std::count(got.calls.begin(), got.calls.end(), sCall)));
        EXPECT_EQ(sWaited == "-" ? 0u : DWORD(std::stoi(sWaited)), got.nTicks);
    }
}
