#pragma once
// The planning of an import or export without the transfer.

#include "library/PlannedImage.h"

/// Plan a dry object and the external image as ImportImg and ExportImg do, and have the object note the plan.
/// No pixel and no file is touched, and the external image's charge is given back.
/// @return a code of the library
DWORD PlanImport(PlannedImage& object, const T_ImgInf& inf, bool bReversed);
DWORD PlanExport(PlannedImage& object, const T_ImgInf& inf);
