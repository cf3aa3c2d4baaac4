#pragma once
// Lines of pixels through the byte shuffle of x86 processors. Other architectures have none of this.
//
// Internal.

#if defined(__x86_64__) || defined(__i386__)
#define MM_HAS_BYTE_SHUFFLE 1

#include "MemoryManager/layout/SampleLines.h"

/// Whether this processor has the instructions.
bool CanShuffle();

/// Follows a rule whose pixels have at most eight bytes, all of them written, as far as whole vectors go.
/// @return pixels done, from the line's start on; the last few are left to the caller
std::size_t ShufflePixels(const PixelRule& rule, unsigned char* pDst, const unsigned char* pSrc,
                          std::size_t nPixels);

#endif
