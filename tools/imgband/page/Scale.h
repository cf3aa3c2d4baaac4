#pragma once
// Numbers as a person reads them, alike in every locale: grouped digits, units, and round ticks for axes.

#include <cstdint>
#include <string>
#include <vector>

/// A unit that fits a number.
struct Unit
{
    const char* pszName;
    double fSize; ///< in bytes or seconds
};

/// The largest unit that the amount has at least one of: bytes, KiB, MiB ...
Unit ByteUnit(double fBytes);

/// Seconds, or a smaller unit for what is over quickly.
Unit TimeUnit(double fSeconds);

/// Digits in groups of three.
std::string Grouped(std::int64_t nNumber);
std::string Grouped(double fNumber, int nDecimals);

/// Seconds to the millisecond, short times to the microsecond.
std::string SecondsText(double fSeconds);

/// A part of a whole, as "12.5 %".
std::string ShareText(double fPart, double fWhole);

/// What a key of the report means: "peak_private_bytes" becomes "peak private, bytes".
std::string Words(std::string szKey);

struct Tick
{
    double fValue;
    std::string szLabel; ///< in the unit
};

/// Ticks at 0 and round numbers of the unit up to fMost; about nWanted of them.
std::vector<Tick> RoundTicks(double fMost, const Unit& unit, int nWanted);
