#pragma once
// The parts of a report's page. Each is empty when the report does not have its numbers.

#include "page/Node.h"
#include "page/Palette.h"

/// What ran, how it ended, what went in and came out; then the run's most telling numbers, large.
Markup Headline(const Node& report);

/// What each image is charged over time, one on the other, the free rest on top, and the budget.
Markup BudgetChart(const Node& report, const Palette& palette);

/// Private or mapped memory over the same time.
/// @param szKey     private_bytes or mapped_bytes
/// @param bLimited  the budget limits the bytes, and is drawn as a line
Markup MemoryChart(const Node& report, const std::string& szKey, bool bLimited);

/// A step's images: what each is charged, how it is held, and its band at some moments.
Markup Steps(const Node& report, const Palette& palette);

/// Bytes read, written and spilled.
Markup TrafficBars(const Node& report);

/// Everything in the report except what is drawn over time: to the last digit, folded.
Markup AllNumbers(const Node& report);
