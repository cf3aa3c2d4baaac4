#pragma once
// The largest pictures that the schemes can hold.

#include "pictures/InputFile.h"
#include "values/RunSettings.h"

#include <string>

/// Throw Failure (BadInput or WrongCommandLine) for a picture that the scheme cannot hold: in its file or
/// block, or in objects.
/// @param nFrame  pixels around a band in the unit scheme
void CheckInputSize(Scheme eScheme, const InputFile& input, int nFrame);
void CheckOutputSize(Scheme eScheme, const std::string& szPath, Format eFormat, ImageSize size, int nFrame);
