#pragma once
// How the order of stored lines and pixels changes on the way from input to output, and who changes it.

#include "values/Picture.h"
#include "values/RunSettings.h"

/// What is reversed between two orders.
struct LineOrder
{
    bool bLines = false;  ///< the last line comes first
    bool bPixels = false; ///< in every line, the last pixel comes first

    bool operator==(const LineOrder&) const = default;

    /// What is reversed between the stored lines of an input and those of an output.
    /// @param bBottomUp  the input's lines are stored from the bottom up
    /// @param bTurn      the picture is turned by 180 degrees
    static LineOrder Between(bool bBottomUp, Format eTo, bool bTurn);

    /// The part of it that is left to the work between the bands. In the whole scheme, the import reverses
    /// lines. In the unit scheme, one object that reads and writes turns by 180 degrees where lines are to be
    /// reversed; a pair of objects reverses nothing.
    /// @param bOneObject  of the unit scheme: one object, not a pair
    LineOrder LeftToWork(Scheme eScheme, bool bOneObject) const;
};
