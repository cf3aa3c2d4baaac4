#pragma once
// Fixed tables of cases, run through the exported interface: a line with a digest for each.

#include "ReportFiles.h"

std::string FindDigests();

/// Those that every target must find.
inline std::string ExpectedDigests()
{
    return FileBytes(kExpectedFiles / "digests.txt");
}
