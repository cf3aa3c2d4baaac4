#pragma once
// The tables of a report: all of its numbers to the last digit. Each is empty when the report does not have
// it.

#include "page/Markup.h"
#include "page/Node.h"

/// All single values of the run and its settings.
Markup RunTable(const Node& report);

Markup StepTable(const Node& report);
Markup ImageTable(const Node& report);
Markup ThreadTable(const Node& report);
Markup MappingTable(const Node& report);

/// The library's own tables, English beside the Japanese.
Markup LibraryTable(const Node& report);
