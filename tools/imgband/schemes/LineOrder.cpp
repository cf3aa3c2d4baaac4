// What is reversed between input and output, and who does which part of it.

#include "schemes/LineOrder.h"

#include "pictures/Formats.h"

LineOrder LineOrder::Between(bool bBottomUp, Format eTo, bool bTurn)
{
    return {(bBottomUp != IsStoredBottomUp(eTo)) != bTurn, bTurn};
}

LineOrder LineOrder::LeftToWork(Scheme eScheme, bool bOneObject) const
{
    if (eScheme == Scheme::Whole)
        return {false, bPixels};
    if (bOneObject)
        return {false, bPixels != bLines};
    return *this;
}
