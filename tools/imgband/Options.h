#pragma once
// The command line.

#include "EnlargeWork.h"
#include "FilterWork.h"
#include "Formats.h"

#include <cstdint>
#include <optional>
#include <string>

enum class Command
{
    None, ///< help or version was printed, or the command line was refused before one was found
    Make,
    Info,
    Convert,
    Filter,
    Enlarge,
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
    Whole, ///< as image objects in the budget or in temporary files
    Unit,  ///< band by band from file to file
};

enum class Pattern
{
    Photo,
    Gradient,
    Noise,
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

    Pattern ePattern = Pattern::Photo;
    std::uint64_t nSeed = 1;

    LONG nBudget = 100 << 20;    ///< bytes
    LONG nOneMapping = 32 << 20; ///< bytes
    LONG nBandCap = 0;           ///< MiB; 0: the scheme's own
    std::string szTempDir;       ///< empty: the system's
    Access eAccess = Access::File;
    Scheme eScheme = Scheme::Unit;
    bool bPlan = false; ///< tell what the run would take, and do nothing
    int nThreads = 1;

    bool bJson = false;
    bool bQuiet = false;
    bool bVerbose = false;
};

const char* CommandName(Command eCommand);

/// Fills the options. eCommand None: there was only help or the version to print, which is done.
/// Throws Failure (WrongCommandLine); bJson is right even then.
void ParseCommandLine(int nArguments, char** ppArguments, Options& options);
