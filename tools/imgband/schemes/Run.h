#pragma once
// What all steps of a run share.

#include "library/Library.h"
#include "pictures/ExternalPair.h"
#include "pixels/Workers.h"
#include "report/Report.h"

struct Run
{
    const RunSettings& settings;
    const Library& lib;
    Report& report;
    Steps steps; ///< of the report
    ExternalPair& pair;
    const Workers& workers;
    OutputFile* pOutput; ///< null while a run is only planned
};
