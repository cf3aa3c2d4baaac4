#pragma once
// Pictures of a filter's image objects, to look at.

#include "schemes/Run.h"

/// Writes three files about each object into the folder of --dump, which is made if it is missing. NAME.bmp
/// is the whole buffer with its margins; NAME_WxH.raw and NAME_WxH.bmp are the pixels; NAME is input or
/// output. Lines come in the object's order, which for bitmaps is from the bottom up. Of a 16-bit sample
/// NAME_WxH.bmp shows the upper eight bits, and NAME.bmp the bits 4 to 11, as the library dumps a buffer.
///
/// Both objects stay as they are. What cannot be written is reported on standard error, and the job goes on.
void DumpObjects(const Run& run, CImageObj& input, CImageObj& output);
