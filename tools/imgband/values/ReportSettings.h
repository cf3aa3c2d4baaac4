#pragma once
// What a run tells, and where.

#include <string>
#include <vector>

struct ReportSettings
{
    std::vector<std::string> reports; ///< files, each in the form that the ending of its name tells
    bool bJson = false;               ///< one JSON object on standard output
    bool bQuiet = false;              ///< nothing but errors
    bool bVerbose = false;            ///< plan, time and memory of each step too
};
