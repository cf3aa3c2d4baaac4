#pragma once
// What a host of any compiler sees of the library: records, numbers, and C functions from a DLL of the host's
// own. An image object is an address that only the adapter looks behind.

#include <MemoryManager/ImageRecord.h>
#include <MemoryManager/ResultCodes.h>

class CImageObj;

extern "C" {

/// Sizes the library's budget, in bytes.
void SetBudget(LONG nBytes);

/// An image of four 8-bit samples a pixel, in memory or in a temporary file.
/// @param ppImage  out: to be closed with CloseImage; null after an error
/// @return a code of ResultCodes.h, as from the functions below
DWORD OpenImage(int nWidth, int nHeight, CImageObj** ppImage);

/// Maps the band that starts at a line. pBand then leads to its pixels until UnmapBand.
DWORD MapBand(CImageObj* pImage, int nLine, T_ImageLrg_tag* pBand);
DWORD UnmapBand(CImageObj* pImage);

void CloseImage(CImageObj* pImage);
}
