// Setting up unit objects, and blocks and copies of them, while calls fail: codes, log lines, nothing left.

#include "StoreTest.h"
#include <functional>

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
    const std::tuple<tag_E_ACSTYPE, const char*, int, DWORD, int> cases[] = {
        {ACS_FILEIO, "CopyToFile", 1, MM_FILE_ACCESS, 1475},
        {ACS_FILEIO, "CopyToFile", 2, MM_FILE_ACCESS, 1480},
        {ACS_MMF, "MapViewOfFile", 1, MM_FILE_ACCESS, 1490},
        {ACS_MMF, "CreateFileMappingA", 1, MM_NO_MEMORY, 0}};
    m_out.nFileType = MM_FILE_BITMAP;
    for (const auto& [eAccess, pszCall, nFirst, nResult, nLine] : cases)
        for (const bool bPair : {false, true}) {
            m_out.eAcsType = eAccess;
            m_out.hData = OpenHost("");
            faults::Begin({pszCall, nFirst, 1, 112});
            EXPECT_CODE(nResult, Prepare(bPair)) << pszCall;
            faults::Begin();
            const std::string sWanted =
                LogLine("ImgObjUty", nLine, 112) + LogLine("ImgObjUty", bPair ? 852 : 537, 112);
            EXPECT_EQ(nLine > 0 ? sWanted : "", Take("log"));
            CloseHandle(m_out.hData);
        }
    m_out.eAcsType = ACS_MEMORY, m_out.hData = m_block;
    m_in = {MM_FILE_RAW, ACS_MMF, OpenHost(std::string(100, 'x')), 0, 5, 5, 0x401, 0x401, 20};
    const int nHandles = faults::g_alive.nHandles;
    EXPECT_OK(Prepare(false));
    EXPECT_EQ(nHandles + 1, faults::g_alive.nHandles);
    EXPECT_OK(m_image.Destroy()); // a target holds no store
    CImageObj::ExchangeImg(&m_image, &m_reader);
    EXPECT_EQ(nHandles, faults::g_alive.nHandles) << "the target's mapping stays open";
    CloseHandle(m_in.hData);
    m_in = {MM_FILE_RAW, ACS_MMF, OpenHost(""), 0, 5, 5, 0x401, 0x401, 20};
    EXPECT_CODE(MM_NO_MEMORY, Prepare(false)) << "an empty file has no mapping";
    CloseHandle(m_in.hData);
}

TEST_F(UnitFaults, LinesThatCouldNotBeReadAreNeitherWrittenNorHeld)
{
    m_in = {MM_FILE_RAW, ACS_FILEIO, OpenHost(std::string(100, 'x')), 0, 5, 5, 0x401, 0x401, 20};
    T_ImageLrg_tag block{};
    EXPECT_OK(CImageObj::AllcImgBufLrg(&block, 5, 5, 0, 0, 0x401, 0));
    const LONG nFree = CImageObj::AskFreeMemory();
    const auto copy = [&] { return DuplicateImageForUnit(&m_image); };
    const auto map = [&] { return m_image.MapBlock(0, 4, 0, 4, &block); };
    const auto unmap = [&] { return m_image.UnMapBlock(0, 4, 0, 4, &block); };
    const auto copyPair = [&] { return DuplicateImageForUnit(&m_image, &m_reader); };
    const std::tuple<const char*, bool, const char*, DWORD, std::function<DWORD()>> cases[] = {
        {"copy", false, "ReadFile", MM_FILE_ACCESS, copy},
        {"block", false, "ReadFile", MM_FILE_ACCESS, map},
        {"block back", false, "ReadFile", MM_FILE_ACCESS, unmap},
        {"copy of a pair", true, "ReadFile", MM_FILE_ACCESS, copyPair},
        {"no memory for the second band", true, "VirtualAlloc", MM_NO_MEMORY, copyPair}};
    for (const auto& [pszCase, bPair, pszCall, nResult, call] : cases) {
        SCOPED_TRACE(pszCase);
        EXPECT_OK(Prepare(bPair));
        faults::Begin({pszCall, 2});
        EXPECT_CODE(nResult, call());
        EXPECT_EQ(nFree, CImageObj::AskFreeMemory()) << "the band stays held";
        EXPECT_EQ(0, m_block[0]) << "lines that were not read are written";
    }
    CImageObj::FreeImgBufLrg(&block);
    CloseHandle(m_in.hData);
}
