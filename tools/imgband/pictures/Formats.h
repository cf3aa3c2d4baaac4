#pragma once
// The picture formats that the tool reads and writes.

#include "MemoryManager/MemoryManager.h"

#include <cstdint>
#include <optional>
#include <string>

/// In the order of MM_DATA_TYPE.
enum class Format
{
    Bgr24 = MM_DATA_BITMAP24,  ///< bitmap, three 8-bit samples
    Bgra32 = MM_DATA_BITMAP32, ///< bitmap, four 8-bit samples
    Raw48 = MM_DATA_RAW48,     ///< no header, three 16-bit samples
    Raw64 = MM_DATA_RAW64,     ///< no header, four 16-bit samples
};

/// Width and height in pixels, both above 0.
struct ImageSize
{
    int nWidth;
    int nHeight;
};

/// Bytes of the header that is written ahead of a bitmap's lines.
inline constexpr std::int64_t kBitmapHeaderBytes = 54;

inline constexpr Format kFormats[] = {Format::Bgr24, Format::Bgra32, Format::Raw48, Format::Raw64};

const char* FormatName(Format eFormat);

/// The format of a file name's ending with this many samples a pixel; none for an unknown ending.
std::optional<Format> FormatFromEnding(const std::string& szPath, int nSamples);

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
