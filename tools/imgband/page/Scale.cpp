// Numbers as a person reads them.

#include "page/Scale.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <string_view>

namespace {

constexpr Unit kBytes[] = {
    {"bytes", 1},    {"KiB", 0x1p10}, {"MiB", 0x1p20}, {"GiB", 0x1p30},
    {"TiB", 0x1p40}, {"PiB", 0x1p50}, {"EiB", 0x1p60},
};
constexpr Unit kSeconds[] = {{"µs", 1e-6}, {"ms", 1e-3}, {"s", 1}};
constexpr double kShortTime = 0.01;

template <std::size_t nUnits> Unit LargestUnit(const Unit (&units)[nUnits], double fAmount)
{
    std::size_t nUnit = nUnits - 1;
    while (nUnit > 0 && units[nUnit].fSize > std::abs(fAmount))
        --nUnit;
    return units[nUnit];
}

/// Puts a comma before every third digit from the end of the whole part.
std::string Grouped(std::string szDigits)
{
    const std::size_t nFirst = szDigits.starts_with('-') ? 1 : 0;
    std::size_t nAt = std::min(szDigits.find('.'), szDigits.size());
    for (; nAt > nFirst + 3; nAt -= 3)
        szDigits.insert(nAt - 3, 1, ',');
    return szDigits;
}

/// The smallest of 1, 2 or 5 times a power of ten that is not below.
double RoundUp(double fNumber)
{
    const double fPower = std::pow(10, std::floor(std::log10(fNumber)));
    for (const double fDigit : {1.0, 2.0, 5.0})
        if (fDigit * fPower >= fNumber)
            return fDigit * fPower;
    return 10 * fPower;
}

} // namespace

Unit ByteUnit(double fBytes)
{
    return LargestUnit(kBytes, fBytes);
}

Unit TimeUnit(double fSeconds)
{
    return LargestUnit(kSeconds, fSeconds * 2); // 0.5 to 1 s stay seconds
}

std::string Grouped(std::int64_t nNumber)
{
    return Grouped(fmt::format("{}", nNumber));
}

std::string Grouped(double fNumber, int nDecimals)
{
    return Grouped(fmt::format("{:.{}f}", fNumber, nDecimals));
}

std::string SecondsText(double fSeconds)
{
    return Grouped(fSeconds, fSeconds == 0 || fSeconds >= kShortTime ? 3 : 6);
}

std::string ShareText(double fPart, double fWhole)
{
    return Grouped(100 * (fPart / fWhole), 1) + " %";
}

std::string Words(std::string szKey)
{
    for (const std::string szUnit : {"_bytes", "_seconds"})
        if (szKey.ends_with(szUnit))
            szKey.insert(szKey.size() - szUnit.size(), 1, ',');
    std::replace(szKey.begin(), szKey.end(), '_', ' ');
    return szKey;
}

std::vector<Tick> RoundTicks(double fMost, const Unit& unit, int nWanted)
{
    const double fMostUnits = fMost / unit.fSize;
    double fStep = RoundUp(fMostUnits / nWanted);
    if (std::string_view(unit.pszName) == kBytes[0].pszName)
        fStep = std::max(fStep, 1.0); // there are no parts of a byte
    const int nDecimals = std::max(0, static_cast<int>(-std::floor(std::log10(fStep) + 1e-9)));
    std::vector<Tick> ticks;
    for (int i = 0; i * fStep <= fMostUnits * (1 + 1e-9); ++i)
        ticks.push_back({i * fStep * unit.fSize, Grouped(i * fStep, nDecimals)});
    return ticks;
}
