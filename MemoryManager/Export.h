#pragma once
// MM_API marks what the library exports. A host that links the static library defines MM_STATIC; the
// library's own build defines MM_BUILDING.

#include "Platform/PlatformTypes.h"

#if defined(MM_STATIC)
#define MM_API
#elif defined(MM_BUILDING)
#define MM_API MM_EXPORT
#else
#define MM_API MM_IMPORT
#endif
