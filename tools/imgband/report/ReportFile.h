#pragma once
// A report as a file, in the form that the ending of its name tells.

#include "Options.h"

#include <nlohmann/json.hpp>
#include <string>

/// Throws Failure (WrongCommandLine) for a report whose ending tells no form, or that would take the place of
/// the job's own input or output.
void CheckReportFiles(const Options& options);

/// Writes a report (docs/report.md), whose file appears whole or not at all. Throws Failure.
void WriteReportFile(const std::string& szPath, const nlohmann::ordered_json& report);
