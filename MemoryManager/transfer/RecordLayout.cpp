// The documented layout of the records of import and export and of the I/O object.

#include "MemoryManager/base/RecordLayout.h"

#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/LogStack.h"
#include "MemoryManager/ParameterRecords.h"

#include <type_traits>

template struct Documented<T_LOG_STACK_tag, 20, MM_AT(0, T_LOG_STACK_tag, nLogCode),
                           MM_AT(4, T_LOG_STACK_tag, pszLogText), MM_AT(8, T_LOG_STACK_tag, nLogData1),
                           MM_AT(12, T_LOG_STACK_tag, nLogData2), MM_AT(16, T_LOG_STACK_tag, nLogData3)>;

#define PAIR_LAYOUT(Pair)                                                                                    \
    MM_AT(0, Pair, hInImage), MM_AT(4, Pair, nInOffset), MM_AT(8, Pair, nInType), MM_AT(10, Pair, nInWidth), \
        MM_AT(14, Pair, nInHeight), MM_AT(18, Pair, nInReserved), MM_AT(20, Pair, hOutImage),                \
        MM_AT(24, Pair, nOutOffset), MM_AT(28, Pair, nOutType), MM_AT(30, Pair, nOutWidth),                  \
        MM_AT(34, Pair, nOutHeight)
template struct Documented<ZBT_IMAGE_IN_FILE, 38, PAIR_LAYOUT(ZBT_IMAGE_IN_FILE)>;
template struct Documented<ZBT_IMAGE_ON_MEMORY, 38, PAIR_LAYOUT(ZBT_IMAGE_ON_MEMORY)>;

template struct Documented<CImageObjIO, 320, MM_AT(212, CImageObjIO, m_ImgInfoIO),
                           MM_AT(300, CImageObjIO, m_nBottomUp), MM_AT(304, CImageObjIO, m_nFileType),
                           MM_AT(308, CImageObjIO, m_nLinePad), MM_AT(312, CImageObjIO, m_nTmpBufMode),
                           MM_AT(316, CImageObjIO, m_nConvert)>;

// A virtual destructor takes a place in the virtual table.
static_assert(!std::has_virtual_destructor_v<CImageObjIO>);
