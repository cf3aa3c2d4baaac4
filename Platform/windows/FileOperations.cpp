// The operations for which the Win32 API needs several calls.

#include "Platform/Platform.h"

#include <cstring>

std::FILE* platform::OpenTextFile(const char* pszPath, const char* pszMode)
{
    return std::fopen(pszPath, pszMode);
}

std::FILE* platform::OpenBinaryFile(const char* pszPath, ULONGLONG)
{
    return std::fopen(pszPath, "wb");
}

bool platform::CopyToFile(HANDLE, HANDLE hMap, DWORD nOffset, const void* pSrc, DWORD nBytes, bool bFlush)
{
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    const DWORD nDelta = nOffset % info.dwAllocationGranularity;
    void* pView = MapViewOfFile(hMap, FILE_MAP_ALL_ACCESS, 0, nOffset - nDelta, SIZE_T{nDelta} + nBytes);
    if (!pView)
        return false;
    BYTE* pTarget = static_cast<BYTE*>(pView) + nDelta;
    std::memcpy(pTarget, pSrc, nBytes);
    if (bFlush)
        FlushViewOfFile(pTarget, 0);
    UnmapViewOfFile(pView);
    return true;
}
