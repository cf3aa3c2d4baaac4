#pragma once
// The whole scheme: a picture becomes an object, is worked on in bands, and leaves.

#include "library/PlannedImage.h"
#include "schemes/Job.h"
#include "schemes/Run.h"

/// Import, work and export; a planned run goes the same way with dry objects.
void RunWholeScheme(const Run& run, const InputFile& input, const Job& job);

/// Exports the object, whose image is gone then. bReversed: its last line is the first that is stored.
/// bOwnAlpha: a fourth sample is the object's own, else opaque.
void ExportStep(const Run& run, PlannedImage& object, Format eTo, bool bReversed, bool bOwnAlpha);
