#pragma once
// Band heights of unit objects: as many lines as the free budget, but at most ms_nUseMaxMemoryUnit bytes, has
// room for.
//
// Internal. The budget is read under the library's lock and not changed: bands are charged when they are
// mapped.

#include "MemoryManager/CImageObj.h"

/// Sets the band height of an object that reads one image and writes another of the same size. The object's
/// margins count. The memory has to hold the band's buffer twice and, unless the source is a block, the
/// band's lines in the destination.
/// @param pOut  the destination; null: the object only reads
/// @return 0; 18 no buffer can have such lines: nothing is set
DWORD CalcUnitBandHeight(CImageObj& object, const T_ImgInf& in, const T_ImgInf* pOut, int nAlign);

/// Sets the band heights of a pair that enlarges or reduces, in the proportion of the images' heights rounded
/// down to whole lines. There are no margins. The memory has to hold both bands' buffers and the band's lines
/// in the destination.
/// @return 0; 18 no buffer can have such lines: nothing is set
DWORD CalcEnlargeBandHeights(CImageObj& inObject, const T_ImgInf& in, CImageObj& outObject,
                             const T_ImgInf& out, int nAlign);
