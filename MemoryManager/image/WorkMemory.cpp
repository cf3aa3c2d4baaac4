// A step's work memory: the work buffers of a table, allocated and released with the codes of an image
// operation.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/ResultCodes.h"

DWORD CImageObj::AllocWorkMem(CWorkTableList* pTable)
{
    return pTable && pTable->AllocWorkTable() ? MM_SUCCESS : MM_NO_MEMORY;
}

void CImageObj::ReleaseWorkMem(CWorkTableList* pTable)
{
    if (pTable)
        pTable->List_Free();
}
