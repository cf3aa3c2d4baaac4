// Setting the library up, and putting its results into words.

#include "library/Library.h"

#include "system/Files.h"
#include "system/Folders.h"
#include "system/Interrupts.h"
#include "system/Leftovers.h"
#include "system/Paths.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr LONG kWholeBandCap = 24; // MiB

// MiB. The unit scheme allocates every band anew. A few MiB stay in the processor's caches, and are still
// large enough for pages of 2 MiB.
constexpr LONG kUnitBandCap = 8;

std::string ChooseTemporaryFolder(const LibrarySettings& settings)
{
    const std::string& szFolder = settings.szTempDir;
    std::error_code error;
    if (!std::filesystem::is_directory(os::PathOf(szFolder), error))
        throw Failure(ExitStatus::NoRoom, szFolder, "there is no such folder for temporary files",
                      "--temp-dir DIR");
    if (!os::SetTemporaryFolder(szFolder))
        throw Failure(ExitStatus::NoRoom, szFolder,
                      "the folder for temporary files has characters that the system's code page lacks",
                      "--temp-dir DIR with another name");
    return szFolder;
}

ExitStatus StatusOfSystemError(std::optional<int> nError)
{
    if (!nError)
        return ExitStatus::NoRoom; // the log could not be written for the same reason as the file
    switch (*nError) {
    case 2:   // file not found
    case 3:   // path not found
    case 5:   // access denied
    case 19:  // write-protected medium
    case 39:  // disk full
    case 80:  // file exists
    case 112: // disk full
    case 206: // name too long
    case 223: // file-size limit
        return ExitStatus::NoRoom;
    default:
        return ExitStatus::JobFailed;
    }
}

std::optional<int> SystemErrorOf(const std::optional<LoggedError>& logged)
{
    return logged ? std::optional(logged->nSystemError) : std::nullopt;
}

bool IsFromExternalImage(const std::optional<LoggedError>& logged)
{
    return logged &&
           (logged->szUnit == "MemoryManager/CImageObjIO" || logged->szUnit == "MemoryManager/CImageCtrlIO");
}

} // namespace

Library::Library(const LibrarySettings& settings, bool bJson)
    : m_szTemporaryFolder(ChooseTemporaryFolder(settings)), m_log(os::RuntimeFolder())
{
    os::RestartOnInterrupt(kInterruptedCommand, {m_log.Folder(), bJson ? "--json" : ""});
    SizeBudget(settings);
    CImageObj::ms_nOnMemory = 0; // small images too are held in memory only where the budget has room
    m_nBudget = CImageObj::AskFreeMemory();
    if (const DWORD nCode = CImageCtrl::GetTempDirctoryName())
        Fail(Failure(ExitStatus::NoRoom, m_szTemporaryFolder, "cannot be the folder for temporary files",
                     "--temp-dir DIR with a shorter name"),
             nCode);
    RemoveLeftovers();
}

// Not with the library's own clean-up, which takes every file of this user whose name begins like its own.
void Library::RemoveLeftovers() const
try {
    os::FindLeftovers(m_szTemporaryFolder, {os::IsTemporaryName, os::IsProvisionalName}, os::kSettledSeconds,
                      true);
} catch (const std::system_error&) {
    // A folder that cannot be read keeps them.
}

LibraryFacts Library::Facts(Scheme eScheme) const
{
    const LONG nBandCap =
        eScheme == Scheme::Unit ? CImageObj::ms_nUseMaxMemoryUnit : CImageObj::GetUseMaxBandMemory();
    return {m_nBudget, CImageObj::ms_MaxOneMappingSize, nBandCap, m_szTemporaryFolder};
}

LONG Library::Taken() const
{
    return m_nBudget - CImageObj::AskFreeMemory();
}

void Library::Fail(Failure failure, DWORD nCode) const
{
    failure.libraryResult = LibraryResult{nCode, SystemErrorOf(m_log.LastError())};
    throw failure;
}

void Library::FailTemporary(DWORD nCode, std::int64_t nTemporaryBytes) const
{
    const std::optional<int> nError = SystemErrorOf(m_log.LastError());
    Failure failure(StatusOfSystemError(nError), m_szTemporaryFolder, "a temporary file could not be made",
                    "--temp-dir DIR, or a larger --budget");
    failure.room = Room{static_cast<std::uintmax_t>(nTemporaryBytes),
                        std::min(os::FreeBytes(m_szTemporaryFolder), os::FileSizeLimit())};
    if (!os::MayWrite(m_szTemporaryFolder)) {
        failure.szWhat += ", for there is no permission to write there";
        failure.room.reset();
    }
    Fail(failure, nCode);
}

// A view that could not be made has a code of its own and no entry in the log; other calls leave system
// error 8.
bool Library::IsShortOfMemory(DWORD nCode) const
{
    constexpr int kNotEnoughMemory = 8;
    switch (nCode) {
    case MM_NO_MEMORY:
    case MM_NO_BAND_ADDRESS:
    case MM_STORE_VIEW:
    case MM_EXTERNAL_VIEW:
        return true;
    default:
        return nCode != MM_SUCCESS && SystemErrorOf(m_log.LastError()) == kNotEnoughMemory;
    }
}

void Library::FailForMemory(DWORD nCode, const std::string& szInput) const
{
    Fail(Failure(ExitStatus::JobFailed, szInput, "could not be held in memory", "a smaller --budget"), nCode);
}

void Library::CheckImport(DWORD nCode, const std::string& szInput, std::int64_t nTemporaryBytes,
                          bool bMapped) const
{
    if (bMapped && nCode == MM_IO_BUFFER_ADDRESS) // the view of a band
        FailForMemory(nCode, szInput);
    if (nCode == MM_FILE_ACCESS && !IsShortOfMemory(nCode) && !IsFromExternalImage(m_log.LastError()))
        FailTemporary(nCode, nTemporaryBytes);
    CheckRead(nCode, szInput);
}

void Library::CheckRead(DWORD nCode, const std::string& szInput) const
{
    if (IsShortOfMemory(nCode))
        FailForMemory(nCode, szInput);
    switch (nCode) {
    case MM_SUCCESS:
        return;
    case MM_FILE_ACCESS:
    case MM_NO_MAPPING:
    case MM_IO_BUFFER_ADDRESS:
        Fail(Failure(ExitStatus::BadInput, szInput, "could not be read"), nCode);
    default:
        Fail(Failure(ExitStatus::JobFailed, szInput, "could not be imported"), nCode);
    }
}

void Library::CheckStep(DWORD nCode, const std::string& szStep, std::int64_t nTemporaryBytes) const
{
    if (IsShortOfMemory(nCode))
        Fail(
            Failure(ExitStatus::JobFailed, "", szStep + ": there is not enough memory", "a smaller --budget"),
            nCode);
    if (nCode == MM_FILE_ACCESS)
        FailTemporary(nCode, nTemporaryBytes);
    if (nCode != MM_SUCCESS)
        Fail(Failure(ExitStatus::JobFailed, "", szStep + ": failed"), nCode);
}

void Library::CheckExport(DWORD nCode, const std::string& szOutput, Room room) const
{
    if (nCode == MM_SUCCESS)
        return;
    Failure failure(ExitStatus::JobFailed, szOutput, "could not be written");
    if (IsShortOfMemory(nCode) || nCode == MM_IO_BUFFER_ADDRESS) { // the view of a band
        failure.szWhat += ": there is not enough memory";
        failure.szTry = "a smaller --budget";
    } else if (nCode == MM_FILE_ACCESS) {
        failure.eStatus = StatusOfSystemError(SystemErrorOf(m_log.LastError()));
        failure.room = room;
        failure.szTry = "another folder for OUT";
    }
    // For a mapping that could not be made the log has no system error, or that of a later operation.
    if (failure.eStatus == ExitStatus::JobFailed && room.nAvailable < room.nWanted) {
        failure.eStatus = ExitStatus::NoRoom;
        failure.szWhat = "could not be written";
        failure.room = room;
        failure.szTry = "another folder for OUT";
    }
    Fail(failure, nCode);
}

void Library::CheckBudget(const std::string& szStep, std::int64_t nBytes, const char* pszTry) const
{
    if (nBytes <= m_nBudget)
        return;
    Failure failure(ExitStatus::WrongCommandLine, "", szStep + ": the budget is too small", pszTry);
    failure.room = Room{static_cast<std::uintmax_t>(nBytes), static_cast<std::uintmax_t>(m_nBudget)};
    throw failure;
}

void SizeBudget(const LibrarySettings& settings)
{
    CImageObj::InitBaseMemory(settings.nBudget, settings.nOneMapping);
    CImageObj::SetUseMaxBandMemory(settings.nBandCap ? settings.nBandCap : kWholeBandCap);
    CImageObj::ms_nUseMaxMemoryUnit = (settings.nBandCap ? settings.nBandCap : kUnitBandCap) << 20;
}

void RaiseUnitBandCap(std::int64_t nBytes)
{
    const std::int64_t nCap = std::min<std::int64_t>(nBytes, CImageObj::AskFreeMemory());
    CImageObj::ms_nUseMaxMemoryUnit = std::max(CImageObj::ms_nUseMaxMemoryUnit, static_cast<LONG>(nCap));
}

void CleanUpInterruptedRun(const std::string& szLogFolder)
{
    os::RemoveInheritedNames();
    ErrorLog::Remove(szLogFolder);
}
