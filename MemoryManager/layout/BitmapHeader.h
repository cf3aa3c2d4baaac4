#pragma once
// The header that lies ahead of a bitmap's pixels: its bytes, and writing it into a unit object's
// destination.
//
// Internal. No call takes a lock or keeps a handle.

#include "MemoryManager/ExternalImage.h"

#include <array>

using BitmapHeader = std::array<BYTE, MM_BITMAP_HEADER_BYTES>;

/// Both headers of a bitmap with 3 or 4 bytes a pixel and lines from bottom to top. Sizes are unsigned 32-bit
/// numbers; a picture that exceeds them is the caller's to refuse.
BitmapHeader MakeBitmapHeader(int nWidth, int nHeight, int nPixelBytes);

/// Stores a field of nBytes bytes at a position of a header.
void PutHeaderField(BitmapHeader& header, std::size_t nAt, int nBytes, DWORD nValue);

/// Writes the header of a destination of 24 bits a pixel (three samples), else 32: to the start of the block
/// hData or, through the mapping hMap, of the file hData, or to the end of the file hData. ACS_NONE: nothing.
/// @return 0; 49 (logged): the last error is the reason
DWORD WriteBmpHeader(HANDLE hData, int nWidth, int nHeight, int nSamples, tag_E_ACSTYPE eAccess, HANDLE hMap);
