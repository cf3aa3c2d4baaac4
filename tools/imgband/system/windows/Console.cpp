// Standard streams on Windows: a console is written to in UTF-16.

#include "system/Console.h"

#include "Platform/PlatformTypes.h"
#include "system/windows/ConsoleMode.h"
#include "system/windows/WideText.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include <io.h>

namespace os {
namespace {

/// The console as it was found.
struct Console
{
    HANDLE hScreen = INVALID_HANDLE_VALUE;
    DWORD nMode = 0;
};
Console g_console;

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

} // namespace

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

void RestoreConsole()
{
    if (g_console.hScreen != INVALID_HANDLE_VALUE)
        SetConsoleMode(g_console.hScreen, g_console.nMode);
}

// The bytes of a character must not reach a console one by one, as an unbuffered stream writes them.
void Print(std::FILE* pStream, const std::string& szText)
{
    constexpr std::size_t kMostChars = 8000; // older systems refuse more than 64 KiB
    if (!ConsoleMode(pStream)) {
        std::fwrite(szText.data(), 1, szText.size(), pStream);
        return;
    }
    const std::wstring szWide = WideText(CP_UTF8, szText);
    for (std::size_t nAt = 0, nChars; nAt < szWide.size(); nAt += nChars) {
        nChars = std::min(szWide.size() - nAt, kMostChars);
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

} // namespace os
