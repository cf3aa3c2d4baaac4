// Unit bands whose platform calls fail: the right bytes in the destination or a failure that is told, a band
// that is written when it is ended once more, and nothing left behind.

#include "MemoryManager/ResultCodes.h"
#include "StoreTest.h"
#include <utility>

using Codes = std::pair<DWORD, DWORD>; // of mapping and unmapping

class UnitBandFaults : public StoreTest
{
protected:
    // A picture of 3 lines of 5 pixels from a file into a file, 24 to 32 bits, with calls failing as planned.
    // Gives the codes of mapping and unmapping. nMissing: bytes by which a mapped destination is too short.
    auto Run(tag_E_ACSTYPE eAccess, const std::string& sSource, const faults::Plan& plan,
             unsigned nMissing = 0)
    {
        const HANDLE hOut = OpenHost("");
        fs::rename(m_sFolder + "host/file", m_sFolder + "host/out");
        const HANDLE hIn = OpenHost(sSource);
        Codes codes{0, 0};
        {
            CImageObj image;
            T_ImageLrg_tag band{};
            image.m_nUnitMode = image.m_nUnitType = 1;
            image.m_ImgInfo.nWidth = 5;
            image.m_InImgInf = {0, eAccess, hIn, 0, 5, 3, MM_FORMAT_BGR24, 0, 16};
            image.m_OutImgInf = {0, eAccess, hOut, 0, 5, 3, 0, MM_FORMAT_BGRA32, 20};
            if (eAccess == ACS_MMF) {
                image.m_hInMap = CreateFileMappingA(hIn, nullptr, PAGE_READONLY, 0, 0, nullptr);
                image.m_hOutMap = CreateFileMappingA(hOut, nullptr, PAGE_READWRITE, 0, 60, nullptr);
                if (nMissing > 0)
                    fs::resize_file(m_sFolder + "host/out", 60 - nMissing);
            }
            faults::Begin(plan);
            codes.first = image.MapBandRange(0, 2, &band, 0);
            codes.second = codes.first == 0 ? image.UnmapBand(0) : 0;
            m_nCalls = faults::g_nCalls;
            faults::Begin();
            const bool bNoBuffer = codes.first == 1 && plan.nFirst == 1;
            EXPECT_EQ((codes.first | codes.second) != 0 && !bNoBuffer, image.m_ImgInfo.pBase != nullptr);
            EXPECT_EQ(0u, image.UnmapBand(0)) << "now it can be written";
            EXPECT_EQ(0u, image.UnmapBand(0)) << "and only once";
        }
        EXPECT_EQ(CImageObj::ms_ReserveMemory, CImageObj::AskFreeMemory());
        EXPECT_TRUE(CloseHandle(hIn) && CloseHandle(hOut));
        EXPECT_EQ(0, faults::g_nBlocks | faults::g_nViews | faults::g_nHandles);
        fs::remove(m_sFolder + "host/file");
        m_sOut = Take("host");
        m_sLog = Take("log");
        return codes;
    }
    // The 32-bit picture that sSource becomes; what the source lacks is zero.
    static std::string Wanted(const std::string& sSource)
    {
        std::string s;
        for (std::size_t n = 0; n < 15; ++n)
            s += (sSource + std::string(48, '\0')).substr(n / 5 * 16 + n % 5 * 3, 3) + '\xFF';
        return s;
    }
    std::string m_sOut, m_sLog;
    int m_nCalls = 0;
};

TEST_F(UnitBandFaults, EndWithTheRightBytesOrTellOfIt)
{
    const std::string sSource = Numbered(48);
    for (const auto eAccess : {ACS_MMF, ACS_FILEIO})
        for (const std::string sCall : {"VirtualAlloc", "ReadFile", "SetFilePointer", "MapViewOfFile",
                                        "GetFileSize", "CopyToFile", "CreateFileMappingA"})
            for (auto [n, bFailed] = std::pair(1, true); bFailed; ++n) {
                SCOPED_TRACE(testing::Message() << eAccess << " " << sCall << " " << n);
                const auto [nMapped, nUnmapped] = Run(eAccess, sSource, {sCall, n});
                bFailed = m_nCalls >= n;
                const DWORD nCode = sCall == "VirtualAlloc" ? 1 : eAccess == ACS_MMF ? 0 : 49;
                EXPECT_EQ(bFailed ? nCode : 0, nMapped | nUnmapped);
                EXPECT_TRUE(bFailed || m_sLog.empty());
                EXPECT_EQ(bFailed && nCode == 49, nCode == 49 && m_sLog.find("CImageObj(") == 14);
                if (nMapped == 0 && (nUnmapped != 0 || m_sLog.empty())) {
                    EXPECT_TRUE(m_sOut.ends_with(Wanted(sSource)));
                }
            }
}

TEST_F(UnitBandFaults, NeverTouchBytesThatAFileDoesNotHave)
{
    const std::string sShort = Numbered(16 + 6); // one line and two pixels
    EXPECT_EQ(Codes(0, 0), Run(ACS_FILEIO, sShort, {}));
    EXPECT_TRUE(m_sOut == Wanted(sShort) && m_sLog.empty()) << "zeros, not the line before";
    EXPECT_EQ(Codes(0, 0), Run(ACS_MMF, sShort, {}));
    EXPECT_TRUE(m_sOut == Wanted("") && m_sLog == "MemoryManager/CImageObj(610):LastError=38\n") << m_sLog;
#if !defined(_WIN32) // there no file becomes shorter while it is mapped
    EXPECT_EQ(Codes(0, 0), Run(ACS_MMF, Numbered(48), {}, 1));
    EXPECT_TRUE(m_sOut == std::string(59, '\0') && m_sLog == "MemoryManager/CImageObj(810):LastError=38\n")
        << m_sLog;
#endif
}
