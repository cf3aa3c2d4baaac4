#pragma once
// Band buffers with margins, carved out of one block that a host keeps across calls.

#include "MemoryManager/Export.h"

/// Most buffers of one block.
inline constexpr int MM_BASE_BUFFERS = 96;

/// One block and the buffers wanted in it; the host owns the record.
///
/// Each buffer is nBufLines lines of nBufPitch bytes with nBufMargin lines above and below. Its data starts
/// at a multiple of 16 bytes from the block's start.
struct T_BaseBuf_tag
{
    unsigned char* pMem;                  ///< the committed block, or null
    int nMemSize;                         ///< its bytes; before BaseMallocInit the bytes wanted, 0 for 2 MiB
    int nBufCnt;                          ///< buffers wanted, 1 to 96
    int nReserved;                        ///< cleared by BaseMallocInit
    unsigned char* pBuf[MM_BASE_BUFFERS]; ///< out: first data line of each buffer
    int nBufLines[MM_BASE_BUFFERS];       ///< data lines, at least 1
    int nBufMargin[MM_BASE_BUFFERS];      ///< margin lines above and below, at least 0
    int nBufPitch[MM_BASE_BUFFERS];       ///< bytes per line, at least 1
    int nReservedTail[24];                ///< cleared by BaseMallocInit
};

/// Clears the record and commits a block of nMemSize bytes, rounded up to 64 KiB. Can take 60 s while memory
/// is short. A block that the record names already is not released.
/// @return 0; 1 no memory, or a size below 0 or above 2 GiB - 1: the record is empty then
MM_API int BaseMallocInit(T_BaseBuf_tag* pRecord);

/// Places the buffers, in a larger block if they do not fit: the old one and its contents are gone then, and
/// the record's counts and arrays read 0 afterwards but for pBuf.
/// @param nFill  1: fill what the buffers take, in whole steps of 64 KiB, with the low byte of nByte
/// @return 0; 1 no memory; 18 a count outside 1 to 96, a buffer with fewer than one line or byte or a
///         negative margin, or more than 2 GiB - 1 bytes. After an error there is no block, and every pBuf is
///         null.
MM_API int BaseMallocMain(T_BaseBuf_tag* pRecord, int nFill, int nByte);

/// Releases the block, if any.
MM_API void BaseMallocFree(T_BaseBuf_tag* pRecord);
