#pragma once
// The tool's own process: its beginning, its threads and its memory.

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace os {

/// Readies the process before any file is opened: no file can get the number that means "none", a file-size
/// limit or a closed pipe is an error to report instead of the program's end, and what is written to the
/// standard streams arrives byte for byte.
void PrepareProcess();

/// The program's arguments in UTF-8, without its own name.
/// @param nArguments, ppArguments  those of main; Windows has better ones
std::vector<std::string> Arguments(int nArguments, char** ppArguments);

/// Processors that this process may run on, at least 1.
int ProcessorCount();

/// This process's number.
int ProcessNumber();

/// Whether a process of this number lives.
bool IsRunning(int nProcess);

/// Starts a thread that interrupts never reach, so that they stay the main thread's. Throws std::system_error
/// when the system has no thread left.
std::jthread StartThread(std::function<void(std::stop_token)> fnRun);

/// Memory of the process that is resident now, in bytes; below 0 when unknown.
///
/// Windows does not tell the two apart. There, private memory is what is committed, resident or not, and
/// mapped memory is what else is resident.
struct ResidentMemory
{
    std::int64_t nPrivate = -1; ///< anonymous
    std::int64_t nMapped = -1;  ///< pages of files and of shared memory, the program's own code among them
};

/// Any thread.
ResidentMemory Resident() noexcept;

} // namespace os
