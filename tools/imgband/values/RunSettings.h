#pragma once
// How a run goes about its work, whatever the work is.

#include "MemoryManager/MemoryManager.h"

#include <string>

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

/// What the library is set up with.
struct LibrarySettings
{
    LONG nBudget = 100 << 20;    ///< bytes
    LONG nOneMapping = 32 << 20; ///< bytes
    LONG nBandCap = 0;           ///< MiB; 0: the scheme's own
    std::string szTempDir;       ///< for temporary files
};

struct RunSettings
{
    LibrarySettings library;
    Access eAccess = Access::File;
    Scheme eScheme = Scheme::Auto;
    int nThreads = 1;   ///< that share the lines of a band; at least 1
    bool bPlan = false; ///< tell what the run would take, and do nothing
    std::string szDump; ///< folder for pictures of a filter's objects; empty: none
};
