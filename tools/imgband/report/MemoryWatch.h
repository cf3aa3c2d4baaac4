#pragma once
// The memory of the process in the course of a run.

#include "report/BoundedSeries.h"
#include "system/Process.h"

#include <chrono>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

/// The larger private memory of both, and the larger mapped memory.
os::ResidentMemory Larger(os::ResidentMemory a, os::ResidentMemory b);

/// Looks at the process's memory every 2 ms, on its own thread. Used by one thread.
class MemoryWatch
{
public:
    /// @param begin  of the run; times count from there
    explicit MemoryWatch(std::chrono::steady_clock::time_point begin);

    /// The largest private and the largest mapped memory since the last call. They may be of different
    /// moments.
    os::ResidentMemory TakePeak();

    /// Adds "memory_over_time" to a report.
    void AddTo(nlohmann::ordered_json& report);

private:
    struct Sample
    {
        double fSeconds;
        os::ResidentMemory held;

        void Merge(const Sample& later) { held = Larger(held, later.held); }
    };

    os::ResidentMemory Look();

    std::chrono::steady_clock::time_point m_begin;
    std::mutex m_mutex; ///< guards peak and samples
    os::ResidentMemory m_peak;
    BoundedSeries<Sample, 512> m_samples;
    std::jthread m_watcher; ///< last: it uses the others
};
