#pragma once
// Compares long texts and pictures: a failure tells where they differ, not what they hold.

#include "StandardLibrary.h"

inline testing::AssertionResult SameBytes(std::string_view sWanted, std::string_view sGot)
{
    const auto at = std::mismatch(sWanted.begin(), sWanted.end(), sGot.begin(), sGot.end());
    if (at.first == sWanted.end() && at.second == sGot.end())
        return testing::AssertionSuccess();
    const auto byteAt = [](auto place, std::string_view s) {
        return place == s.end() ? "none" : std::to_string(static_cast<unsigned char>(*place));
    };
    return testing::AssertionFailure()
           << "byte " << at.first - sWanted.begin() << " is " << byteAt(at.second, sGot) << ", not "
           << byteAt(at.first, sWanted) << "; " << sGot.size() << " bytes, wanted " << sWanted.size();
}

template <class Byte> std::string_view BytesAt(const Byte* pBytes, std::size_t nBytes)
{
    return {reinterpret_cast<const char*>(pBytes), nBytes};
}
