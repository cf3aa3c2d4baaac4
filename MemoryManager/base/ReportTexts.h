#pragma once
// The Japanese texts of the library in code page 932, by the names that ReportTextList.h gives them.
//
// Internal. The texts are constants: any thread may use them at any time, and nobody frees them.

#include "MemoryManager/ReportTextList.h"

#define MM_DECLARE_TEXT(name, text, english) extern const char* const name;
MM_REPORT_TEXTS(MM_DECLARE_TEXT)
#undef MM_DECLARE_TEXT
