#pragma once
// The input or output of a run as an image of a step.

#include "library/StepPlan.h"
#include "values/Picture.h"
#include "values/RunSettings.h"

/// What is known of a picture before a step is planned: its bands and its charge are 0.
ImagePlan ExternalPlan(ImageRole eRole, Format eFormat, ImageSize size, Access eAccess);
