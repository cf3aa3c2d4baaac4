#pragma once
// Interrupts on Windows: what the tool's own thread and the one that the system starts for a console's event
// have in common.

#include <filesystem>

namespace os {

/// Interrupts wait for the end of the scope, so that they never see half a change.
class InterruptsHeld
{
public:
    InterruptsHeld();
    ~InterruptsHeld();
    InterruptsHeld(const InterruptsHeld&) = delete;
    InterruptsHeld& operator=(const InterruptsHeld&) = delete;

    /// The file that an interrupt removes; an empty path for none.
    void SetProvisional(std::filesystem::path path) const;
};

} // namespace os
