#pragma once
// The library's own reports in the report of a run.

#include "library/LibraryReports.h"

#include <nlohmann/json.hpp>
#include <string>

/// Adds "tables", "threads" and "mappings" to a report.
void AddTables(LibraryReports& reports, nlohmann::ordered_json& report);

/// The tables of a report as text: every section and key with its English beside it. When they are empty,
/// because the run used no images or failed before, the text is the report's single values.
std::string TablesText(const nlohmann::ordered_json& report);
