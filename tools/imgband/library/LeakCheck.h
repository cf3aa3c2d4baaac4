#pragma once
// What a run did not give back.

#include <chrono>

/// Made when a run begins, and asked when all of its objects are gone.
class LeakCheck
{
public:
    /// Tells on standard error how much of the budget was not given back, how many stores of images still
    /// exist, and how many temporary files of this run are left.
    void Print() const;

private:
    int FilesLeftBehind() const;

    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};
