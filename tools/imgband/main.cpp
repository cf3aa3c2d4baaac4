// The program: runs a subcommand and turns its outcome into messages and the exit status.

#include "Commands.h"
#include "library/LeakCheck.h"
#include "library/Library.h"
#include "pictures/InputFile.h"
#include "report/ReportFile.h"
#include "system/Process.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace {

struct CommandFacts
{
    void (*pRun)(const Options&, Report&);
    bool bUsesLibrary;
};

/// In the order of Command.
constexpr CommandFacts kCommands[] = {{nullptr, false},   {RunMake, true},   {RunInfo, false},
                                      {RunConvert, true}, {RunFilter, true}, {RunEnlarge, true},
                                      {RunPlanned, true}, {RunClean, false}};

const CommandFacts& FactsOf(Command eCommand)
{
    return kCommands[static_cast<int>(eCommand)];
}

ExitStatus RunCommand(const Options& options, Report& report)
{
    try {
        FactsOf(options.eCommand).pRun(options, report);
        report.Succeed();
        return ExitStatus::Done;
    } catch (const Failure& failure) {
        report.Fail(failure);
        return failure.eStatus;
    } catch (const std::exception& e) {
        const Failure failure(ExitStatus::JobFailed, "", e.what());
        report.Fail(failure);
        return failure.eStatus;
    }
}

ExitStatus RunReported(const Options& options)
{
    Report report(options.report, CommandName(options.eCommand), options.run.bPlan);
    return RunCommand(options, report);
}

ExitStatus RunProgram(const std::vector<std::string>& arguments)
{
    Options options;
    try {
        ParseCommandLine(arguments, options);
        CheckReportFiles(options.report.reports, {options.input.szPath, options.output.szPath});
    } catch (const Failure& failure) {
        options.report.reports.clear(); // nothing ran
        Report(options.report, CommandName(options.eCommand), options.run.bPlan).Fail(failure);
        return failure.eStatus;
    }
    if (options.eCommand == Command::None)
        return ExitStatus::Done;
    const LeakCheck leaks;
    const ExitStatus eStatus = RunReported(options);
    if (options.report.bVerbose && FactsOf(options.eCommand).bUsesLibrary)
        leaks.Print();
    return eStatus;
}

/// Does what is left to do for a run that an interrupt ended. Its arguments are told with
/// kInterruptedCommand.
int FinishInterruptedRun(std::vector<std::string> arguments)
{
    arguments.resize(6);
    const int nStatus = std::atoi(arguments[1].c_str());
    CleanUpInterruptedRun(arguments[2]);
    const std::string szMessage =
        arguments[4].empty() ? fmt::format("interrupted by signal {}", nStatus - 128)
                             : InputFile::Lost(arguments[4], std::atoll(arguments[5].c_str())).Message();
    PrintEnded(nStatus, szMessage, arguments[3] == "--json");
    return nStatus;
}

} // namespace

int main(int nArguments, char** ppArguments)
{
    os::PrepareProcess();
    const std::vector<std::string> arguments = os::Arguments(nArguments, ppArguments);
    if (!arguments.empty() && arguments[0] == kInterruptedCommand)
        return FinishInterruptedRun(arguments);
    const ExitStatus eStatus = RunProgram(arguments);
    if (std::fflush(stdout) != 0 && eStatus == ExitStatus::Done) {
        std::fputs("imgband: standard output could not be written\n", stderr);
        return static_cast<int>(ExitStatus::NoRoom);
    }
    return static_cast<int>(eStatus);
}
