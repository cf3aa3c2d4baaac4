#pragma once
// What the operations on unit objects share: their roles, and how they give up a held band and the mappings
// of their external images.
//
// Internal.

#include "MemoryManager/CImageObj.h"
#include "Platform/Platform.h"

#include <utility>

/// Samples per pixel of a unit object's bands, whatever its external images have.
inline constexpr int kUnitSamples = 4;

/// Values of m_nUnitType.
enum MM_UNIT_ROLE : int
{
    MM_UNIT_BOTH = 1,        ///< reads its source and writes its destination
    MM_UNIT_ENLARGED = 2,    ///< the source of an enlargement: reads only
    MM_UNIT_ENLARGEMENT = 3, ///< the destination of an enlargement: writes only
    MM_UNIT_JUDGED = 5,      ///< the source of ImportImgForUnitJudge: reads only
};

/// Whether unmapping a band of a unit object writes it.
inline bool WritesBands(const CImageObj& object)
{
    return object.m_nUnitType != MM_UNIT_ENLARGED && object.m_nUnitType != MM_UNIT_JUDGED;
}

/// Makes a unit object hold no band. A buffer that its record names is not freed.
inline void ForgetBuffer(CImageObj& object)
{
    if (object.m_nUnitMode == 1)
        object.m_ImgInfo.pBase = object.m_ImgInfo.pImage = nullptr;
}

/// Frees the band that a unit object holds, if any, without writing it.
inline void DropUnitBand(CImageObj& object)
{
    if (object.m_nUnitMode != 1)
        return;
    CImageObj::FreeImgBufLrg(&object.m_ImgInfo);
    ForgetBuffer(object);
}

/// Closes the mappings of a unit object's source and destination files, if there are any.
inline void CloseUnitMappings(CImageObj& object)
{
    for (HANDLE* pMapping : {&object.m_hInMap, &object.m_hOutMap})
        if (*pMapping)
            CloseHandle(std::exchange(*pMapping, nullptr));
}
