// The console and its interrupts on Windows.

#include "system/windows/Interrupts.h"

#include "system/Files.h"
#include "system/Paths.h"
#include "system/windows/Text.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

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

/// The console as it was found.
struct Console
{
    HANDLE hScreen = INVALID_HANDLE_VALUE;
    DWORD nMode = 0;
};
Console g_console;

void RestoreConsole()
{
    if (g_console.hScreen != INVALID_HANDLE_VALUE)
        SetConsoleMode(g_console.hScreen, g_console.nMode);
}

HANDLE HandleOf(std::FILE* pStream)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(pStream)));
}

/// The mode of the console that a stream goes to; none for a file or pipe.
std::optional<DWORD> ConsoleMode(std::FILE* pStream)
{
    DWORD nMode = 0;
    return GetConsoleMode(HandleOf(pStream), &nMode) ? std::optional(nMode) : std::nullopt;
}

void ReadyConsole()
{
    if (!ConsoleMode(stdout) && !ConsoleMode(stderr))
        return;
    g_console.hScreen = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    GetConsoleMode(g_console.hScreen, &g_console.nMode);
    std::atexit(RestoreConsole);
    SetConsoleMode(g_console.hScreen, g_console.nMode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

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

// The mutex stays taken: nothing is published any more. The library's temporary files vanish with the
// process.
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

void InterruptsHeld::SetProvisional(std::filesystem::path path) const
{
    g_interruption.provisional = std::move(path);
}

void PrepareProcess()
{
    SetErrorMode(SEM_FAILCRITICALERRORS); // a drive without a medium is an error to report
    for (std::FILE* pStream : {stdout, stderr})
        _setmode(_fileno(pStream), _O_BINARY);
    ReadyConsole();
}

// The bytes of a character must not reach a console one by one, as an unbuffered stream writes them.
void Print(std::FILE* pStream, const std::string& szText)
{
    constexpr std::size_t kMostAtOnce = 8000; // older systems refuse more than 64 KiB
    if (!ConsoleMode(pStream)) {
        std::fwrite(szText.data(), 1, szText.size(), pStream);
        return;
    }
    const std::wstring szWide = WideText(CP_UTF8, szText);
    for (std::size_t nAt = 0, nChars; nAt < szWide.size(); nAt += nChars) {
        nChars = std::min(szWide.size() - nAt, kMostAtOnce);
        if (nAt + nChars < szWide.size() &&
            IS_HIGH_SURROGATE(szWide[nAt + nChars - 1])) // its other half comes next
            --nChars;
        WriteConsoleW(HandleOf(pStream), szWide.data() + nAt, static_cast<DWORD>(nChars), nullptr, nullptr);
    }
}

bool IsTerminal(std::FILE* pStream)
{
    return ConsoleMode(pStream).value_or(0) & ENABLE_VIRTUAL_TERMINAL_PROCESSING;
}

std::vector<std::string> Arguments(int, char**)
{
    int nArguments = 0;
    wchar_t** ppArguments = CommandLineToArgvW(GetCommandLineW(), &nArguments);
    std::vector<std::string> arguments;
    for (int i = 1; i < nArguments; ++i)
        arguments.push_back(NarrowText(CP_UTF8, ppArguments[i]));
    LocalFree(ppArguments);
    return arguments;
}

void SettleOutcome()
{
    g_interruption.mutex.lock(); // for good
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

} // namespace os
