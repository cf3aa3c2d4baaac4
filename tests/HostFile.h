#pragma once
// A file as a host opens it: by the C library, without a name, unbuffered.

#include "Platform/PlatformTypes.h"
#include "StandardLibrary.h"

#if defined(_WIN32)
#include <io.h>
#define fileno(pFile) _get_osfhandle(_fileno(pFile))

inline std::FILE* OpenNameless() // "D": the file vanishes when it is closed
{
    char szFolder[MAX_PATH], szName[MAX_PATH];
    GetTempPathA(MAX_PATH, szFolder);
    GetTempFileNameA(szFolder, "hst", 0, szName);
    return std::fopen(szName, "w+bD");
}
inline bool SetLength(std::FILE* pFile, std::int64_t nBytes)
{
    return _chsize_s(_fileno(pFile), nBytes) == 0;
}
#else
#include <unistd.h>

inline std::FILE* OpenNameless()
{
    return std::tmpfile();
}
inline bool SetLength(std::FILE* pFile, std::int64_t nBytes)
{
    return ftruncate(fileno(pFile), nBytes) == 0;
}
#endif

struct HostFile
{
    std::FILE* pFile = OpenNameless();

    explicit HostFile(const std::string& s)
    {
        std::setvbuf(pFile, nullptr, _IONBF, 0);
        std::fwrite(s.data(), 1, s.size(), pFile);
    }
    ~HostFile() { std::fclose(pFile); }
    std::string Content() const
    {
        std::string s(1 << 17, '\0');
        std::rewind(pFile);
        s.resize(std::fread(s.data(), 1, s.size(), pFile));
        return s;
    }
    HANDLE Handle() const { return reinterpret_cast<HANDLE>(std::intptr_t{fileno(pFile)}); }
};
