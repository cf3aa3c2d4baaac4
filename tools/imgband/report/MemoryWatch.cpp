// Watching the process's memory.

#include "report/MemoryWatch.h"

#include "report/Seconds.h"

#include <algorithm>
#include <utility>

os::ResidentMemory Larger(os::ResidentMemory a, os::ResidentMemory b)
{
    return {std::max(a.nPrivate, b.nPrivate), std::max(a.nMapped, b.nMapped)};
}

MemoryWatch::MemoryWatch(std::chrono::steady_clock::time_point begin)
    : m_begin(begin), m_watcher(os::StartThread([this](std::stop_token stop) {
          while (!stop.stop_requested()) {
              Look();
              std::this_thread::sleep_for(std::chrono::milliseconds(2));
          }
      }))
{
}

os::ResidentMemory MemoryWatch::Look()
{
    const os::ResidentMemory held = os::Resident();
    const double fSeconds = SecondsBetween(m_begin, std::chrono::steady_clock::now());
    const std::lock_guard lock(m_mutex);
    m_peak = Larger(m_peak, held);
    m_samples.Add({fSeconds, held});
    return held;
}

os::ResidentMemory MemoryWatch::TakePeak()
{
    const os::ResidentMemory now = Look();
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_peak, now); // what is held already counts for the next interval too
}

void MemoryWatch::AddTo(nlohmann::ordered_json& report)
{
    Look();
    const std::lock_guard lock(m_mutex);
    nlohmann::ordered_json samples = nlohmann::ordered_json::array();
    for (const Sample& sample : m_samples.Points())
        if (sample.held.nPrivate >= 0)
            samples.push_back({{"seconds", sample.fSeconds},
                               {"private_bytes", sample.held.nPrivate},
                               {"mapped_bytes", sample.held.nMapped}});
    if (!samples.empty())
        report["memory_over_time"] = std::move(samples);
}
