#pragma once
// A report as one page of HTML.

#include <nlohmann/json.hpp>
#include <string>

/// The page of a report (docs/report.md). Whatever the report does not have is left out. Each number of the
/// report that the page shows stands in an element whose attribute data-key is its JSON pointer.
std::string ReportPage(const nlohmann::ordered_json& report);
