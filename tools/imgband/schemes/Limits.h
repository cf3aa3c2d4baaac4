#pragma once
// How large a picture may be.

#include "pictures/InputFile.h"
#include "values/RunSettings.h"

#include <string>

/// Throw Failure (BadInput for the input, WrongCommandLine for the output) when the scheme cannot hold a
/// picture in its file or block, or in objects.
/// @param nFrame  pixels around a band in the unit scheme
void CheckInputSize(Scheme eScheme, const InputFile& input, int nFrame);
void CheckOutputSize(Scheme eScheme, const std::string& szPath, Format eFormat, ImageSize size, int nFrame);
