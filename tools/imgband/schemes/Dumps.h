#pragma once
// Pictures of a filter's image objects for whoever wants to look at them.

#include "schemes/Run.h"

/// Writes three files about each object into the folder of --dump, which is made if it is missing: NAME.bmp,
/// the whole buffer with its margins, NAME_WxH.raw and NAME_WxH.bmp, the pixels; NAME is input and output.
/// Lines come in the objects' order, which for bitmaps is from the bottom up. Of 16-bit samples NAME_WxH.bmp
/// shows the upper eight bits, and NAME.bmp bits 4 to 11, as the library dumps a buffer.
///
/// Both objects stay as they are. What cannot be written is told on standard error, and the job goes on.
void DumpObjects(const Run& run, CImageObj& input, CImageObj& output);
