#pragma once
// Every Japanese text of the library, in code page 932; the table with its meanings is in ReportTexts.cpp.
//
// Internal. The texts are constants: any thread may use them at any time, and nobody frees them.

/// Labels of the disk-space lines in the file-access error log; a byte count follows each.
extern const char* const kTextDiskForCaller;
extern const char* const kTextDiskTotal;
extern const char* const kTextDiskFree;

/// First entry of an import and of an export in the host's log stack.
extern const char* const kTextImport;
extern const char* const kTextExport;
