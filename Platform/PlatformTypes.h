#pragma once
// The type names of the Win32 API that the public headers use, and how a symbol is exported.
//
// LONG and DWORD have 32 bits on every target. Addresses and handles have the machine's width.

#if defined(_WIN32)
#include "Platform/windows/WindowsTypes.h"
#else
#include "Platform/posix/PosixTypes.h"
#endif
