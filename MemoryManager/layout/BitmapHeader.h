#pragma once
// The header that lies ahead of a bitmap's pixels: its bytes, and how they get into an external image.
//
// Internal. Any thread; no call takes a lock or keeps a handle.

#include "MemoryManager/ExternalImage.h"

#include <array>

using BitmapHeader = std::array<BYTE, MM_BITMAP_HEADER_BYTES>;

/// The file header and the info header of a bitmap with 3 or 4 bytes a pixel whose lines are stored from
/// bottom to top. Its size fields are unsigned 32-bit numbers: the caller refuses a picture that exceeds
/// them.
BitmapHeader MakeBitmapHeader(int nWidth, int nHeight, int nPixelBytes);

/// Stores the low nBytes bytes of a value at position nAt of a header.
void PutHeaderField(BitmapHeader& header, std::size_t nAt, int nBytes, DWORD nValue);

/// Writes the header of a bitmap with 24 bits a pixel for three samples, and 32 for any other number.
/// @param eAccess  where it goes: ACS_MEMORY the start of the block hData; ACS_MMF the start of the file
///                 hData, through its mapping hMap; ACS_FILEIO the end of the file hData; ACS_NONE nowhere
/// @return 0; 49 (logged), with the reason as last error
DWORD WriteBmpHeader(HANDLE hData, int nWidth, int nHeight, int nSamples, tag_E_ACSTYPE eAccess, HANDLE hMap);
