#pragma once
// What happens when the user, the system or a damaged file ends a run early.

#include <string>
#include <vector>

namespace os {

/// From here on an interrupt removes the provisional file and starts the program again in place of this run,
/// so that the new run cleans up what this one held. The new run's arguments are the command, this run's exit
/// status, and further arguments.
///
/// Elsewhere than on Windows, an interrupt is a signal: SIGHUP, SIGINT, SIGTERM or SIGBUS (128 + its number).
/// SIGBUS comes when bytes of a mapped file are gone, because it became shorter or its disk failed.
/// On Windows it is Ctrl-C or Ctrl-Break (130) or the console's end (143), and this process waits for the new
/// one for at most four seconds.
///
/// @param arguments  two; on Windows none has a quotation mark or ends with a backslash
void RestartOnInterrupt(const std::string& szCommand, const std::vector<std::string>& arguments);

/// From here on, SIGBUS has an exit status of its own, and adds these arguments to those of an interrupt.
/// Windows does not let a mapped file become shorter: there, nothing changes.
/// @param arguments  two
void RestartOnLostBytes(int nStatus, const std::vector<std::string>& arguments);

/// To be called when the outcome of the run is settled, before it is told. On Windows, where an interrupt has
/// a thread of its own, this never returns once an interrupt has begun, and later ones wait for the program's
/// end.
void SettleOutcome();

} // namespace os
