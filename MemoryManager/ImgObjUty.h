#pragma once
// Whole-image import and export, unit objects over external images, and image descriptions.

#include "MemoryManager/CImageObj.h"
#include "MemoryManager/ErrorLogFolder.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/LogStack.h"
#include "MemoryManager/ParameterRecords.h"

// Results are the codes of ResultCodes.h. No pointer may be null unless its description says so. Descriptions
// are copied: the host may change them after the call. Handles are never closed and blocks never freed, with
// the one exception that CImageCtrlIO::Create tells. Any thread; one thread at a time on one object, file or
// block.

/// Reads a whole bitmap or raw image from the host's file or block into an object.
///
/// The object first gives up what it holds: its image, a unit band (which is not written) and the mappings of
/// a unit set-up. Then it has the description's size, the format nDstFormat, margins of 16 pixels and lines,
/// aligned lines, ratio 100 and no frame, and owns its image.
///
/// These formats can be paired, the external one first: BGR24 with BGR24, BGRA32 or RAW64; BGRA32 with BGRA32
/// or RAW64; RAW48 with RAW48 or RAW64; RAW64 with RAW64, or with RAW48, which loses the fourth sample. A
/// fourth sample that the external image lacks becomes all ones, but 255 where 8-bit samples become 16-bit
/// ones. With any other pair the result is 0 too, and pixels of the object are not written or only in part.
///
/// @param pInf       the external image, with nSrcFormat as the external format and nDstFormat as the
///                   object's; nLineBytes is not read. A file is open for reading, with ACS_MMF for reading
///                   and writing; its position is moved.
/// @param nBottomUp  1: the external lines are stored last line first
/// @param ppLog      address of a pointer to the next free entry of the host's log stack, which has room for
///                   four entries and the end mark; the pointer is advanced. Null: no log. Two entries are
///                   written at the start, two more after success.
/// @return 0; 1 no memory; 18 a size or format for which no buffer can be made; 49 (logged) there is no
///         bitmap signature, or the file is shorter than its picture; 71 the external image has no address
///         for a band; a code of the planner or of band mapping. After a failure the object holds nothing or
///         an unfinished image: call Destroy.
MM_API DWORD ImportImg(CImageObj* pObj, T_ImgInf* pInf, int nBottomUp, T_LOG_STACK_tag** ppLog);

/// Writes an object's image to the host's file or block, a bitmap with its header first, and destroys the
/// object's image. Can take a minute while the disk is full.
///
/// Samples keep their width: objects of BGR24 or BGRA32 go to either bitmap, those of RAW48 or RAW64 to
/// either raw image. A fourth sample that the external image lacks is lost. With any other pair, or for an
/// external image of four samples with an nAlpha that is neither 0 nor 1, the result is 0 too, and external
/// bytes are not written or mean nothing.
///
/// @param pInf       the external image, with nDstFormat as its format; nSrcFormat, nOffset and nLineBytes
///                   are not read. It is not larger than the object's image, of which the right and the lower
///                   part are left out otherwise. A file of ACS_MMF was created empty; to one of
///                   ACS_FILEIO header and lines are appended. It is open for reading and writing, but not
///                   for appending; a block has room for header and padded lines.
/// @param nBottomUp  1: the external lines are stored last line first
/// @param ppLog      as for ImportImg
/// @param nAlpha     what a fourth external sample receives: 1 all ones; 0 the object's, or all ones when the
///                   object has none
/// @return 0; 1, 18 or 49 (logged: the header could not be written) while setting up: the object is as it
///         was; 1, 49 (logged) a band that could not be written, 71, or a code of the planner or of band
///         mapping afterwards: the object's image is destroyed all the same
MM_API DWORD ExportImg(CImageObj* pObj, T_ImgInf* pInf, int nBottomUp, T_LOG_STACK_tag** ppLog, int nAlpha);

/// Turns the host's record of a pair of files into two descriptions, of ACS_FILEIO. Handles and offsets,
/// widths and heights are copied; the data types give file type, external format and line length.
///
/// For a data type outside 0 to 3, file type, external format and line length of the description stay as they
/// were. A line length that 32 bits do not hold, or that is negative, becomes 0: whatever reads or writes
/// such an image refuses it.
///
/// @param pPair       not changed
/// @param nInFormat   MM_FORMAT of the object that the input goes to: pIn's nDstFormat
/// @param nOutFormat  MM_FORMAT of the object that the output comes from: pOut's nSrcFormat
/// @param pIn, pOut   out: the two descriptions
MM_API void CreateParam(ZBT_IMAGE_IN_FILE* pPair, int nInFormat, int nOutFormat, T_ImgInf* pIn,
                        T_ImgInf* pOut);

/// The same for a pair of blocks, of ACS_MEMORY. Afterwards pPair->nOutOffset tells where in the output block
/// the pixels will start: 54 for a bitmap, 0 for a raw image; an unknown data type leaves it alone. pOut has
/// the offset that the record had before.
MM_API void CreateParam(ZBT_IMAGE_ON_MEMORY* pPair, int nInFormat, int nOutFormat, T_ImgInf* pIn,
                        T_ImgInf* pOut);

// Unit objects ---------------------------------------------------------------------------------------------
//
// A unit object works on an external image of any size with the memory of one band. Positions, among them
// T_ImgInf::nOffset, are taken as unsigned 32-bit numbers: files may be up to 4 GiB - 1 bytes long. The host
// keeps files open and blocks alive for as long as the objects live; positions of files are moved.
//
// Sources: a bitmap that is a block or is read with file reads (ACS_FILEIO) is searched for its signature,
// and its pixels are taken to start 54 bytes behind it; nOffset is then not read. Where no signature is
// found, and for every other source, the pixels start at nOffset. A host that knows better sets
// m_InImgInf.nOffset afterwards.
//
// Destinations are stored upright, with the first line first. A destination of ACS_FILEIO is empty at first
// and is appended to: its bands are ended in order from line 0 on. A file of ACS_MMF becomes as long as the
// image needs. A bitmap's header is written here, and describes lines that are stored last line first. The
// pixels of a raw image in a block or mapped file start at its nOffset.
//
// An object that was set up before is set up anew: a band that it holds is freed and not written, and its
// mappings are closed. An object that holds an image of its own keeps that, unused and charged: call Destroy
// first. After a failure the object may be set up again or destroyed.

/// Sets an object up to read one image and write another of the same size and sample width. Its bands are as
/// tall as the free budget, but at most ms_nUseMaxMemoryUnit bytes, has room for; its margins are those that
/// m_ImgInfo has.
///
/// @param pIn, pOut  source and destination; the source's format is nSrcFormat, the destination's nDstFormat
/// @param nBottomUp  1: the source is stored turned by 180 degrees, last line and last pixel first
/// @param ppLog      means nothing; may be null
/// @param nAlign     MM_ALIGN argument for the band buffers
/// @param nAlpha     fourth sample of the destination: 1 all ones, 0 the band's own. A fourth sample that the
///                   source lacks becomes all ones whatever this says.
/// @return 0; 18 sizes or sample widths differ, lines overlap, no buffer with this alignment can hold the
///         lines, or positions lie beyond 4 GiB: nothing is written; 1 no memory, or a file mapping could not
///         be made; 49 (logged) the bitmap's header could not be written
MM_API DWORD ImportImgForUnit(CImageObj* pObj, T_ImgInf* pIn, T_ImgInf* pOut, int nBottomUp,
                              T_LOG_STACK_tag** ppLog, int nAlign, int nAlpha);

/// Sets an object up to read an image only, without margins, in packed lines and bands as tall as those of
/// ImportImgForUnit. No signature is searched and no mapping is made: the source is a block or read with file
/// reads, and its pixels start at nOffset.
///
/// @param nBottomUp       as for ImportImgForUnit
/// @param ppLog, nUnused  mean nothing; ppLog may be null
/// @return 0 always: what is wrong with a description shows when a band is mapped
MM_API DWORD ImportImgForUnitJudge(CImageObj* pObj, T_ImgInf* pIn, int nBottomUp, T_LOG_STACK_tag** ppLog,
                                   int nUnused);

/// Sets up an object that reads one image and another object that writes an image of any other size and
/// sample width, both without margins and in packed lines. The band heights are in the proportion of the
/// images' heights, in whole lines, and share the memory that one object's band may have. A band of the
/// writing object is zero when it is mapped: the host fills it.
///
/// @param pOutObj, pOut  the writing object and its destination, whose format is nDstFormat
/// @param pInObj, pIn    the reading object, another one, and its source, whose format is nSrcFormat
/// @param nBottomUp      of the source, as for ImportImgForUnit
/// @param ppLog          means nothing; may be null
/// @param nAlpha         as for ImportImgForUnit
/// @return as ImportImgForUnit, but sizes and sample widths may differ; both are at most two bytes
MM_API DWORD ImportImgForUnitEnLarge(CImageObj* pOutObj, T_ImgInf* pOut, CImageObj* pInObj, T_ImgInf* pIn,
                                     int nBottomUp, T_LOG_STACK_tag** ppLog, int nAlpha);

/// Sends the whole image of a unit object from its source to its destination, band by band from the top. A
/// band that the object still holds is ended first.
/// @return 0; a code of band mapping: only a band that could not be written is still held
MM_API DWORD DuplicateImageForUnit(CImageObj* pObj);

/// Copies the image of a reading object to a writing object, band by band from the top: the lines and pixels
/// that both bands have. Bands that the objects still hold are ended first.
/// @return 0; 18 the bands' buffers differ in size; a code of band mapping. Only a band that could not be
///         written is still held.
MM_API DWORD DuplicateImageForUnit(CImageObj* pOutObj, CImageObj* pInObj);
