#pragma once
// A report as a file. The ending of its name tells its form.

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Throws Failure (WrongCommandLine) when the ending of a report's name tells no form, or when a report would
/// replace one of the job's own pictures.
/// @param pictures  input and output; empty texts where there is none
void CheckReportFiles(const std::vector<std::string>& reports, const std::vector<std::string>& pictures);

/// Writes a report as docs/report.md describes it. Its file appears whole or not at all. Throws Failure.
void WriteReportFile(const std::string& szPath, const nlohmann::ordered_json& report);
