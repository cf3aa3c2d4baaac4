#pragma once
// The unit scheme: bands go straight from file to file.

#include "schemes/Job.h"
#include "schemes/Run.h"

/// Sends the picture through one unit object, or through one that reads and one that writes. A planned run
/// maps every band, but neither reads nor writes it.
void RunUnitScheme(const Run& run, const InputFile& input, const Job& job);
