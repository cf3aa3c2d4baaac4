#pragma once
// The picture formats that the tool reads and writes.

#include "values/PictureRequest.h"

#include <cstdint>
#include <optional>
#include <string>

/// Bytes of the header that is written ahead of a bitmap's lines.
inline constexpr std::int64_t kBitmapHeaderBytes = 54;

inline constexpr Format kFormats[] = {Format::Bgr24, Format::Bgra32, Format::Raw48, Format::Raw64};

const char* FormatName(Format eFormat);

/// The format of a file name's ending with this many samples a pixel; none for an unknown ending.
std::optional<Format> FormatFromEnding(const std::string& szPath, int nSamples);

/// The format that an output is to have. Throws Failure (WrongCommandLine) when neither the request nor the
/// ending of its name tells one.
/// @param nSamples  of a pixel, where only the ending tells
Format ChooseFormat(const OutputRequest& output, int nSamples);

bool IsBitmap(Format eFormat);
int SampleCount(Format eFormat);
int SampleBytes(Format eFormat);

/// The library's code of an image with the samples of this format.
int FormatCode(Format eFormat);

/// Bytes of one stored line, padding included.
std::int64_t LineBytes(Format eFormat, int nWidth);

/// Bytes of a whole file as the tool writes it.
std::int64_t FileBytes(Format eFormat, ImageSize size);

/// The code of an image object with four samples of one or two bytes.
int ObjectFormat(int nSampleBytes);
