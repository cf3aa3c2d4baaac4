#pragma once
// Jobs of the library, each run through its public interface from start to end; what a run with faults comes
// to, and the judgement over it.

#include "Job.h"

/// A result that no operation may give: a job has found wrong what a failure had left.
inline constexpr DWORD kBroken = 4712;

struct Scenario
{
    std::string sName;
    std::vector<DWORD> results;    ///< documented besides success
    std::function<void(Job&)> run; ///< throws the result of the operation that failed
    LONG nBudget = 1 << 20;
    bool bSilent = false; ///< what could not be written is missing without a word
};

const std::vector<Scenario>& Scenarios();

struct Outcome
{
    DWORD nResult = MM_SUCCESS, nTicks = 0;
    std::string sBytes, sOutput, sLog, sHost;
    std::size_t nTempFiles = 0;
    LONG nFree = 0;
    bool bReplanned = false;
    faults::Alive alive;
    int nTwice = 0;
    std::vector<faults::Fault> faults;
    std::vector<const char*> calls;

    /// Whether a fault has struck that the predicate picks.
    bool Struck(auto which) const
    {
        return std::any_of(faults.begin(), faults.end(),
                           [&](const faults::Fault& fault) { return fault.nStruck > 0 && which(fault); });
    }
};

/// Runs a job, in a budget of its own, with calls failing.
Outcome RunJob(const Scenario& scenario, std::vector<faults::Fault> faults = {});

/// The one judgement over all runs. Empty: nothing is wrong.
/// @param wanted  the run without faults
std::string Judge(const Scenario& scenario, const Outcome& wanted, const Outcome& got);
