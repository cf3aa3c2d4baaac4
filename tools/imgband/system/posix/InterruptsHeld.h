#pragma once
// Holding back interrupts on POSIX systems.

#include <csignal>
#include <string>

namespace os {

/// Interrupts wait for the end of the scope, so that the handler never sees half a change. A thread that is
/// started in the scope never gets any.
class InterruptsHeld
{
public:
    InterruptsHeld();
    ~InterruptsHeld();
    InterruptsHeld(const InterruptsHeld&) = delete;
    InterruptsHeld& operator=(const InterruptsHeld&) = delete;

    /// The file that an interrupt removes; an empty path for none.
    void SetProvisional(const std::string& szPath) const;

private:
    sigset_t m_before;
};

} // namespace os
