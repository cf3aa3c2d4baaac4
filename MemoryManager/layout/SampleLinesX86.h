#pragma once
// Converts lines with the byte shuffle of x86 processors. On other architectures this header declares
// nothing.
//
// Internal.

#if defined(__x86_64__) || defined(__i386__)
#define MM_HAS_BYTE_SHUFFLE 1

#include "MemoryManager/layout/SampleLines.h"

/// Whether this processor has the instructions.
bool CanShuffle();

/// Converts a line's pixels as far as whole vectors can be loaded and stored. The rule's pixels have at most
/// eight bytes, and all bytes of a destination pixel are written.
/// @return pixels converted, from the line's start on; the others are left to the caller
std::size_t ShufflePixels(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc,
                          std::size_t nPixels);

#endif
