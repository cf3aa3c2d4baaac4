// The version of this library.

#include "MemoryManager/Version.h"

const char* MM_GetVersion()
{
    return MM_VERSION;
}
