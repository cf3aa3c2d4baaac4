#pragma once
// What a run did not give back.

#include <chrono>

/// Made when a run begins; looks when all of its objects are gone.
class LeakCheck
{
public:
    /// Tells on standard error what of the budget was not given back, which stores of images still exist, and
    /// which temporary files of this run are left.
    void Print() const;

private:
    int FilesLeftBehind() const;

    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};
