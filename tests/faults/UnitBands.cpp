// Unit bands whose platform calls fail: the right bytes in the destination or a failure that is told, a band
// that is written when it is ended once more, and nothing left behind.

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
            codes.second = codes.first == MM_SUCCESS ? image.UnmapBand(0) : DWORD{MM_SUCCESS};
            m_nCalls = faults::g_nCalls;
            faults::Begin();
            const bool bNoBuffer = codes == Codes(MM_NO_MEMORY, MM_SUCCESS) && plan.nFirst == 1;
            EXPECT_EQ(codes != Codes(MM_SUCCESS, MM_SUCCESS) && !bNoBuffer, image.m_ImgInfo.pBase != nullptr);
            EXPECT_OK(image.UnmapBand(0)) << "now it can be written";
            EXPECT_OK(image.UnmapBand(0)) << "and only once";
        }
        EXPECT_EQ(CImageObj::ms_ReserveMemory, CImageObj::AskFreeMemory());
        EXPECT_TRUE(CloseHandle(hIn));
        EXPECT_TRUE(CloseHandle(hOut));
        EXPECT_EQ(faults::Alive{}, faults::g_alive);
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
                // A view that cannot be had is logged only: what it shows is zero, or stays.
                const DWORD nCode = !bFailed                  ? MM_SUCCESS
                                    : sCall == "VirtualAlloc" ? MM_NO_MEMORY
                                    : eAccess == ACS_MMF      ? MM_SUCCESS
                                                              : MM_FILE_ACCESS;
                EXPECT_CODE(nCode, nMapped != MM_SUCCESS ? nMapped : nUnmapped);
                if (!bFailed) {
                    EXPECT_EQ("", m_sLog);
                } else if (nCode == MM_FILE_ACCESS) {
                    EXPECT_THAT(m_sLog, testing::StartsWith("MemoryManager/CImageObj("));
                }
                if (nMapped == MM_SUCCESS && (nUnmapped != MM_SUCCESS || m_sLog.empty())) {
                    EXPECT_THAT(m_sOut, testing::EndsWith(Wanted(sSource)));
                }
            }
}

TEST_F(UnitBandFaults, NeverTouchBytesThatAFileDoesNotHave)
{
    const std::string sShort = Numbered(16 + 6); // one line and two pixels
    const Codes success(MM_SUCCESS, MM_SUCCESS);
    EXPECT_EQ(success, Run(ACS_FILEIO, sShort, {}));
    EXPECT_TRUE(SameBytes(Wanted(sShort), m_sOut)) << "zeros, not the line before";
    EXPECT_EQ("", m_sLog);
    EXPECT_EQ(success, Run(ACS_MMF, sShort, {}));
    EXPECT_TRUE(SameBytes(Wanted(""), m_sOut));
    EXPECT_EQ(LogLine("CImageObj", 610, 38), m_sLog);
#if !defined(_WIN32) // there no file becomes shorter while it is mapped
    EXPECT_EQ(success, Run(ACS_MMF, Numbered(48), {}, 1));
    EXPECT_TRUE(SameBytes(std::string(59, '\0'), m_sOut));
    EXPECT_EQ(LogLine("CImageObj", 810, 38), m_sLog);
#endif
}
