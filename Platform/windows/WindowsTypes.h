#pragma once
// Types and export attributes on Windows: those of the system's own headers.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

// Nothing is marked for export: Platform/windows/exports-*.def tell the linker what the DLL exports.
#define MM_EXPORT
#define MM_IMPORT __declspec(dllimport)
