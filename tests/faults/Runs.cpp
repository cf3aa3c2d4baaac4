// One run of a job with faults, and the judgement over it.

#include "Runs.h"

#include <new>

using faults::Fault;

// The library asks for its own objects without exceptions; only there memory can be short.
void* operator new(std::size_t nBytes, const std::nothrow_t&) noexcept
{
    return faults::Struck("operator new") ? nullptr : ::operator new(nBytes);
}

void* operator new[](std::size_t nBytes, const std::nothrow_t&) noexcept
{
    return faults::Struck("operator new") ? nullptr : ::operator new[](nBytes);
}

namespace {

/// The next bytes; empty at the end.
std::string Hex(std::string::const_iterator at, std::string::const_iterator end)
{
    std::ostringstream text;
    for (int n = 0; n < 6 && at != end; ++n, ++at)
        text << ' ' << std::hex << int(static_cast<unsigned char>(*at));
    return text.str();
}

} // namespace

Outcome RunJob(const Scenario& scenario, std::vector<Fault> faults)
{
    Outcome out;
    CImageObj::ms_nOnMemory = 0;
    CImageObj::InitBaseMemory(scenario.nBudget, scenario.nBudget);
    *Opened<CImageCtrl>::ms_TempDirctoryName = '\0';
    {
        Job job(Home());
        faults::Begin(std::move(faults));
        try {
            scenario.run(job);
        } catch (DWORD nResult) {
            out.nResult = nResult;
        }
        faults::g_bOn = false;
        job.Close();
        out.sBytes = job.sBytes + job.sOutput;
        out.sOutput = job.sOutput;
        out.bReplanned = job.bReplanned;
        out.sHost = job.bHarmed ? "the host's bytes" : job.nHandlesLost > 0 ? "the host's file" : "";
    }
    out.faults = faults::g_faults;
    out.calls = faults::g_calls;
    out.nTicks = faults::g_nTicks;
    out.nTwice = faults::g_nTwice;
    out.alive = std::exchange(faults::g_alive, {});
    out.nFree = CImageObj::AskFreeMemory();
    const fs::directory_iterator temp(faults::g_sTemp);
    out.nTempFiles = std::size_t(std::distance(begin(temp), end(temp)));
    Home().Take("temp");
    out.sLog = Home().Take("log");
    return out;
}

std::string Judge(const Scenario& scenario, const Outcome& wanted, const Outcome& got)
{
    std::ostringstream wrong;
    const auto struck = [&](std::string_view sCall) {
        return got.Struck([=](const Fault& fault) { return fault.sCall == sCall; });
    };
    const auto logs = [&](const char* pszText) { return got.sLog.find(pszText) != std::string::npos; };
    const bool bStruck = got.Struck([](const Fault&) { return true; }), bLogFails = struck("OpenTextFile");
    const bool bShort = got.Struck([](const Fault& fault) { return fault.nError == 8; });
    const bool bEnded = got.Struck([](const Fault& fault) { return fault.eWay >= faults::kShort; });
    // Only then the library closes a host's file.
    const bool bHostClosed = struck("CreateFileMappingA") && got.sHost == "the host's file";

    const auto& results = scenario.results;
    const bool bDone = got.nResult == MM_SUCCESS;
    if (!bDone && (!bStruck || std::find(results.begin(), results.end(), got.nResult) == results.end()))
        wrong << "; result " << got.nResult << ": " << MM_ResultText(got.nResult);
    // Of a file that ends early, and of a view that a unit band does without, zeros are left. What a job that
    // failed has not written is as it was.
    const bool bZeros = !bDone || bEnded || bLogFails || logs("CImageObj(610)") || logs("CImageObj(810)");
    const std::string &sWanted = bDone ? wanted.sBytes : wanted.sOutput,
                      &sGot = bDone ? got.sBytes : got.sOutput;
    const auto at =
        std::mismatch(sWanted.begin(), sWanted.end(), sGot.begin(), sGot.end(),
                      [&](char a, char b) { return a == b || (bZeros && b == 0) || (!bDone && b == 'x'); });
    if (!(scenario.bSilent && bStruck) && (at.second != sGot.end() || (bDone && at.first != sWanted.end())))
        wrong << "; from byte " << at.first - sWanted.begin() << " on " << Hex(at.second, sGot.end())
              << ", not " << Hex(at.first, sWanted.end());
    // A plan that is made once more has less: charges of stores that could not be made are dropped.
    if (got.nFree > scenario.nBudget || (got.nFree < scenario.nBudget && !got.bReplanned))
        wrong << "; budget " << got.nFree << " of " << scenario.nBudget;
    if (!got.sHost.empty() && !bHostClosed)
        wrong << "; harmed: " << got.sHost;
    if (got.alive != faults::Alive{} && !bHostClosed)
        wrong << "; left: " << got.alive;
    if (got.nTwice > 0 && !struck("VirtualFree")) // a table keeps a block that could not be released
        wrong << "; " << got.nTwice << " released twice";
    if (got.nTempFiles > wanted.nTempFiles && !struck("DeleteFileA"))
        wrong << "; " << got.nTempFiles << " temporary files";
    if ((got.nResult == MM_FILE_ACCESS && got.sLog.empty() && !bLogFails) || (!bStruck && !got.sLog.empty()))
        wrong << "; log \"" << got.sLog << '"';
    static const std::regex entry("MemoryManager/[A-Za-z]+\\([0-9]+\\):LastError=([0-9]+)(,counter=[0-9]+)?");
    std::istringstream log(got.sLog);
    for (std::string sLine; std::getline(log, sLine);) {
        std::smatch parts;
        const DWORD nError = std::regex_match(sLine, parts, entry) ? DWORD(std::stoi(parts[1])) : 0;
        // Some follow from a fault: of a file that was closed, of one whose length is not known or too short.
        const bool bFollows = nError == 38 || nError == 3 || bEnded || (nError == 6 && bHostClosed) ||
                              (nError == 5 && struck("GetFileSize"));
        if (!bFollows && !got.Struck([&](const Fault& fault) { return fault.nError == nError; }))
            wrong << "; log line " << sLine;
        if (logs("counter="))
            break; // what follows tells of disks
    }
    if (got.nTicks > 0 && !bShort && !bLogFails && !logs("counter="))
        wrong << "; " << got.nTicks << " ms waited";
    return wrong.str();
}
