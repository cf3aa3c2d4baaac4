#pragma once
// Threads of the tool's own that share the lines of a band.

#include <functional>

/// Objects of the library belong to one thread, but many threads may work on the pixels of a band that it has
/// mapped. A call starts its threads and ends them.
class Workers
{
public:
    /// @param nThreads  at least 1
    explicit Workers(int nThreads);

    int Count() const { return m_nThreads; }

    /// Calls fnLines with ranges [nFirst, nEnd) that cover 0 .. nLines - 1 once, on up to Count() threads,
    /// the caller's among them, and returns when all are done. fnLines must not throw.
    void ForLines(int nLines, const std::function<void(int nFirst, int nEnd)>& fnLines) const;

private:
    int m_nThreads;
};
