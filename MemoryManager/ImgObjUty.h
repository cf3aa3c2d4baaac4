#pragma once
// Whole-image import and export, unit objects over external images, and image descriptions.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ErrorLogFolder.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/LogStack.h"
#include "MemoryManager/ParameterRecords.h"

/// Reads a bitmap or raw image from the host's file or block into an object, which first gives up what it
/// holds. The object then has the description's size and nDstFormat, margins of 16 and aligned lines.
///
/// @param pObj       destination; owns the image from then on
/// @param pInf       the external image; its file is open for reading (ACS_MMF: for writing too)
/// @param nBottomUp  1: the external lines are stored last line first
/// @param ppLog      host's log stack with room for four entries and the end mark, or null. The end entries
///                   are written on success only.
///
/// Formats that can be paired, external and object's: BGR24 with BGR24, BGRA32 or RAW64; BGRA32 with BGRA32
/// or RAW64; RAW48 with RAW48 or RAW64; RAW64 with RAW64, or with RAW48, which loses the fourth sample. A
/// fourth sample that the external image lacks becomes all ones (255 from a bitmap). Any other pair gives 0
/// too, with pixels that were not written or not wholly.
///
/// @return 0: every pixel of such a pair is in its place; 1; 18 a size or format that no buffer can be
///         made for; 49 no bitmap signature, or the file is shorter than its picture; 71; a code of the
///         planner or of band mapping. After a failure the object holds nothing or an unfinished image:
///         destroy it.
///
/// Any thread; one thread at a time on one object, file or block. The file's position is moved.
MM_API DWORD ImportImg(CImageObj* pObj, T_ImgInf* pInf, int nBottomUp, T_LOG_STACK_tag** ppLog);

/// Writes an object's image to the host's file (created empty, its header comes first for a bitmap) or block.
/// The file is open for reading and writing and not for appending.
///
/// Samples keep their width: objects of BGR24 or BGRA32 go to either bitmap, those of RAW48 or RAW64 to
/// either raw image; a fourth sample that the external image lacks is lost. Any other pair, and any nAlpha
/// but 0 and 1 for an external image of four samples, gives 0 too, with bytes that were not written or mean
/// nothing.
///
/// @param pObj    source; its image and charge are released, on failure too, but for those below
/// @param pInf    the external image, not larger than the object's: what is larger of the object, at the
///                right and the bottom, is left out
/// @param nAlpha  what a fourth output sample receives: 1 all ones, 0 the object's own, or all ones when
///                the object has none
/// @return 0: every byte of such a pair is in its place; 1, 18 or 49 from setting up (49: the header
///         could not be written), and the object is as it was; after that 49 a band could not be written,
///         71, or a code of the planner or of band mapping
///
/// Any thread, as ImportImg. Can take a minute while the disk is full.
MM_API DWORD ExportImg(CImageObj* pObj, T_ImgInf* pInf, int nBottomUp, T_LOG_STACK_tag** ppLog, int nAlpha);

/// Turns the host's record of a pair of images into two descriptions. A data type outside 0 to 3 leaves the
/// file type, the type's format and the line length of its description untouched; a line that does not fit 32
/// bits has length 0, and such an image is refused by whatever is to read or write it.
///
/// @param pPair       the host's record; not changed, and not referred to afterwards
/// @param nInFormat   object format for the input side
/// @param nOutFormat  object format for the output side
/// @param pIn         out: the input, of ACS_FILEIO; its handle and offset are the pair's
/// @param pOut        out: the output, of ACS_FILEIO; its handle and offset are the pair's
///
/// No pointer may be null. Any thread.
MM_API void CreateParam(ZBT_IMAGE_IN_FILE* pPair, int nInFormat, int nOutFormat, T_ImgInf* pIn,
                        T_ImgInf* pOut);

/// The same for blocks, of ACS_MEMORY. pPair->nOutOffset then tells where the output's pixels will start (54
/// bitmap, 0 raw; an unknown type leaves it alone); pOut has the offset that stood there before.
MM_API void CreateParam(ZBT_IMAGE_ON_MEMORY* pPair, int nInFormat, int nOutFormat, T_ImgInf* pIn,
                        T_ImgInf* pOut);

// Unit objects ---------------------------------------------------------------------------------------------
//
// They work on an external image of any size with the memory of one band. Files may have up to 4 GiB - 1:
// positions, T_ImgInf::nOffset among them, are taken as unsigned 32-bit numbers. The host keeps files open
// and blocks alive while the objects live; file positions are moved. A bitmap source that is a block or is
// read with file reads is searched for its signature, and its pixels are taken to start 54 bytes behind; a
// host that knows better sets m_InImgInf.nOffset afterwards.
//
// pOut of ACS_FILEIO is appended to: it is empty at first, and its bands are ended in order from line 0. pOut
// of ACS_MMF becomes as long as the image needs. Pixels of a raw block or mapped file start at its nOffset.
// The destination is always stored upright; a bitmap's header is written here, for lines stored last line
// first.
//
// An object that was set up before is set up anew: a band that it holds is freed, its mappings are closed.
// Any thread; one thread at a time on one object, file or block.

/// Sets an object up to read one image and write another of the same size and sample width, in bands as tall
/// as the budget allows. Margins are those that m_ImgInfo has.
///
/// @param nBottomUp  1: the source is stored turned by 180 degrees
/// @param ppLog      not used
/// @param nAlign     MM_ALIGN type of the band buffers
/// @param nAlpha     fourth sample of the destination: 1 all ones, 0 the object's own; all ones when the
///                   source has none
/// @return 0; 18 sizes or sample widths differ, lines that overlap or that no buffer can hold, or positions
///         beyond 4 GiB: nothing is written; 1 a file mapping could not be made; 49 (logged) the bitmap
///         header could not be written
MM_API DWORD ImportImgForUnit(CImageObj* pObj, T_ImgInf* pIn, T_ImgInf* pOut, int nBottomUp,
                              T_LOG_STACK_tag** ppLog, int nAlign, int nAlpha);

/// Sets an object up to read only: no search for a signature and no mapping, so the source is a block or read
/// with file reads, from the nOffset that the description gives. ppLog and nUnused are not used. Always 0.
MM_API DWORD ImportImgForUnitJudge(CImageObj* pObj, T_ImgInf* pIn, int nBottomUp, T_LOG_STACK_tag** ppLog,
                                   int nUnused);

/// Sets up an object that reads one image and an object that writes another, of any two sizes and sample
/// widths, without margins. Band heights are in the proportion of the heights, in whole numbers of lines.
///
/// @return 0; 18 lines that overlap or positions beyond 4 GiB: nothing is written; 1; 49 as above
MM_API DWORD ImportImgForUnitEnLarge(CImageObj* pOutObj, T_ImgInf* pOut, CImageObj* pInObj, T_ImgInf* pIn,
                                     int nBottomUp, T_LOG_STACK_tag** ppLog, int nAlpha);

/// Sends the whole image of a unit object from its source to its destination.
/// @return 0; a code of band mapping
MM_API DWORD DuplicateImageForUnit(CImageObj* pObj);

/// Copies the bands of a reading object to those of a writing object, line by line from the top.
/// @return 0; 18 the bands' buffers differ in size; a code of band mapping. No band is left mapped, but one
///         that could not be written.
MM_API DWORD DuplicateImageForUnit(CImageObj* pOutObj, CImageObj* pInObj);
