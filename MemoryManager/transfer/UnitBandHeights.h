#pragma once
// Band heights of unit objects: what the free budget, up to ms_nUseMaxMemoryUnit, has room for.
//
// Internal. The budget is read under the library's lock and not changed; nothing is charged here.

#include "MemoryManager/CImageObj.h"

/// Sets the band height of an object that reads one image and writes another of the same size; pOut may be
/// null. Margins are the object's. Twice the band's buffer has to fit and, unless the source is a block, the
/// band's lines in the destination.
/// @return 0; 18 no buffer can have such lines: nothing is set
DWORD CalcUnitBandHeight(CImageObj& object, const T_ImgInf& in, const T_ImgInf* pOut, int nAlign);

/// Sets the band heights of an enlarging (or reducing) pair without margins, in the proportion of the images'
/// heights rounded down to whole lines. Both bands' buffers have to fit, and the lines in the destination.
/// @return 0; 18 no buffer can have such lines: nothing is set
DWORD CalcEnlargeBandHeights(CImageObj& inObject, const T_ImgInf& in, CImageObj& outObject,
                             const T_ImgInf& out, int nAlign);
