// Folders on POSIX systems.

#include "system/Folders.h"

#include "system/Errors.h"
#include "system/posix/InterruptsHeld.h"

#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace os {
namespace {

/// The current folder is the same at the end of the scope, even if it has another name then.
class FolderKept
{
public:
    FolderKept() : m_nFolder(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC))
    {
        if (m_nFolder < 0)
            ThrowLastError("open");
    }
    ~FolderKept()
    {
        [[maybe_unused]] const int nResult = fchdir(m_nFolder); // it was entered before
        close(m_nFolder);
    }
    FolderKept(const FolderKept&) = delete;
    FolderKept& operator=(const FolderKept&) = delete;

private:
    int m_nFolder;
};

} // namespace

std::optional<std::string> LibraryFolder(const std::string& szFolder)
{
    return szFolder;
}

std::string TemporaryFolder()
{
    const char* pszFolder = std::getenv("TMPDIR");
    return pszFolder && *pszFolder ? pszFolder : "/tmp";
}

bool SetTemporaryFolder(const std::string& szFolder)
{
    return setenv("TMPDIR", szFolder.c_str(), 1) == 0;
}

std::string RuntimeFolder()
{
    const char* pszOwn = std::getenv("XDG_RUNTIME_DIR");
    for (const char* pszFolder : {pszOwn ? pszOwn : "", "/dev/shm"})
        if (access(pszFolder, W_OK | X_OK) == 0)
            return pszFolder;
    return TemporaryFolder();
}

void RunInFolder(const std::string& szFolder, const std::function<void()>& fnRun)
{
    const InterruptsHeld held;
    const FolderKept kept;
    if (chdir(szFolder.c_str()) != 0)
        ThrowLastError("chdir");
    fnRun();
}

} // namespace os
