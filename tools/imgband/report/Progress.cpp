// Drawing the progress line.

#include "report/Progress.h"

#include "system/Console.h"

#include <cstdio>
#include <fmt/format.h>

namespace {

constexpr auto kPause = std::chrono::milliseconds(100);

} // namespace

void Progress::Begin(const std::string& szStep)
{
    m_szStep = szStep;
    Draw(szStep);
}

void Progress::Expect(int nBands, std::int64_t nBytes)
{
    m_nBands = nBands;
    m_nDone = 0;
    m_nBytes = nBytes;
    m_begin = std::chrono::steady_clock::now();
}

void Progress::Advance()
{
    ++m_nDone;
    const auto now = std::chrono::steady_clock::now();
    const double fSeconds = std::chrono::duration<double>(now - m_begin).count();
    const double fPart = double(m_nDone) / m_nBands;
    const double fRate = fSeconds > 0 ? fPart * double(m_nBytes) / fSeconds / 1e6 : 0;
    Draw(fmt::format("{}: {} of {} bands, {:.0f} MB/s, {:.0f} s left", m_szStep, m_nDone, m_nBands, fRate,
                     fSeconds / fPart - fSeconds));
}

void Progress::Wipe()
{
    if (m_bDrawn)
        os::Print(stderr, kWipe);
    m_bDrawn = false;
}

void Progress::Draw(const std::string& szText)
{
    const auto now = std::chrono::steady_clock::now();
    if (m_bSilent || now - m_lastDrawn < kPause)
        return;
    os::Print(stderr, kWipe + szText);
    m_lastDrawn = now;
    m_bDrawn = true;
}
