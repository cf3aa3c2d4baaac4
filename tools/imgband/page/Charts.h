#pragma once
// The charts of a report. Each is empty when the report does not have its numbers.

#include "page/Markup.h"
#include "page/Node.h"

/// The patterns that the images are drawn with; once a page, before the first chart.
Markup ImagePatterns(const Node& report);

/// The budget over time: what each image is charged, stacked, the free rest on top, and the ceiling.
Markup BudgetChart(const Node& report);

/// Private and mapped memory over the same time, and the budget beside them.
Markup MemoryChart(const Node& report);

/// Bytes read, written and spilled.
Markup TrafficChart(const Node& report);
