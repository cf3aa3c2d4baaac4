// imgband convert: a picture file becomes one of another format.

#include "Commands.h"
#include "Transfer.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

Format ChooseFormat(const Options& options, const PictureFacts& facts)
{
    const std::optional<Format> eFormat =
        options.eTo ? options.eTo : FormatFromEnding(options.szOutput, SampleCount(facts.eFormat));
    if (!eFormat)
        throw Failure(ExitStatus::WrongCommandLine, options.szOutput, "the name's ending tells no format",
                      "--to FORMAT");
    return *eFormat;
}

/// How a picture gets from one format to the other.
///
/// The import widens samples and keeps their values, and both transfers drop or add a fourth sample and
/// reverse the order of lines. Whatever changes a sample or the order of pixels in a line is left to a step
/// of its own between them.
struct Route
{
    Route(const Options& options, const PictureFacts& facts, Format eTo)
    {
        const int nFrom = SampleBytes(facts.eFormat);
        const int nTo = SampleBytes(eTo);
        const int nImported = options.bFullRange ? nFrom : std::max(nFrom, nTo);
        objects = {ObjectFormat(nImported), ObjectFormat(nTo)};
        if (nImported != nTo || options.bTurn)
            pConvert = ChooseLineFunction(nImported, nTo, options.bFullRange, options.bTurn);
        bReversed = facts.bBottomUp != options.bTurn;
        bOwnAlpha = options.bKeepAlpha && SampleCount(facts.eFormat) == 4;
    }

    ObjectFormats objects;
    LineFunction pConvert = nullptr; ///< null: no step between import and export
    bool bReversed;                  ///< the input's last stored line comes first
    bool bOwnAlpha;                  ///< the fourth sample is carried through
};

} // namespace

void RunConvert(const Options& options, Report& report)
{
    const InputFile input(options);
    const PictureFacts& facts = input.Facts();
    const Format eTo = ChooseFormat(options, facts);
    const Route route(options, facts, eTo);
    if (!FitsLibrary(facts.eFormat, facts.size, facts.nOffset, route.objects.nInput) ||
        !FitsLibrary(eTo, facts.size, 0, route.objects.nOutput))
        FailTooLarge(ExitStatus::BadInput, options.szInput, facts.size);

    const Library library(options);
    DescribeLibrary(report, library);
    OutputFile output(options.szOutput);
    output.CheckRoom(FileBytes(eTo, facts.size));
    ExternalPair pair(options.eAccess, &input, output, eTo, facts.size, route.objects);
    const Run run{options, library, report, pair};

    PlannedImage object;
    ImportStep(run, input, object, route.bReversed);
    if (route.pConvert) {
        PlannedImage converted;
        library.CheckStep(converted.SetGeometry(facts.size.nWidth, facts.size.nHeight, route.objects.nOutput),
                          "set-up", 0);
        ConvertStep(run, object, converted, route.pConvert);
        ExportStep(run, output, converted, eTo, route.bOwnAlpha);
    } else {
        ExportStep(run, output, object, eTo, route.bOwnAlpha);
    }
    output.Publish();

    DescribePicture(report, options.szOutput, eTo, facts.size);
}
