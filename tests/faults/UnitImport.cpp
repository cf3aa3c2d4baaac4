// Setting up unit objects, and blocks and copies of them, while calls fail: codes, log lines, nothing left.

#include "StoreTest.h"

class UnitFaults : public StoreTest
{
protected:
    char m_block[54 + 5 * 5 * 4] = {};
    T_ImgInf m_in{MM_FILE_RAW, ACS_MEMORY, m_block, 0, 5, 5, 0x401, 0x401, 20}, m_out = m_in;
    CImageObj m_reader, m_image;

    DWORD Prepare(bool bPair)
    {
        return bPair ? ImportImgForUnitEnLarge(&m_image, &m_out, &m_reader, &m_in, 0, nullptr, 0)
                     : ImportImgForUnit(&m_image, &m_in, &m_out, 0, nullptr, 0, 0);
    }
};

TEST_F(UnitFaults, SetUpsReportWhatFailed)
{
    // destination's access; call that fails, which of them; result, log lines
    const std::tuple<tag_E_ACSTYPE, const char*, int, DWORD, std::string> cases[] = {
        {ACS_FILEIO, "CopyToFile", 1, 49, "1475"},
        {ACS_FILEIO, "CopyToFile", 2, 49, "1480"},
        {ACS_MMF, "MapViewOfFile", 1, 49, "1490"},
        {ACS_MMF, "CreateFileMappingA", 1, 1, ""}};
    m_out.nFileType = MM_FILE_BITMAP;
    for (const auto& [eAccess, pszCall, nFirst, nResult, sLine] : cases)
        for (const bool bPair : {false, true}) {
            m_out.eAcsType = eAccess;
            m_out.hData = OpenHost("");
            faults::Begin({pszCall, nFirst, 1, 112});
            EXPECT_EQ(nResult, Prepare(bPair)) << pszCall;
            faults::Begin();
            const std::string sUnit = "MemoryManager/ImgObjUty(", sEnd = "):LastError=112\n";
            EXPECT_EQ(sLine.empty() ? "" : sUnit + sLine + sEnd + sUnit + (bPair ? "852" : "537") + sEnd,
                      Take("log"));
            CloseHandle(m_out.hData);
        }
    m_in = {MM_FILE_RAW, ACS_MMF, OpenHost(""), 0, 5, 5, 0x401, 0x401, 20};
    EXPECT_EQ(1u, Prepare(false)) << "an empty file has no mapping";
    CloseHandle(m_in.hData);
}

TEST_F(UnitFaults, LinesThatCouldNotBeReadAreNeitherWrittenNorHeld)
{
    m_in = {MM_FILE_RAW, ACS_FILEIO, OpenHost(std::string(100, 'x')), 0, 5, 5, 0x401, 0x401, 20};
    T_ImageLrg_tag block{};
    EXPECT_EQ(0u, CImageObj::AllcImgBufLrg(&block, 5, 5, 0, 0, 0x401, 0));
    const LONG nFree = CImageObj::AskFreeMemory();
    const auto call = [&](int n) {
        return n == 0   ? DuplicateImageForUnit(&m_image)
               : n == 1 ? m_image.MapBlock(0, 4, 0, 4, &block)
               : n == 2 ? m_image.UnMapBlock(0, 4, 0, 4, &block)
                        : DuplicateImageForUnit(&m_image, &m_reader);
    };
    for (int n = 0; n < 5; ++n) { // the last one has no memory for the second band
        EXPECT_EQ(0u, Prepare(n > 2));
        faults::Begin({n < 4 ? "ReadFile" : "VirtualAlloc", 2});
        EXPECT_EQ(n < 4 ? 49u : 1u, call(n));
        EXPECT_EQ(nFree, CImageObj::AskFreeMemory()) << n;
        EXPECT_EQ(0, m_block[0]) << n;
    }
    CImageObj::FreeImgBufLrg(&block);
    CloseHandle(m_in.hData);
}
