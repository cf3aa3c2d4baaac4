#pragma once
// Types and export attributes on Windows: the system's own.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

// Platform/windows/exports-*.def alone tell the linker what the DLL exports.
#define MM_EXPORT
#define MM_IMPORT __declspec(dllimport)
