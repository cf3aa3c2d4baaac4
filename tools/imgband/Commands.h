#pragma once
// The subcommands. Each does its whole job and fills the report, or throws Failure. Called once, by the main
// thread.

#include "Options.h"
#include "report/Report.h"

void RunMake(const Options& options, Report& report);
void RunInfo(const Options& options, Report& report);
void RunConvert(const Options& options, Report& report);
void RunFilter(const Options& options, Report& report);
void RunEnlarge(const Options& options, Report& report);
void RunPlanned(const Options& options, Report& report);
void RunClean(const Options& options, Report& report);
