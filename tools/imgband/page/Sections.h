#pragma once
// The parts of a report's page beside charts and tables. Each is empty when the report does not have its
// numbers.

#include "page/Markup.h"
#include "page/Node.h"

/// What ran, how it ended, what went in and came out.
Markup Headline(const Node& report);

/// The run's most telling numbers, large.
Markup KeyFigures(const Node& report);

/// A bar for each image of each step: its charge against the budget, and how it is held, in words.
Markup ImageBars(const Node& report);

/// Drawings of images with the band that was worked on at some moments.
Markup BandDrawings(const Node& report);

/// "12,000 × 12,000" of whatever has a width and a height.
Markup PixelSize(const Node& image);

/// How an image is held, as "30 bands of 400 lines".
Markup BandWords(const Node& image);
