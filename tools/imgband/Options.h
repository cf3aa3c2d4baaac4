#pragma once
// The command line.

#include "pictures/Formats.h"
#include "pixels/EnlargeWork.h"
#include "pixels/FilterWork.h"

#include <cstdint>
#include <optional>
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

/// How the library reaches the external pictures.
enum class Access
{
    File,   ///< reading and writing bands through buffers
    Memory, ///< whole pictures in blocks of the tool
    Mmap,   ///< views of the files
};

/// How a picture goes through the library.
enum class Scheme
{
    Auto,  ///< only while the command line is read
    Whole, ///< as image objects in the budget or in temporary files
    Unit,  ///< band by band from file to file
};

enum class Pattern
{
    Photo,
    Gradient,
    Noise,
};

/// An image of a step that is only planned.
struct StepImage
{
    ImageSize size;
    Format eFormat;
    int nRatio = 100; ///< percent
    int nFrame = 0;   ///< pixels
};

/// A step that is only planned.
struct StepRequest
{
    std::vector<StepImage> inputs;
    std::vector<StepImage> outputs; ///< at most one
    std::vector<StepImage> temporaries;
    int nMaps = 1;    ///< band buffers of each input and temporary
    int nMinBand = 1; ///< lines
};

struct Options
{
    Command eCommand = Command::None;
    std::string szInput;
    std::string szOutput;
    std::optional<Format> eFrom;
    std::optional<Format> eTo;
    std::optional<ImageSize> size; ///< of a raw input, or of what is made

    bool bTurn = false;
    bool bFullRange = true;
    bool bKeepAlpha = true;

    FilterSettings filter{FilterOp::Box, 2, 1, {MM_FRAME_REPLICATE, 0}};

    EnlargeOp eEnlargeOp = EnlargeOp::Linear;
    int nFactor = 1;

    StepRequest step;

    bool bDryRun = false; ///< clean: list, and remove nothing

    Pattern ePattern = Pattern::Photo;
    std::uint64_t nSeed = 1;

    LONG nBudget = 100 << 20;    ///< bytes
    LONG nOneMapping = 32 << 20; ///< bytes
    LONG nBandCap = 0;           ///< MiB; 0: the scheme's own
    std::string szTempDir;       ///< empty: the system's
    Access eAccess = Access::File;
    Scheme eScheme = Scheme::Auto; ///< whole or unit once the command line is read
    bool bPlan = false;            ///< tell what the run would take, and do nothing
    int nThreads = 1;

    std::vector<std::string> reports; ///< files for the run's report, in the form that each ending tells
    std::string szDump;               ///< folder for pictures of the objects of a filter; empty: none

    bool bJson = false;
    bool bQuiet = false;
    bool bVerbose = false;
};

const char* CommandName(Command eCommand);

/// Fills the options. eCommand None: there was only help or the version to print, which is done.
/// Throws Failure (WrongCommandLine); bJson is right even then.
void ParseCommandLine(const std::vector<std::string>& arguments, Options& options);
