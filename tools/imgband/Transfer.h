#pragma once
// The steps of a run: a picture goes in, is worked on in bands, and comes out.

#include "ExternalPair.h"
#include "Library.h"
#include "LineConversion.h"
#include "PlannedImage.h"
#include "Report.h"

/// What every step of one run needs.
struct Run
{
    const Options& options;
    const Library& lib;
    Report& report;
    ExternalPair& pair;
};

/// Bytes of an object that holds a picture with margins; none when they do not fit the library's 32 bits.
std::optional<std::int64_t> ObjectBytes(ImageSize size, int nObjectFormat);

/// Whether the library can hold a picture of this format and size: in a file with nOffset bytes ahead, and in
/// an object.
bool FitsLibrary(Format eFormat, ImageSize size, std::int64_t nOffset, int nObjectFormat);

/// Throws Failure (eStatus) with the reason why a picture is refused that the library cannot hold.
[[noreturn]] void FailTooLarge(ExitStatus eStatus, const std::string& szPath, ImageSize size);

/// Imports the input. bReversed: its last stored line becomes the object's first.
void ImportStep(const Run& run, const InputFile& input, PlannedImage& object, bool bReversed);

/// Converts every line of src into dst, which has its geometry and no store yet.
void ConvertStep(const Run& run, PlannedImage& src, PlannedImage& dst, LineFunction pConvert);

/// Exports the object, whose image is gone then, and delivers the output.
/// bOwnAlpha: a fourth sample is the object's own, else opaque.
void ExportStep(const Run& run, OutputFile& output, PlannedImage& object, Format eTo, bool bOwnAlpha);

/// Tells the report how the library is set.
void DescribeLibrary(Report& report, const Library& library);

/// Tells the report what was written.
void DescribePicture(Report& report, const std::string& szPath, Format eFormat, ImageSize size);
