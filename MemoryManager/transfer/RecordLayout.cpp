// The documented 32-bit layout of every public record and class: its bytes, and where each member lies. Hosts
// that other compilers built rely on these numbers, so a difference does not compile.
// Members are named in explicit instantiations, where private ones may be named too.

#include "MemoryManager/BaseBuffer.h"
#include "MemoryManager/CImageCtrlIO.h"
#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/ImgObjUty.h"

#include <cstddef>
#include <type_traits>

// Every compiler that is used here knows where the members of a class with virtual operations lie.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace {

struct Member
{
    std::size_t nActual;
    std::size_t nDocumented;
};

template <class Record, std::size_t nBytes, Member... members> struct Documented
{
    static constexpr bool bHas32Bits = sizeof(void*) == 4;
    static_assert(!bHas32Bits || sizeof(Record) == nBytes);
    static_assert(!bHas32Bits || ((members.nActual == members.nDocumented) && ...));
};

// clang-format off
#define AT(nOffset, Record, member) Member{offsetof(Record, member), nOffset}

template struct Documented<T_ImageLrg_tag, 88,
    AT(0, T_ImageLrg_tag, pBase), AT(4, T_ImageLrg_tag, nBufSize), AT(8, T_ImageLrg_tag, nLineBytes),
    AT(12, T_ImageLrg_tag, nPixelBytes), AT(16, T_ImageLrg_tag, nSampleBytes),
    AT(20, T_ImageLrg_tag, nAllocWidth), AT(24, T_ImageLrg_tag, nAllocHeight),
    AT(28, T_ImageLrg_tag, nMarginX), AT(32, T_ImageLrg_tag, nMarginY), AT(36, T_ImageLrg_tag, pImage),
    AT(40, T_ImageLrg_tag, nWidth), AT(44, T_ImageLrg_tag, nHeight), AT(48, T_ImageLrg_tag, nLineSamples),
    AT(52, T_ImageLrg_tag, nSamples), AT(56, T_ImageLrg_tag, nFormat), AT(60, T_ImageLrg_tag, nAlignType),
    AT(64, T_ImageLrg_tag, nBandLines), AT(68, T_ImageLrg_tag, nBandTop), AT(72, T_ImageLrg_tag, nBandBottom),
    AT(76, T_ImageLrg_tag, nFsize), AT(80, T_ImageLrg_tag, nRatio), AT(84, T_ImageLrg_tag, nFrameMode)>;

template struct Documented<T_Image_tag, 64,
    AT(0, T_Image_tag, pBase), AT(4, T_Image_tag, nBufSize), AT(8, T_Image_tag, nLineBytes),
    AT(12, T_Image_tag, nPixelBytes), AT(16, T_Image_tag, nSampleBytes), AT(20, T_Image_tag, nAllocWidth),
    AT(24, T_Image_tag, nAllocHeight), AT(28, T_Image_tag, nMarginX), AT(32, T_Image_tag, nMarginY),
    AT(36, T_Image_tag, pImage), AT(40, T_Image_tag, nWidth), AT(44, T_Image_tag, nHeight),
    AT(48, T_Image_tag, nLineSamples), AT(52, T_Image_tag, nSamples), AT(56, T_Image_tag, nFormat),
    AT(60, T_Image_tag, nAlignType)>;

template struct Documented<T_ImgInf, 36,
    AT(0, T_ImgInf, nFileType), AT(4, T_ImgInf, eAcsType), AT(8, T_ImgInf, hData), AT(12, T_ImgInf, nOffset),
    AT(16, T_ImgInf, nWidth), AT(20, T_ImgInf, nHeight), AT(24, T_ImgInf, nSrcFormat),
    AT(28, T_ImgInf, nDstFormat), AT(32, T_ImgInf, nLineBytes)>;

template struct Documented<tag_MemAlloc, 24,
    AT(0, tag_MemAlloc, nInCnt), AT(4, tag_MemAlloc, nOutCnt), AT(8, tag_MemAlloc, nTmpCnt),
    AT(12, tag_MemAlloc, nMapCnt), AT(16, tag_MemAlloc, nIpNo), AT(20, tag_MemAlloc, nMinBand)>;

template struct Documented<T_LOG_STACK_tag, 20,
    AT(0, T_LOG_STACK_tag, nLogCode), AT(4, T_LOG_STACK_tag, pszLogText), AT(8, T_LOG_STACK_tag, nLogData1),
    AT(12, T_LOG_STACK_tag, nLogData2), AT(16, T_LOG_STACK_tag, nLogData3)>;

template struct Documented<T_BaseBuf_tag, 1648,
    AT(0, T_BaseBuf_tag, pMem), AT(4, T_BaseBuf_tag, nMemSize), AT(8, T_BaseBuf_tag, nBufCnt),
    AT(12, T_BaseBuf_tag, nReserved), AT(16, T_BaseBuf_tag, pBuf), AT(400, T_BaseBuf_tag, nBufLines),
    AT(784, T_BaseBuf_tag, nBufMargin), AT(1168, T_BaseBuf_tag, nBufPitch),
    AT(1552, T_BaseBuf_tag, nReservedTail)>;

template struct Documented<_KEY, 264, AT(0, _KEY, szName), AT(256, _KEY, pszValue), AT(260, _KEY, nHash)>;

template struct Documented<_SECTION, 276,
    AT(0, _SECTION, ppBuf), AT(4, _SECTION, szName), AT(260, _SECTION, pKey), AT(264, _SECTION, nKeyCnt),
    AT(268, _SECTION, nKeyMax), AT(272, _SECTION, nHash)>;

#define AT_OF_PAIR(Pair) \
    AT(0, Pair, hInImage), AT(4, Pair, nInOffset), AT(8, Pair, nInType), AT(10, Pair, nInWidth), \
    AT(14, Pair, nInHeight), AT(18, Pair, nInReserved), AT(20, Pair, hOutImage), AT(24, Pair, nOutOffset), \
    AT(28, Pair, nOutType), AT(30, Pair, nOutWidth), AT(34, Pair, nOutHeight)
template struct Documented<ZBT_IMAGE_IN_FILE, 38, AT_OF_PAIR(ZBT_IMAGE_IN_FILE)>;
template struct Documented<ZBT_IMAGE_ON_MEMORY, 38, AT_OF_PAIR(ZBT_IMAGE_ON_MEMORY)>;

// The classes start with the address of their virtual table.

template struct Documented<CImageObj, 212,
    AT(4, CImageObj, m_nAreaSize), AT(8, CImageObj, m_pImageCtrl), AT(12, CImageObj, m_ImgInfo),
    AT(100, CImageObj, m_nAlpha), AT(104, CImageObj, m_nUnitBottomUp), AT(108, CImageObj, m_nUnitMode),
    AT(112, CImageObj, m_nUnitBandHeight), AT(116, CImageObj, m_InImgInf), AT(152, CImageObj, m_OutImgInf),
    AT(188, CImageObj, m_nUnitType), AT(192, CImageObj, m_hInMap), AT(196, CImageObj, m_hOutMap),
    AT(200, CImageObj, m_nOnMemory), AT(204, CImageObj, m_nKeepStore), AT(208, CImageObj, m_nReserveTaken)>;

template struct Documented<CImageObjIO, 320,
    AT(212, CImageObjIO, m_ImgInfoIO), AT(300, CImageObjIO, m_nBottomUp), AT(304, CImageObjIO, m_nFileType),
    AT(308, CImageObjIO, m_nLinePad), AT(312, CImageObjIO, m_nTmpBufMode), AT(316, CImageObjIO, m_nConvert)>;

template struct Documented<CImageCtrl, 344,
    AT(4, CImageCtrl, m_szFileName), AT(268, CImageCtrl, m_hFile), AT(272, CImageCtrl, m_hMap),
    AT(276, CImageCtrl, m_pMapAdr), AT(316, CImageCtrl, m_nMapCnt), AT(320, CImageCtrl, m_nAllMapFlg),
    AT(324, CImageCtrl, m_nFileSize), AT(328, CImageCtrl, m_eAcsType), AT(332, CImageCtrl, m_nHdrSize),
    AT(336, CImageCtrl, m_eImgType), AT(340, CImageCtrl, m_bCreated)>;

template struct Documented<CImageCtrlIO, 356,
    AT(344, CImageCtrlIO, m_pTmpBuf), AT(348, CImageCtrlIO, m_nBandOffset),
    AT(352, CImageCtrlIO, m_nBandSize)>;

template struct Documented<CWorkTableList, 24,
    AT(4, CWorkTableList, m_pSection), AT(8, CWorkTableList, m_nSectionCnt),
    AT(12, CWorkTableList, m_nSectionMax), AT(16, CWorkTableList, m_pWorkMem),
    AT(20, CWorkTableList, m_nTotalSize)>;
// clang-format on

// A virtual destructor takes a place in the virtual table.
static_assert(std::has_virtual_destructor_v<CWorkTableList>);
static_assert(!std::has_virtual_destructor_v<CImageObj> && !std::has_virtual_destructor_v<CImageObjIO>);
static_assert(!std::has_virtual_destructor_v<CImageCtrl> && !std::has_virtual_destructor_v<CImageCtrlIO>);

} // namespace
