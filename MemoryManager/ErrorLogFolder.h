#pragma once
// The folder of the file-access error log, FileAccessErrorLog.txt.

#include "MemoryManager/Export.h"

/// Sets the folder that the log is written to. The text is copied and used as a prefix of the file's name, so
/// it ends with a separator; longer texts are cut to 259 characters, and null changes nothing. The library
/// creates the last level of the folder when it writes an entry. Call it before other threads use the
/// library: there is no lock.
MM_API void SetErrLogPath(const char* pszFolder);

/// The folder, "..\logdata\" unless set. The text stays the library's, never moves, and shows what
/// SetErrLogPath sets later.
MM_API const char* GetErrLogPath();
