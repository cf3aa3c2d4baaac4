// The documented layout of the stores.

#include "MemoryManager/base/RecordLayout.h"

#include "MemoryManager/CImageCtrlIO.h"

#include <type_traits>

// The classes start with the address of their virtual table.

template struct Documented<CImageCtrl, 344, MM_AT(4, CImageCtrl, m_szFileName),
                           MM_AT(268, CImageCtrl, m_hFile), MM_AT(272, CImageCtrl, m_hMap),
                           MM_AT(276, CImageCtrl, m_pMapAdr), MM_AT(316, CImageCtrl, m_nMapCnt),
                           MM_AT(320, CImageCtrl, m_nAllMapFlg), MM_AT(324, CImageCtrl, m_nFileSize),
                           MM_AT(328, CImageCtrl, m_eAcsType), MM_AT(332, CImageCtrl, m_nHdrSize),
                           MM_AT(336, CImageCtrl, m_eImgType), MM_AT(340, CImageCtrl, m_bCreated)>;

template struct Documented<CImageCtrlIO, 356, MM_AT(344, CImageCtrlIO, m_pTmpBuf),
                           MM_AT(348, CImageCtrlIO, m_nBandOffset), MM_AT(352, CImageCtrlIO, m_nBandSize)>;

// A virtual destructor takes a place in the virtual table.
static_assert(!std::has_virtual_destructor_v<CImageCtrl> && !std::has_virtual_destructor_v<CImageCtrlIO>);
