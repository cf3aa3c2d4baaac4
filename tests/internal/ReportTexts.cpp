// The bytes of every Japanese text, and of the error log's lines.

#include "MemoryManager/base/ReportTexts.h"
#include "../ReportFiles.h"
#include "MemoryManager/ImgObjUty.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "MemoryManager/reports/ProcessNames.h"
#include "Platform/Platform.h"

TEST(ReportTexts, AreCodePage932WhateverCompilerAndLocale)
{
#define CHECK(text, found) EXPECT_EQ(Cp932(reinterpret_cast<const char*>(text)), found);
#define CHECK_TEXT(name, text, english) CHECK(text, name)
#define CHECK_NAME(value, text, english) CHECK(text, FindProcessName(value))
    MM_REPORT_TEXTS(CHECK_TEXT)
    MM_FUNCTION_NAMES(CHECK_NAME) MM_CATEGORY_NAMES(CHECK_NAME) MM_STEP_NAMES(CHECK_NAME)
}

TEST(ErrorLog, HasALineForEachFailureAndOnlyTheLastOfADiskThatIsFull)
{
    const RunFolder folder;
    std::error_code ignored; // outside Windows, folders of these names are the drives
    for (const char* pszDrive : {"c:", "d:", "e:"})
        fs::create_directory(pszDrive, ignored);
    SetErrLogPath("log\\");
    SetLastError(112);
    ReportFileAccessError("MemoryManager/CImageCtrl", 287, 3);
    ReportFileAccessError("MemoryManager/CImageCtrlIO", 156, 38);
    ReportFileAccessError("MemoryManager/CImageObj", 884, 112);
    ReportFileAccessError("MemoryManager/CImageObjIO", 189, 0);
    ReportFileAccessError("MemoryManager/ImgObjUty", 1475, 0xFFFFFFFF);
    EXPECT_EQ(112u, GetLastError()) << "the folder is there already";
    EXPECT_EQ(Expected("error-log.txt"), FileBytes("log/FileAccessErrorLog.txt"));
    SetLastError(112); // reading the files has changed it
    for (const int nCounter : {598, 599})
        ReportFileAccessErrorCounted("MemoryManager/CImageCtrlIO", 402, 112, nCounter);
    EXPECT_EQ(112u, GetLastError()) << "a drive is not";
    const std::string sLog = FileBytes("log/FileAccessErrorLog.txt"), sAnyNumber = "\x94=\\d+";
    EXPECT_EQ(Expected("full-disk-log.txt"), std::regex_replace(sLog, std::regex(sAnyNumber), "\x94=#"));
    SetErrLogPath(std::string(300, 'x').c_str());
    EXPECT_EQ(std::string(259, 'x'), GetErrLogPath());
    SetErrLogPath("..\\logdata\\");
    EXPECT_EQ("..\\logdata\\" + std::string(249, '\0'), std::string(GetErrLogPath(), 260));
}
