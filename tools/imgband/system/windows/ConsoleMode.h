#pragma once
// The console that the process writes to, which belongs to other processes too.

namespace os {

/// Has the console take escape sequences, where a standard stream goes to one. The end of the program
/// restores it.
void ReadyConsole();

/// Gives the console back as it was found. For an end of the process that runs no destructors.
void RestoreConsole();

} // namespace os
