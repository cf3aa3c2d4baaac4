#pragma once
// A report as a file, in the form that the ending of its name tells.

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Throws Failure (WrongCommandLine) for a report whose ending tells no form, or that would take the place of
/// one of the job's own pictures.
/// @param pictures  input and output; empty texts where there is none
void CheckReportFiles(const std::vector<std::string>& reports, const std::vector<std::string>& pictures);

/// Writes a report (docs/report.md), whose file appears whole or not at all. Throws Failure.
void WriteReportFile(const std::string& szPath, const nlohmann::ordered_json& report);
