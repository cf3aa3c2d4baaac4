#pragma once
// The type names of the Win32 API that the public headers use, and the attributes of exported symbols.
//
// LONG and DWORD have 32 bits on every target. Addresses and handles are as wide as the machine's addresses.

#if defined(_WIN32)
#include "Platform/windows/WindowsTypes.h"
#else
#include "Platform/posix/PosixTypes.h"
#endif
