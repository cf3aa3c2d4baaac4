// The documented layout of the image object and its memory request.

#include "MemoryManager/base/RecordLayout.h"

#include "MemoryManager/CImageObj.h"

#include <type_traits>

template struct Documented<tag_MemAlloc, 24, MM_AT(0, tag_MemAlloc, nInCnt), MM_AT(4, tag_MemAlloc, nOutCnt),
                           MM_AT(8, tag_MemAlloc, nTmpCnt), MM_AT(12, tag_MemAlloc, nMapCnt),
                           MM_AT(16, tag_MemAlloc, nIpNo), MM_AT(20, tag_MemAlloc, nMinBand)>;

// The class starts with the address of its virtual table.
template struct Documented<
    CImageObj, 212, MM_AT(4, CImageObj, m_nAreaSize), MM_AT(8, CImageObj, m_pImageCtrl),
    MM_AT(12, CImageObj, m_ImgInfo), MM_AT(100, CImageObj, m_nAlpha), MM_AT(104, CImageObj, m_nUnitBottomUp),
    MM_AT(108, CImageObj, m_nUnitMode), MM_AT(112, CImageObj, m_nUnitBandHeight),
    MM_AT(116, CImageObj, m_InImgInf), MM_AT(152, CImageObj, m_OutImgInf), MM_AT(188, CImageObj, m_nUnitType),
    MM_AT(192, CImageObj, m_hInMap), MM_AT(196, CImageObj, m_hOutMap), MM_AT(200, CImageObj, m_nOnMemory),
    MM_AT(204, CImageObj, m_nKeepStore), MM_AT(208, CImageObj, m_nReserveTaken)>;

// A virtual destructor takes a place in the virtual table.
static_assert(!std::has_virtual_destructor_v<CImageObj>);
