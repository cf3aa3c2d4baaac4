#pragma once
// Times of a run as numbers.

#include <chrono>

/// Seconds from one moment to another, in whole microseconds.
inline double SecondsBetween(std::chrono::steady_clock::time_point begin,
                             std::chrono::steady_clock::time_point end)
{
    const auto time = std::chrono::duration_cast<std::chrono::microseconds>(end - begin);
    return static_cast<double>(time.count()) / 1e6;
}
