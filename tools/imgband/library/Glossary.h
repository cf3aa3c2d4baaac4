#pragma once
// The library's report texts in UTF-8, and what they say in English.

#include "MemoryManager/ReportTextList.h"

#include <optional>
#include <string>
#include <vector>

namespace glossary {

/// The report texts, by the names of the library's list; %d and %s stand for what a report fills in.
#define DECLARE_TEXT(name, text, english) extern const std::string name;
MM_REPORT_TEXTS(DECLARE_TEXT)
#undef DECLARE_TEXT

/// What a report text or the name of a process says in English, with the numbers and texts that a report
/// filled in, themselves in English too. A text that is none of the library's stays as it is.
std::string English(const std::string& szText);

/// The numbers and texts that a report filled into a pattern, in their order; none if it is another text.
std::optional<std::vector<std::string>> FilledIn(const std::string& szPattern, const std::string& szText);

/// The library's name of a process identifier.
std::string ProcessName(int nIpNo);

} // namespace glossary
