// The tool's own process on Windows.

#include "system/Process.h"

#include "Platform/PlatformTypes.h"
#include "system/windows/ConsoleMode.h"
#include "system/windows/WideText.h"

#include <algorithm>
#include <bit>
#include <cstdio>

#include <fcntl.h>
#include <io.h>
#include <psapi.h>
#include <shellapi.h>

namespace os {

void PrepareProcess()
{
    SetErrorMode(SEM_FAILCRITICALERRORS); // a drive without a medium is an error to report
    for (std::FILE* pStream : {stdout, stderr})
        _setmode(_fileno(pStream), _O_BINARY);
    ReadyConsole();
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

int ProcessorCount()
{
    DWORD_PTR nOurs = 0, nAll = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &nOurs, &nAll);
    return std::max(std::popcount(nOurs), 1);
}

int ProcessNumber()
{
    return static_cast<int>(GetCurrentProcessId());
}

bool IsRunning(int nProcess)
{
    const HANDLE hProcess = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(nProcess));
    if (!hProcess)
        return GetLastError() == ERROR_ACCESS_DENIED;
    const bool bRuns = WaitForSingleObject(hProcess, 0) == WAIT_TIMEOUT;
    CloseHandle(hProcess);
    return bRuns;
}

ResidentMemory Resident() noexcept
{
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    if (!GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                              sizeof memory))
        return {};
    // Two names of one number; a system may leave either at 0.
    const auto nPrivate = static_cast<std::int64_t>(std::max(memory.PagefileUsage, memory.PrivateUsage));
    const auto nResident = static_cast<std::int64_t>(memory.WorkingSetSize);
    return {nPrivate, std::max<std::int64_t>(nResident - nPrivate, 0)};
}

std::jthread StartThread(std::function<void(std::stop_token)> fnRun)
{
    return std::jthread(std::move(fnRun)); // interrupts have a thread of their own
}

} // namespace os
