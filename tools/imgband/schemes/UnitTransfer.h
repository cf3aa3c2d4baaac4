#pragma once
// The unit scheme: bands go straight from file to file.

#include "schemes/Job.h"
#include "schemes/Run.h"

/// Sends the picture through one unit object that reads and writes, or through a pair of which one reads and
/// the other writes. A planned run maps every band, but neither reads nor writes it.
void RunUnitScheme(const Run& run, const InputFile& input, const Job& job);
