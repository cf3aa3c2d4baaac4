#pragma once
// Exact division of many numbers by the same divisor, without a division instruction.

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

/// Divides by multiplying with a rounded-up reciprocal of as many bits as Number has.
///
/// With m = (2^s + e) / n, 0 <= e < n, and x = q n + r: x m / 2^s = q + (r + x e / 2^s) / n, whose whole part
/// is q as long as x e < 2^s, since r is at most n - 1.
template <class Number> class Reciprocal
{
    static_assert(sizeof(Number) == 2 || sizeof(Number) == 4);

public:
    /// @param nDivisor  at least 2, and a Number
    explicit constexpr Reciprocal(std::uint32_t nDivisor)
        : m_nShift((static_cast<int>(std::bit_width(nDivisor - 1)) - 1) & (kBits - 1)),
          m_nFactor(static_cast<Number>((Power() + nDivisor - 1) / nDivisor)),
          m_nError(std::uint64_t{m_nFactor} * nDivisor - Power())
    {
    }

    /// Whether every number up to nLargest is divided exactly.
    constexpr bool IsExact(std::uint64_t nLargest) const
    {
        return nLargest <= std::numeric_limits<Number>::max() &&
               (m_nError == 0 || nLargest <= (Power() - 1) / m_nError);
    }

    /// The whole part of nNumber / nDivisor, where IsExact says so.
    constexpr Number Divide(Number nNumber) const
    {
        const Number nHigh = static_cast<Number>((Wide{nNumber} * m_nFactor) >> kBits);
        return static_cast<Number>(nHigh >> m_nShift);
    }

private:
    static constexpr int kBits = std::numeric_limits<Number>::digits;
    using Wide = std::conditional_t<sizeof(Number) == 2, std::uint32_t, std::uint64_t>;

    constexpr std::uint64_t Power() const { return std::uint64_t{1} << (kBits + m_nShift); }

    int m_nShift; ///< masked, so that the compiler knows its range and need not widen vectors of numbers
    Number m_nFactor;
    std::uint64_t m_nError; ///< e: factor * divisor - 2^(kBits + shift)
};
