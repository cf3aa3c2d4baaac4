#pragma once
// Stands before the real header when a copy of the library is compiled for fault tests: every call that can
// fail, and the clock, goes through the fault layer. Plain new names do no harm where other headers use an
// old one.

#include "../../FaultLayer.h"

#define VirtualAlloc FaultyVirtualAlloc
#define VirtualFree FaultyVirtualFree
#define LocalAlloc FaultyLocalAlloc
#define LocalReAlloc FaultyLocalReAlloc
#define LocalFree FaultyLocalFree
#define CreateFileA FaultyCreateFileA
#define ReadFile FaultyReadFile
#define SetFilePointer FaultySetFilePointer
#define GetFileSize FaultyGetFileSize
#define CloseHandle FaultyCloseHandle
#define DeleteFileA FaultyDeleteFileA
#define CreateFileMappingA FaultyCreateFileMappingA
#define MapViewOfFile FaultyMapViewOfFile
#define UnmapViewOfFile FaultyUnmapViewOfFile
#define GetTempPathA FaultyGetTempPathA
#define GetTempFileNameA FaultyGetTempFileNameA
#define FindFirstFileA FaultyFindFirstFileA
#define FindNextFileA FaultyFindNextFileA
#define FindClose FaultyFindClose
#define GetTickCount FaultyGetTickCount
#define Sleep FaultySleep
#define GlobalMemoryStatus FaultyGlobalMemoryStatus
#define CopyToFile FaultyCopyToFile
#define OpenBinaryFile FaultyOpenBinaryFile
#define OpenTextFile FaultyOpenTextFile
