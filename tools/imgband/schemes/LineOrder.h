#pragma once
// How the order of stored lines and pixels changes on the way from input to output, and who changes it.

#include "values/Picture.h"
#include "values/RunSettings.h"

/// Whether the tool stores the lines of a format from the bottom up.
bool IsStoredBottomUp(Format eFormat);

/// What is reversed.
struct LineOrder
{
    bool bLines = false;  ///< the last line comes first
    bool bPixels = false; ///< in every line, the last pixel comes first

    bool operator==(const LineOrder&) const = default;

    /// What stands between the stored lines of an input and of an output.
    /// @param bBottomUp  the input's lines are stored from the bottom up
    /// @param bTurn      the picture is turned by 180 degrees
    static LineOrder Between(bool bBottomUp, Format eTo, bool bTurn);

    /// The part of it that is left to the work between the bands. The import of the whole scheme reverses
    /// lines. The one object of the unit scheme that reads and writes can turn by 180 degrees, and does so
    /// where lines are to be reversed. A pair of unit objects does nothing.
    /// @param bOneObject  in the unit scheme: one object, not a pair
    LineOrder LeftToWork(Scheme eScheme, bool bOneObject) const;
};
