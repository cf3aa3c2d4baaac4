#pragma once
// The fixture of tests that look at stores, dumps and folders themselves.

#include "../ResultChecks.h"
#include "Job.h"
#include "MemoryManager/base/PlatformHelpers.h"

inline constexpr int kBytes = 299997, kBand = kBytes / 3, kPicture = kHeader + kBytes;
inline const std::string kImage = Numbered(kBytes);

class StoreTest : public testing::Test
{
protected:
    StoreTest()
    {
        faults::Begin();
        CImageObj::ms_nOnMemory = 12 << 20;
        CImageObj::InitBaseMemory(100 << 20, 32 << 20);
        *m_pszTemp = '\0';
    }
    ~StoreTest() override
    {
        faults::g_bOn = false;
        for (const char* pszFolder : {"temp", "tmp", "log", "logdata/trace"})
            m_home.Take(pszFolder);
        EXPECT_EQ(faults::Alive{}, std::exchange(faults::g_alive, {}));
    }

    const Sandbox& m_home = Home();
    Job m_job{m_home};
    char* m_pszTemp = Opened<CImageCtrl>::ms_TempDirctoryName;
};

/// What the error log holds after one failure.
inline std::string LogLine(const char* pszUnit, int nLine, DWORD nError)
{
    return std::string("MemoryManager/") + pszUnit + '(' + std::to_string(nLine) +
           "):LastError=" + std::to_string(nError) + '\n';
}
