#pragma once
// The whole scheme: a picture becomes an object, is worked on in bands, and leaves.

#include "library/PlannedImage.h"
#include "schemes/Job.h"
#include "schemes/Run.h"

/// Import, work and export. A planned run goes the same way with dry objects.
void RunWholeScheme(const Run& run, const InputFile& input, const Job& job);

/// Exports the object. Its image is gone then.
/// @param bReversed  the object's last line is stored first
/// @param bOwnAlpha  a fourth sample is the object's own; else it is opaque
void ExportStep(const Run& run, PlannedImage& object, Format eTo, bool bReversed, bool bOwnAlpha);
