#pragma once
// What the tool's own thread and the one that Windows starts for a console's event have in common.

#include <string>

namespace os {

/// Interrupts wait for the end of the scope, so that they never see half a change. Scopes may be nested.
class InterruptsHeld
{
public:
    InterruptsHeld();
    ~InterruptsHeld();
    InterruptsHeld(const InterruptsHeld&) = delete;
    InterruptsHeld& operator=(const InterruptsHeld&) = delete;

    /// The file that an interrupt removes; an empty path for none.
    void SetProvisional(const std::string& szPath) const;
};

} // namespace os
