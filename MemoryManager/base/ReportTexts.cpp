// The bytes of the report texts: UTF-8 in ReportTextList.h, code page 932 in memory. A text with a character
// that Cp932.h does not know does not compile: add the character there.

#include "MemoryManager/base/ReportTexts.h"

#include "MemoryManager/base/Cp932.h"

namespace {

#define MM_ENCODE_TEXT(name, text, english) constexpr auto name##Bytes = cp932::Text(text);
MM_REPORT_TEXTS(MM_ENCODE_TEXT)
#undef MM_ENCODE_TEXT

} // namespace

#define MM_DEFINE_TEXT(name, text, english) const char* const name = name##Bytes.data();
MM_REPORT_TEXTS(MM_DEFINE_TEXT)
#undef MM_DEFINE_TEXT
