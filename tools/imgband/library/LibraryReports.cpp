// Filling the library's reports, and having it write them.

#include "library/LibraryReports.h"

#include "library/Glossary.h"
#include "system/Folders.h"
#include "system/LockScope.h"
#include "system/Paths.h"
#include "system/Process.h"
#include "system/Text.h"

#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <memory>

namespace fs = std::filesystem;

namespace {

/// An object that looks like one of the step's images to a report, but has no bytes and no share of the
/// budget.
class StandIn final : public CImageObj
{
public:
    explicit StandIn(const ImagePlan& plan)
    {
        m_ImgInfo = plan.info;
        m_ImgInfo.nBandLines = plan.nBandLines;
        m_nAreaSize = static_cast<LONG>(plan.nCharged);
        m_pImageCtrl = &m_store;
        if (plan.bFile)
            m_store.SetFileHandle(kUnusedHandle);
    }
    // The base class has nothing to give back.
    ~StandIn()
    {
        m_nAreaSize = 0;
        m_pImageCtrl = nullptr;
    }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

private:
    /// Every handle but -1 means that the store has a file. A report asks no more than that.
    static constexpr HANDLE kUnusedHandle = nullptr;

    CImageCtrl m_store;
};

/// Stand-ins for the step's images of one role.
class StandIns
{
public:
    StandIns(const StepPlan& step, ImageRole eRole)
    {
        for (const ImagePlan& plan : step.images)
            if (plan.eRole == eRole)
                m_pointers.push_back(m_images.emplace_back(std::make_unique<StandIn>(plan)).get());
    }
    CImageObj** Pointers() { return m_pointers.data(); }
    int Count() const { return static_cast<int>(m_pointers.size()); }

private:
    std::vector<std::unique_ptr<StandIn>> m_images;
    std::vector<CImageObj*> m_pointers;
};

/// The free budget is nFree bytes for a scope. The lock keeps other threads from planning with it.
class FreeBudget
{
public:
    explicit FreeBudget(LONG nFree) : m_nTaken(CImageObj::AskFreeMemory() - nFree)
    {
        CImageObj::UpdateUseMemory(-m_nTaken);
    }
    ~FreeBudget() { CImageObj::UpdateUseMemory(m_nTaken); }
    FreeBudget(const FreeBudget&) = delete;
    FreeBudget& operator=(const FreeBudget&) = delete;

private:
    os::LockScope m_lock{CImageObj::GetCS()}; // before the budget is read
    LONG m_nTaken;
};

} // namespace

LibraryReports::LibraryReports(const std::string& szFolder) : m_szFolder(szFolder)
{
    CImageObj::ms_WorkList = &m_memory;
    CImageObj::DbgCImgLogInit();
}

// The lists are emptied before they are switched off: the library writes no files for empty ones.
LibraryReports::~LibraryReports()
{
    CImageObj::ms_WorkList = nullptr;
    for (CWorkTableList* pList : {CImageObj::ms_ThreadList, CImageObj::ms_MapList})
        if (pList)
            pList->Destroy();
    CImageObj::DbgCImgLogEnd();
}

void LibraryReports::Enter(int nIpNo, const std::string& szWork)
{
    CImageObj::ThreadList(nIpNo, 0, os::Cp932FromUtf8(szWork).c_str());
}

void LibraryReports::Leave(int nIpNo, const std::string& szWork)
{
    CImageObj::ThreadList(nIpNo, 1, os::Cp932FromUtf8(szWork).c_str());
}

void LibraryReports::NoteMapping(const void* pAddress, const std::string& szName)
{
    CImageObj::MapList(const_cast<void*>(pAddress), os::Cp932FromUtf8(szName).c_str());
}

// The table tells the free budget of the moment, which at the end of a step depends on what was given back by
// then. With the budget that the plan left, a run and its plan tell the same.
void LibraryReports::NoteStep(const StepPlan& step, LONG nBudget)
{
    StandIns in(step, ImageRole::Input), out(step, ImageRole::Output), tmp(step, ImageRole::Temporary);
    tag_MemAlloc request;
    request.nInCnt = in.Count();
    request.nOutCnt = out.Count();
    request.nTmpCnt = tmp.Count();
    request.nIpNo = step.nIpNo;
    const FreeBudget planned(static_cast<LONG>(nBudget - step.nBudget));
    CImageObj::UseMemoryListImg(&request, in.Pointers(), out.Pointers(), tmp.Pointers());
}

std::string LibraryReports::MemoryTable()
{
    return Text(&m_memory);
}

std::string LibraryReports::ThreadList()
{
    return Text(CImageObj::ms_ThreadList);
}

std::string LibraryReports::MappingList()
{
    return Text(CImageObj::ms_MapList);
}

std::optional<int> LibraryReports::MaximumBytes()
{
    const std::string szMaximum = os::Cp932FromUtf8(glossary::kTextMaximum);
    const int nMaximum = m_memory.KeyReadInt(szMaximum.c_str(), szMaximum.c_str(), -1);
    return nMaximum >= 0 ? std::optional(nMaximum) : std::nullopt;
}

std::string LibraryReports::Text(CWorkTableList* pTable) const
{
    if (!pTable)
        return "";
    // The name is that of an error log's folder: other runs remove it if this one is killed now.
    const std::string szName = os::UnusedName(fmt::format("/imgband-{}-", os::ProcessNumber()));
    const auto szPlace = os::LibraryFolder(m_szFolder);
    const bool bWritten = szPlace && pTable->FlushData((*szPlace + szName).c_str()) == 1;
    const fs::path path = os::PathOf(m_szFolder + szName);
    std::ifstream file(path, std::ios::binary);
    const std::string szBytes(std::istreambuf_iterator<char>(file), {});
    file.close(); // on Windows only a closed file can be removed
    std::error_code ignored;
    fs::remove(path, ignored);
    return bWritten ? os::Utf8FromCp932(szBytes) : "";
}
