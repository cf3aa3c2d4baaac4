#pragma once
// Band buffers with margins, placed in one memory block that a host keeps across calls.

#include "MemoryManager/Export.h"

/// Most buffers of one block.
inline constexpr int MM_BASE_BUFFERS = 96;

/// One block and the buffers wanted in it. The record belongs to the host and owns the block: do not copy it
/// while it has one. One thread at a time on one record, which is never null; no lock is taken, and the
/// images' budget is not charged.
///
/// Each buffer has nBufLines lines of nBufPitch bytes, with nBufMargin lines above and below them. Its first
/// line starts at a multiple of 16 bytes from the block's start.
struct T_BaseBuf_tag
{
    unsigned char* pMem; ///< the committed block, or null
    int nMemSize;        ///< bytes of the block; before BaseMallocInit those wanted, 0: 2 MiB
    int nBufCnt;         ///< buffers wanted, 1 to MM_BASE_BUFFERS
    int nReserved;       ///< cleared by BaseMallocInit
    unsigned char* pBuf[MM_BASE_BUFFERS]; ///< out: first line of each buffer, behind its margin
    int nBufLines[MM_BASE_BUFFERS];       ///< lines, at least 1
    int nBufMargin[MM_BASE_BUFFERS];      ///< margin lines above and below, at least 0
    int nBufPitch[MM_BASE_BUFFERS];       ///< bytes per line, at least 1
    int nReservedTail[24];                ///< cleared by BaseMallocInit
};

/// Clears the record and commits a zero-filled block of nMemSize bytes, rounded up to a multiple of 64 KiB.
/// Only nMemSize is read; a block that the record has already is forgotten, not released. Can take 60 s while
/// memory is short.
/// @return 0; 1 no memory, a negative size, or one that is 2 GiB when rounded: the record is all zero
MM_API int BaseMallocInit(T_BaseBuf_tag* pRecord);

/// Places the buffers that the record describes in its block. If they do not fit, the block is replaced by a
/// larger one: its contents are lost, and nBufCnt and the arrays but for pBuf are 0 afterwards, so fill them
/// in before the next call. Can take 60 s while memory is short.
/// @param nFill  1: fill what the buffers take, rounded up to a multiple of 64 KiB, with the low byte of
///               nByte; else the bytes stay as they are
/// @return 0; 1 no memory; 18 a count outside 1 to MM_BASE_BUFFERS, a buffer with fewer than one line or byte
///         or a negative margin, or more than 2 GiB - 1 bytes in all. After an error the block is gone and
///         every pBuf is null.
MM_API int BaseMallocMain(T_BaseBuf_tag* pRecord, int nFill, int nByte);

/// Releases the block, if any, and sets pMem and nMemSize to 0. The addresses in pBuf are not valid any more,
/// but stay.
MM_API void BaseMallocFree(T_BaseBuf_tag* pRecord);
