// Interrupts on POSIX systems: signals.

#include "system/Interrupts.h"

#include "system/posix/InterruptsHeld.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace os {
namespace {

// SIGBUS is not held back: it belongs to the instruction that raised it, on whatever thread.
constexpr int kInterrupts[] = {SIGHUP, SIGINT, SIGTERM};
constexpr std::size_t kMostArguments = 7;
constexpr int kInherited = 1024; // more descriptors than a run has

/// The arguments with which the program is started again.
struct Restart
{
    std::vector<std::string> arguments; // program, command, status, further arguments
    std::array<char*, kMostArguments + 1> argv{};

    void Prepare(std::vector<std::string> list)
    {
        arguments = std::move(list);
        argv.fill(nullptr);
        for (std::size_t i = 0; i < std::min(arguments.size(), kMostArguments); ++i)
            argv[i] = arguments[i].data();
    }
};
constexpr std::size_t kStatus = 2; // of the arguments

// What the handlers use. Everything here is complete before a handler can see it.
std::string g_szProvisional;
Restart g_onInterrupt;
Restart g_onLostBytes;
int g_nLostStatus = 0;

sigset_t InterruptSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int nSignal : kInterrupts)
        sigaddset(&set, nSignal);
    return set;
}

// Only calls that are allowed in a handler. The new program inherits all that is open: temporary files stay
// locked until it has removed their names.
[[noreturn]] void RunAgain(const Restart& restart, int nStatus)
{
    if (!g_szProvisional.empty())
        unlink(g_szProvisional.c_str());
    for (int nFile = 3; nFile < kInherited; ++nFile)
        fcntl(nFile, F_SETFD, 0);
    execv("/proc/self/exe", restart.argv.data());
    _exit(nStatus);
}

void OnInterrupt(int nSignal)
{
    const int nStatus = 128 + nSignal;
    char* pStatus = g_onInterrupt.argv[kStatus];
    pStatus[0] = static_cast<char>('0' + nStatus / 100);
    pStatus[1] = static_cast<char>('0' + nStatus / 10 % 10);
    pStatus[2] = static_cast<char>('0' + nStatus % 10);
    RunAgain(g_onInterrupt, nStatus);
}

void OnLostBytes(int)
{
    RunAgain(g_onLostBytes, g_nLostStatus);
}

void Install(int nSignal, void (*fnHandler)(int))
{
    struct sigaction action = {};
    action.sa_handler = fnHandler;
    action.sa_mask = InterruptSet();
    sigaction(nSignal, &action, nullptr);
}

} // namespace

InterruptsHeld::InterruptsHeld()
{
    const sigset_t set = InterruptSet();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

InterruptsHeld::~InterruptsHeld()
{
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

void InterruptsHeld::SetProvisional(const std::string& szPath) const
{
    g_szProvisional = szPath;
}

void RestartOnInterrupt(const std::string& szCommand, const std::vector<std::string>& arguments)
{
    const InterruptsHeld held;
    std::vector<std::string> list{"imgband", szCommand, "000"};
    list.insert(list.end(), arguments.begin(), arguments.end());
    g_onInterrupt.Prepare(std::move(list));
    for (const int nSignal : kInterrupts) {
        struct sigaction before = {};
        sigaction(nSignal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) // whoever started us wants it ignored: nohup, a background job
            Install(nSignal, OnInterrupt);
    }
    Install(SIGBUS, OnInterrupt);
}

void RestartOnLostBytes(int nStatus, const std::vector<std::string>& arguments)
{
    std::vector<std::string> list = g_onInterrupt.arguments;
    list[kStatus] = std::to_string(nStatus);
    list.insert(list.end(), arguments.begin(), arguments.end());
    g_onLostBytes.Prepare(std::move(list));
    g_nLostStatus = nStatus;
    Install(SIGBUS, OnLostBytes);
}

void SettleOutcome() {} // an interrupt stops the only thread that tells

} // namespace os
