// The work memory of a processing step, which lies in the work buffers of a table.

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
