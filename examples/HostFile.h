#pragma once
// How the examples open their files. The library takes the system's own handles, and leaves them open. Comes
// before every other header.
#define _FILE_OFFSET_BITS 64 // on 32-bit Linux, files of 2 GiB and more
#include <MemoryManager/MemoryManager.h>

#if defined(_WIN32)

inline HANDLE OpenInput(const char* pszPath)
{
    return CreateFileA(pszPath, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}

inline HANDLE CreateOutput(const char* pszPath)
{
    return CreateFileA(pszPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
}

/// The first bytes of a file; false if there is no such file, or fewer bytes.
inline bool ReadStart(HANDLE hFile, void* pBuffer, DWORD nBytes)
{
    DWORD nRead = 0;
    return hFile && ReadFile(hFile, pBuffer, nBytes, &nRead, nullptr) && nRead == nBytes;
}

#else

#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

inline HANDLE OpenInput(const char* pszPath)
{
    return reinterpret_cast<HANDLE>(std::intptr_t{open(pszPath, O_RDONLY)}); // a file is its descriptor
}

inline HANDLE CreateOutput(const char* pszPath)
{
    return reinterpret_cast<HANDLE>(std::intptr_t{open(pszPath, O_RDWR | O_CREAT | O_TRUNC, 0666)});
}

/// The first bytes of a file; false if there is no such file, or fewer bytes.
inline bool ReadStart(HANDLE hFile, void* pBuffer, DWORD nBytes)
{
    return hFile && pread(static_cast<int>(reinterpret_cast<std::intptr_t>(hFile)), pBuffer, nBytes, 0) ==
                        static_cast<ssize_t>(nBytes);
}

#endif
