// Interrupts on POSIX systems: signals.

#include "system/Interrupts.h"

#include "system/posix/InterruptsHeld.h"

#include <algorithm>
#include <array>

#include <unistd.h>

namespace os {
namespace {

// The last one comes from a mapped picture whose file became shorter, or could not be read.
constexpr int kInterrupts[] = {SIGHUP, SIGINT, SIGTERM, SIGBUS};
constexpr std::size_t kMostArguments = 8;

// What the interrupt handler uses. Everything here is complete before the handler can see it.
std::string g_szProvisional;
std::vector<std::string> g_arguments; // program, command, status, further arguments
std::array<char*, kMostArguments + 1> g_argv;
char g_szStatus[4];

sigset_t InterruptSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int nSignal : kInterrupts)
        sigaddset(&set, nSignal);
    return set;
}

// Only calls that are allowed in a handler. The locks and data of the library's temporary files end with
// this program's image; their empty names are what the new image cleans up.
void OnInterrupt(int nSignal)
{
    if (!g_szProvisional.empty())
        unlink(g_szProvisional.c_str());
    const int nStatus = 128 + nSignal;
    g_szStatus[0] = static_cast<char>('0' + nStatus / 100);
    g_szStatus[1] = static_cast<char>('0' + nStatus / 10 % 10);
    g_szStatus[2] = static_cast<char>('0' + nStatus % 10);
    execv("/proc/self/exe", g_argv.data());
    _exit(nStatus);
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
    g_arguments = {"imgband", szCommand, ""};
    g_arguments.insert(g_arguments.end(), arguments.begin(), arguments.end());
    g_argv.fill(nullptr);
    for (std::size_t i = 0; i < std::min(g_arguments.size(), kMostArguments); ++i)
        g_argv[i] = g_arguments[i].data();
    g_argv[2] = g_szStatus;

    struct sigaction action = {};
    action.sa_handler = OnInterrupt;
    action.sa_mask = InterruptSet();
    for (const int nSignal : kInterrupts) {
        struct sigaction before = {};
        sigaction(nSignal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) // whoever started us wants it ignored: nohup, a background job
            sigaction(nSignal, &action, nullptr);
    }
}

void SettleOutcome() {} // an interrupt stops the only thread that tells

} // namespace os
