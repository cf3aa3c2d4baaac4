#pragma once
// Names, endings and sizes of the picture formats. Any thread.

#include "values/PictureRequest.h"

#include <cstdint>
#include <optional>
#include <string>

/// Bytes of the header that is written ahead of a bitmap's lines.
inline constexpr std::int64_t kBitmapHeaderBytes = 54;

inline constexpr Format kFormats[] = {Format::Bgr24, Format::Bgra32, Format::Raw48, Format::Raw64};

/// The format's name on the command line and in reports.
const char* FormatName(Format eFormat);

/// The format of a file name's ending with this many samples a pixel; none for an unknown ending.
std::optional<Format> FormatFromEnding(const std::string& szPath, int nSamples);

/// The format that an output is to have. Throws Failure (WrongCommandLine) when neither the request nor the
/// ending of its name tells one.
/// @param nSamples  of a pixel, where only the ending tells
Format ChooseFormat(const OutputRequest& output, int nSamples);

/// Whether files of this format have a bitmap's header; the others have none.
bool IsBitmap(Format eFormat);

/// Whether the tool writes the lines of this format from the bottom up.
bool IsStoredBottomUp(Format eFormat);

/// Samples of a pixel: 3 or 4.
int SampleCount(Format eFormat);

/// Bytes of a sample: 1 or 2.
int SampleBytes(Format eFormat);

/// The library's code (MM_FORMAT_...) of an image with the samples of this format.
int FormatCode(Format eFormat);

/// Bytes of one stored line, padding included.
std::int64_t LineBytes(Format eFormat, int nWidth);

/// Bytes of a whole file as the tool writes it; INT64_MAX when they are more.
std::int64_t FileBytes(Format eFormat, ImageSize size);

/// The library's code of an image object, which has four samples of one or two bytes.
int ObjectFormat(int nSampleBytes);
