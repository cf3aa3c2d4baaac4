#pragma once
// Choices that a test makes: the same in every run.

#include "../StandardLibrary.h"

struct Choices
{
    std::mt19937 random;

    int Number(int nFirst, int nLast)
    {
        return nFirst + static_cast<int>(random() >> 8) % (nLast - nFirst + 1);
    }
    template <class Values> auto Of(const Values& values)
    {
        return values[static_cast<std::size_t>(Number(0, static_cast<int>(std::size(values)) - 1))];
    }
};
