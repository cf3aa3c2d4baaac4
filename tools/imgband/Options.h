#pragma once
// The command line.

#include "values/EnlargeSettings.h"
#include "values/FilterSettings.h"
#include "values/PictureRequest.h"
#include "values/ReportSettings.h"
#include "values/RunSettings.h"
#include "values/SceneSettings.h"
#include "values/StepRequest.h"

#include <string>
#include <vector>

enum class Command
{
    None, ///< help or version was printed, or the command line was refused before one was found
    Make,
    Info,
    Convert,
    Filter,
    Enlarge,
    Plan,
    Clean,
};

struct ConvertSettings
{
    bool bTurn = false;     ///< by 180 degrees
    bool bFullRange = true; ///< samples of another width are scaled; else they keep their values
    bool bKeepAlpha = true; ///< else the fourth sample becomes opaque
};

/// What the user asked for. A command uses only its own part.
struct Options
{
    Command eCommand = Command::None;
    InputRequest input;
    OutputRequest output;
    SceneSettings scene;
    ConvertSettings convert;
    FilterSettings filter;
    EnlargeSettings enlarge;
    StepRequest step;
    bool bDryRun = false;   ///< clean: list, and remove nothing
    bool bYoungToo = false; ///< clean: also what is younger than an hour
    RunSettings run;
    ReportSettings report;
};

/// The command's name on the command line; empty for None.
const char* CommandName(Command eCommand);

/// Fills the options. With eCommand None there was only help or the version to print, which is done.
///
/// @param arguments  in UTF-8, without the program's name
/// @param options    default ones, which are changed; report.bJson is right even when this throws
/// Throws Failure (WrongCommandLine).
void ParseCommandLine(const std::vector<std::string>& arguments, Options& options);
