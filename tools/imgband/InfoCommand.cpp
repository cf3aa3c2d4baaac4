// imgband info: tells what a picture file is.

#include "Commands.h"
#include "pictures/InputFile.h"

#include <fmt/format.h>

void RunInfo(const Options& options, Report& report)
{
    const InputFile input(options.input, options.run);
    const PictureFacts& facts = input.Facts();
    const std::int64_t nLine = LineBytes(facts.eFormat, facts.size.nWidth);
    const char* pszOrder = facts.bBottomUp ? "bottom to top" : "top to bottom";
    report.SetData(fmt::format("{}: {}, {} x {} pixels, {} samples of {} bits\n"
                               "  lines of {} bytes from {}, starting at byte {}\n"
                               "  {} bytes in the file\n",
                               input.Path(), FormatName(facts.eFormat), facts.size.nWidth, facts.size.nHeight,
                               SampleCount(facts.eFormat), 8 * SampleBytes(facts.eFormat), nLine, pszOrder,
                               facts.nOffset, facts.nFileBytes));
    report.Json() = {{"file", input.Path()},
                     {"format", FormatName(facts.eFormat)},
                     {"width", facts.size.nWidth},
                     {"height", facts.size.nHeight},
                     {"samples", SampleCount(facts.eFormat)},
                     {"sample_bits", 8 * SampleBytes(facts.eFormat)},
                     {"bottom_up", facts.bBottomUp},
                     {"line_bytes", nLine},
                     {"pixel_offset", facts.nOffset},
                     {"file_bytes", facts.nFileBytes}};
}
