#pragma once
// What the operations on unit objects share: their roles, and giving up a band and the images behind it.
//
// Internal.

#include "MemoryManager/CImageObj.h"
#include "Platform/Platform.h"

#include <utility>

/// Bands of external images always have four samples a pixel.
inline constexpr int kUnitSamples = 4;

/// Values of m_nUnitType.
enum MM_UNIT_ROLE : int
{
    MM_UNIT_BOTH = 1,        ///< reads its source and writes its destination
    MM_UNIT_ENLARGED = 2,    ///< the source of an enlargement: reads only
    MM_UNIT_ENLARGEMENT = 3, ///< the destination of an enlargement: writes only
    MM_UNIT_JUDGED = 5,      ///< reads only
};

/// Whether unmapping a band of a unit object writes it.
inline bool WritesBands(const CImageObj& object)
{
    return object.m_nUnitType != MM_UNIT_ENLARGED && object.m_nUnitType != MM_UNIT_JUDGED;
}

/// Lets a unit object hold no band, whatever buffer its record names.
inline void ForgetBuffer(CImageObj& object)
{
    if (object.m_nUnitMode == 1)
        object.m_ImgInfo.pBase = object.m_ImgInfo.pImage = nullptr;
}

/// Frees the band that a unit object still holds, without writing it.
inline void DropUnitBand(CImageObj& object)
{
    if (object.m_nUnitMode != 1)
        return;
    CImageObj::FreeImgBufLrg(&object.m_ImgInfo);
    ForgetBuffer(object);
}

/// Closes the mappings of a unit object's source and destination files, if it has any.
inline void CloseUnitMappings(CImageObj& object)
{
    for (HANDLE* pMapping : {&object.m_hInMap, &object.m_hOutMap})
        if (*pMapping)
            CloseHandle(std::exchange(*pMapping, nullptr));
}
