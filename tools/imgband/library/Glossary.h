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

/// A report text or the name of a process in English. Numbers that a report filled in stay; texts are put
/// into English too. A text that is not the library's stays as it is.
std::string English(const std::string& szText);

/// The numbers and texts that a report filled into a pattern, in their order; none when the text was not made
/// from the pattern.
std::optional<std::vector<std::string>> FilledIn(const std::string& szPattern, const std::string& szText);

/// The library's name of a process identifier, in UTF-8.
std::string ProcessName(int nIpNo);

} // namespace glossary
