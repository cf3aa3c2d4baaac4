#pragma once
// How large a picture may be.

#include "library/Library.h"
#include "pictures/ExternalPair.h"
#include "values/RunSettings.h"

#include <string>

/// Throw Failure (BadInput for the input, WrongCommandLine for the output) when the scheme cannot hold a
/// picture in its file or block, or in objects.
/// @param nFrame  pixels around a band in the unit scheme
void CheckInputSize(Scheme eScheme, const InputFile& input, int nFrame);
void CheckOutputSize(Scheme eScheme, const std::string& szPath, Format eFormat, ImageSize size, int nFrame);

/// The bytes of all blocks. Throws Failure (WrongCommandLine) when the budget has no room for them.
std::int64_t BlocksInBudget(const Library& library, const BlockBytes& blocks);
