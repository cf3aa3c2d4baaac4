// Every job with every platform call failing in turn, in every way that it can: once, from then on, or some
// times and then fine; and with two faults in one run. Whatever fails, the job ends with the right bytes or a
// documented code, leaves nothing behind, and runs well right afterwards.
//
// A violation names its point. MM_FAULT_POINT=<number> runs just this one, and tells what happens in it.

#include "Runs.h"

#include <gtest/gtest.h>
#include <iostream>
#include <random>

namespace {

using faults::Fault;

constexpr int kPairs = 10000, kPairBase = 500000, kPointBase = 1000000;
constexpr unsigned kSeed = 20;
#ifdef _WIN32
constexpr int kPace = 8; // where files take ten times as long, one point in so many
#else
constexpr int kPace = 1;
#endif

/// The faults of a run's calls, in a fixed order.
std::vector<Fault> PointsOf(const std::vector<const char*>& calls)
{
    std::vector<Fault> points;
    for (int n = 1; n <= int(calls.size()); ++n) {
        const auto pKind =
            std::find_if(std::begin(faults::kKinds), std::end(faults::kKinds), [&](const auto& kind) {
                return std::string_view(kind.pszCall) == calls[std::size_t(n - 1)];
            });
        if (pKind == std::end(faults::kKinds))
            continue; // it cannot fail
        for (int nWay = 0; nWay <= pKind->eLast; ++nWay) {
            if (nWay == faults::kPart && pKind->eLast == faults::kShort)
                continue;
            for (const DWORD nError : pKind->errors) {
                if (nError == 0 || (nWay >= faults::kShort && nError != pKind->errors[0]))
                    continue;
                std::vector<int> times{1, INT_MAX, 3};
                if (nWay >= faults::kShort)
                    times = {INT_MAX};
                else if (nError == ERROR_DISK_FULL)
                    times = {1, INT_MAX, 2, 3, 4, 5, 6, 7, 8, 9, 10, 599};
                for (const int nTimes : times)
                    points.push_back({"", n, nTimes, nError, faults::Way(nWay)});
            }
        }
    }
    return points;
}

std::string Told(const Outcome& got)
{
    std::ostringstream text;
    for (const Fault& fault : got.faults)
        text << "\n    " << fault << ", failed " << fault.nStruck;
    return text.str();
}

class EveryCall : public testing::TestWithParam<std::size_t>
{
public:
    static void TearDownTestSuite()
    {
        std::cout << s_nPoints << " points, " << s_nViolations << " violations\n";
    }

protected:
    static inline int s_nPoints = 0, s_nViolations = 0;
};

} // namespace

TEST_P(EveryCall, FailingLeavesBytesOrACodeAndNothingElse)
{
    const Scenario& scenario = Scenarios()[GetParam()];
    const char* pszOnly = std::getenv("MM_FAULT_POINT");
    const int nBase = int(GetParam() + 1) * kPointBase, nOnly = pszOnly ? std::atoi(pszOnly) : 0;
    if (nOnly > 0 && nOnly / kPointBase * kPointBase != nBase)
        GTEST_SKIP() << "another job's point";
    const Outcome wanted = RunJob(scenario);
    ASSERT_EQ("", Judge(scenario, wanted, wanted)) << "without any fault";

    ASSERT_EQ("", Judge(scenario, wanted, RunJob(scenario))) << "twice";
    const std::vector<Fault> points = PointsOf(wanted.calls);
    const int nSingles = int(points.size()), nPairs = kPairs / int(Scenarios().size()) + 1;
    int nViolations = 0;
    for (int i = 0; i<nSingles + nPairs; i += nOnly> 0 ? 1 : kPace) {
        std::vector<Fault> faults{points[std::size_t(i % nSingles)]};
        int nPoint = nBase + i;
        if (i >= nSingles) {
            nPoint = nBase + kPairBase + i - nSingles;
            std::mt19937 random(kSeed + unsigned(nPoint));
            const auto any = [&] { return points[random() % points.size()]; };
            faults = {any(), any()};
            faults[1].nFirst = faults[0].nFirst + int(random() % 20); // calls that only follow a fault, too
        }
        if (nOnly > 0 && nOnly != nPoint)
            continue;
        const Outcome got = RunJob(scenario, faults);
        ++s_nPoints;
        std::string sWrong = Judge(scenario, wanted, got);
        const Outcome after = RunJob(scenario);
        if (const std::string s = Judge(scenario, wanted, after); !s.empty())
            sWrong += "; afterwards" + s;
        if (nOnly > 0)
            std::cout << "Result " << got.nResult << Told(got) << '\n' << got.sLog;
        if (sWrong.empty())
            continue;
        ++s_nViolations;
        if (++nViolations <= 20)
            ADD_FAILURE() << "MM_FAULT_POINT=" << nPoint << ' ' << scenario.sName << sWrong << Told(got);
    }
    std::cout << "seed " << kSeed << '\n';
}

INSTANTIATE_TEST_SUITE_P(Of, EveryCall, testing::Range(std::size_t{0}, Scenarios().size()),
                         [](const auto& job) { return Scenarios()[job.param].sName; });
