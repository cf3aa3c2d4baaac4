// The documented layout of tables and base buffers.

#include "MemoryManager/base/RecordLayout.h"

#include "MemoryManager/BaseBuffer.h"
#include "MemoryManager/CWorkTableList.h"

#include <type_traits>

template struct Documented<T_BaseBuf_tag, 1648, MM_AT(0, T_BaseBuf_tag, pMem),
                           MM_AT(4, T_BaseBuf_tag, nMemSize), MM_AT(8, T_BaseBuf_tag, nBufCnt),
                           MM_AT(12, T_BaseBuf_tag, nReserved), MM_AT(16, T_BaseBuf_tag, pBuf),
                           MM_AT(400, T_BaseBuf_tag, nBufLines), MM_AT(784, T_BaseBuf_tag, nBufMargin),
                           MM_AT(1168, T_BaseBuf_tag, nBufPitch), MM_AT(1552, T_BaseBuf_tag, nReservedTail)>;

template struct Documented<_KEY, 264, MM_AT(0, _KEY, szName), MM_AT(256, _KEY, pszValue),
                           MM_AT(260, _KEY, nHash)>;

template struct Documented<_SECTION, 276, MM_AT(0, _SECTION, ppBuf), MM_AT(4, _SECTION, szName),
                           MM_AT(260, _SECTION, pKey), MM_AT(264, _SECTION, nKeyCnt),
                           MM_AT(268, _SECTION, nKeyMax), MM_AT(272, _SECTION, nHash)>;

// The class starts with the address of its virtual table.
template struct Documented<CWorkTableList, 24, MM_AT(4, CWorkTableList, m_pSection),
                           MM_AT(8, CWorkTableList, m_nSectionCnt), MM_AT(12, CWorkTableList, m_nSectionMax),
                           MM_AT(16, CWorkTableList, m_pWorkMem), MM_AT(20, CWorkTableList, m_nTotalSize)>;

// A virtual destructor takes a place in the virtual table.
static_assert(std::has_virtual_destructor_v<CWorkTableList>);
