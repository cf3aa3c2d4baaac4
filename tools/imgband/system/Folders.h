#pragma once
// The folders that a run works in.
//
// The main thread uses this, before it starts others.

#include <functional>
#include <optional>
#include <string>

namespace os {

/// The name by which the library is told of a folder that exists. On Windows it is in the system's code page:
/// none if the folder has no such name, not even a short one.
std::optional<std::string> LibraryFolder(const std::string& szFolder);

/// The folder of the library's temporary files.
std::string TemporaryFolder();

/// Sets the folder of the library's temporary files, before the library is used. Returns whether the library
/// can be told of it.
bool SetTemporaryFolder(const std::string& szFolder);

/// A folder for small private files of the run: one in memory, so that a full disk can still be reported and
/// a killed run leaves nothing in the temporary folder. On Windows it is the user's own temporary folder.
/// Where there is none that the library can be told of, it is the temporary folder.
std::string RuntimeFolder();

/// Runs a function while a folder is the current one. Interrupts wait until the former one is current again,
/// because the relative paths that they need start there.
/// Throws std::system_error when the folder cannot be entered, and whatever the function throws.
void RunInFolder(const std::string& szFolder, const std::function<void()>& fnRun);

} // namespace os
