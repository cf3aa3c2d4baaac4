// The version that this library was built with.

#include "MemoryManager/Version.h"

const char* MM_GetVersion()
{
    return MM_VERSION;
}
