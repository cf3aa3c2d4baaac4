// Interrupts on Windows: events of the console.

#include "system/Interrupts.h"

#include "Platform/PlatformTypes.h"
#include "system/Paths.h"
#include "system/windows/ConsoleMode.h"
#include "system/windows/InterruptsHeld.h"

#include <mutex>
#include <utility>

namespace os {
namespace {

constexpr DWORD kPatienceMs = 4000; // a closed console's processes are ended after five seconds

struct Interruption
{
    std::recursive_mutex mutex;
    std::filesystem::path provisional;
    std::wstring szCommand; ///< program and command
    std::wstring szArguments;
};

// It outlives main, for the system's thread may come at any time.
Interruption& g_interruption = *new Interruption;

/// Has the provisional file vanish with this process, whatever is still mapped of it.
void DeleteAtEnd(const std::filesystem::path& path)
{
    if (!path.empty())
        CreateFileW(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

/// Runs the program again for what is left to do.
void Finish(int nStatus)
{
    std::wstring szLine = g_interruption.szCommand + std::to_wstring(nStatus) + g_interruption.szArguments;
    wchar_t szProgram[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, szProgram, MAX_PATH);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(szProgram, szLine.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP, nullptr,
                       nullptr, &startup, &process))
        WaitForSingleObject(process.hProcess, kPatienceMs);
}

// The mutex stays locked, so that nothing is published any more. The library's temporary files vanish with
// the process.
BOOL WINAPI OnInterrupt(DWORD nEvent)
{
    g_interruption.mutex.lock();
    const int nStatus = nEvent == CTRL_C_EVENT || nEvent == CTRL_BREAK_EVENT ? 130 : 143;
    DeleteAtEnd(g_interruption.provisional);
    Finish(nStatus);
    RestoreConsole();
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(nStatus));
    return TRUE;
}

} // namespace

InterruptsHeld::InterruptsHeld()
{
    g_interruption.mutex.lock();
}

InterruptsHeld::~InterruptsHeld()
{
    g_interruption.mutex.unlock();
}

void InterruptsHeld::SetProvisional(const std::string& szPath) const
{
    g_interruption.provisional = PathOf(szPath);
}

void RestartOnInterrupt(const std::string& szCommand, const std::vector<std::string>& arguments)
{
    const InterruptsHeld held;
    g_interruption.szCommand = L"imgband " + PathOf(szCommand).wstring() + L" ";
    g_interruption.szArguments.clear();
    for (const std::string& szArgument : arguments)
        g_interruption.szArguments += L" \"" + PathOf(szArgument).wstring() + L"\"";
    SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

void RestartOnLostBytes(int, const std::vector<std::string>&) {}

void SettleOutcome()
{
    g_interruption.mutex.lock(); // for good
}

} // namespace os
