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
    ExternalPair& pair;
    const Workers& workers;
    OutputFile* pOutput; ///< null while a run is only planned
};

/// Bytes of an object that holds a picture with margins; none when they do not fit the library's 32 bits.
std::optional<std::int64_t> ObjectBytes(ImageSize size, int nMargin, int nObjectFormat);

/// Whether a scheme can hold a picture of this format and size: in a file or block with nAhead bytes ahead of
/// the lines, and in objects with this many pixels around it.
bool FitsWholeScheme(Format eFormat, ImageSize size, std::int64_t nAhead, int nFrame);
bool FitsUnitScheme(Format eFormat, ImageSize size, std::int64_t nAhead, int nFrame);

/// Throws Failure (eStatus) with the reason why a picture is refused that the scheme cannot hold.
[[noreturn]] void FailTooLarge(Scheme eScheme, ExitStatus eStatus, const std::string& szPath, ImageSize size);

/// Geometry of a picture file, for a plan.
T_ImageLrg_tag PictureInfo(Format eFormat, ImageSize size);

/// Where the bytes of input and output are.
const char* ExternalPlace(Access eAccess);

/// Tells the report how the library is set.
void DescribeLibrary(const RunSettings& settings, const Library& library, Report& report);

/// Tells the report what was written.
void DescribePicture(const std::string& szPath, Format eFormat, ImageSize size, Report& report);
