#pragma once
// MM_API marks what the library exports. MM_STATIC: the library is linked statically.
// MM_BUILDING is defined while the library itself is compiled.

#include "Platform/PlatformTypes.h"

#if defined(MM_STATIC)
#define MM_API
#elif defined(MM_BUILDING)
#define MM_API MM_EXPORT
#else
#define MM_API MM_IMPORT
#endif
