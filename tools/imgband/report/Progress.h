#pragma once
// The line on a terminal that shows how far a step is.

#include <chrono>
#include <cstdint>
#include <string>

/// Draws on standard error, at most ten times a second; a silent one draws nothing.
class Progress
{
public:
    /// Clears the terminal's line.
    static constexpr const char* kWipe = "\r\033[K";

    explicit Progress(bool bSilent) : m_bSilent(bSilent) {}
    ~Progress() { Wipe(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Begins a step and shows its name. A step that expects no bands shows no more.
    void Begin(const std::string& szStep);

    /// The step's bands, and the bytes of all of them together. Call this before the first Advance.
    void Expect(int nBands, std::int64_t nBytes);

    /// One more band is done.
    void Advance();

    /// Clears the line, so that other text can be written.
    void Wipe();

private:
    void Draw(const std::string& szText);

    bool m_bSilent;
    bool m_bDrawn = false;
    std::string m_szStep;
    int m_nBands = 0;
    int m_nDone = 0;
    std::int64_t m_nBytes = 0; ///< of all bands
    std::chrono::steady_clock::time_point m_begin;
    std::chrono::steady_clock::time_point m_lastDrawn;
};
