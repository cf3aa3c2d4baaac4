#pragma once
// The image object: geometry, budget charge, store and band access of one image.

#include "MemoryManager/CImageCtrl.h"
#include "MemoryManager/Export.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/ImageRecord.h"
#include "MemoryManager/MemoryRequest.h"

class CWorkTableList;

/// Band directions of MapBand.
enum MM_DIRECTION : int
{
    MM_BAND_DOWNWARD = 0, ///< the line is the band's first
    MM_BAND_UPWARD = 1,   ///< the line is the band's last
};

/// Frame fill modes: what a frame pixel or line at distance j (1, 2, ...) beyond an image edge takes. Where a
/// mirror would reach past the opposite edge, it takes the pixel or line there.
enum MM_FRAME_MODE : int
{
    MM_FRAME_NONE = 0,        ///< nothing is painted
    MM_FRAME_REPLICATE = 1,   ///< the pixel or line at the edge
    MM_FRAME_MIRROR = 2,      ///< the one j inside the edge: the edge is not repeated
    MM_FRAME_MIRROR_EDGE = 3, ///< the one j - 1 inside the edge: the edge is repeated
    MM_FRAME_COLOR = 4,       ///< a fixed colour
};

/// An image that lies in a committed block or in a temporary file, and that a step reaches band by band.
///
/// Invariants: IsOnMemory() is 1 exactly when m_ImgInfo.nBufSize <= m_nAreaSize. SetFsize keeps
/// m_ImgInfo.nFsize within nMarginX. As long as nothing is clipped, withheld or dropped (see MemoryAlloc),
/// the free budget and the charges of all objects and standalone buffers add up to the reserve.
///
/// A unit object (m_nUnitMode 1) has no image of its own: each band is read from one external image and
/// written to another, as the unit import functions of ImgObjUty.h set it up. While it holds a band,
/// m_ImgInfo.pBase is that band's buffer; otherwise it is null.
///
/// An object is used by one thread at a time and has no lock of its own; different objects may be used by
/// different threads. Results are the codes of ResultCodes.h. No pointer argument may be null unless its
/// comment says so. Bands must be unmapped before their object is planned again or destroyed.
class MM_API CImageObj
{
public:
    // Life cycle ------------------------------------------------------------------------------------------

    /// An object without a store and without a geometry. SetImageInfo makes both.
    CImageObj();

    /// An object with the source's geometry, a new empty store and the band state of InitObj. Here and below
    /// the source is only read, the new object is no unit object, and without memory it has no store.
    explicit CImageObj(CImageObj* pSrc);

    /// The same with other sizes: each argument above 0 replaces the source's width (pixels), height (lines)
    /// or bytes per pixel. Lines are laid out with that pixel size even if it is not sample bytes * samples.
    /// If there is no layout for the result, GetAreaSize() is -1 and the planner refuses the object.
    CImageObj(CImageObj* pSrc, int nWidth, int nHeight, int nPixelBytes);

    /// The same with another geometry. Width and height replace the source's if they are above 0; margins,
    /// samples (from nFormat) and alignment type (MM_ALIGN) always do. m_ImgInfo.nFormat stays the source's.
    CImageObj(CImageObj* pSrc, int nWidth, int nHeight, int nMarginX, int nMarginY, int nFormat, int nAlign);

    /// Copies every member, the pointer to the store and the charge included. An object must not be copied
    /// while it holds an image, a charge, a unit band, unit mappings or a withheld reserve: with "CImageObj c
    /// = o;" both destructors would release the same things.
    CImageObj(const CImageObj& other);

    /// The same. What the target held is not released: it must hold nothing either.
    CImageObj& operator=(const CImageObj& other);

    /// Gives back a withheld reserve, calls Destroy, frees a held unit band without writing it, and closes
    /// the unit mappings. Not virtual: delete an object through a pointer of its own class.
    ~CImageObj();

    /// Resets the band state of m_ImgInfo: ratio 100; band lines, frame size and frame mode 0.
    void InitObj();

    /// Gives the object a geometry. Makes a store when there is none. A store that holds an image stays as it
    /// is: call Destroy first when the new image is larger.
    ///
    /// @param pInfo  in: size, margins, format and alignment type, band state. Completed in place: samples
    ///               and pixel size from nFormat, layout by CalcAlign. For a unit object pixels have four
    ///               samples, the band height is the object's, and an image that is too large for one buffer
    ///               gets the layout of its lines and nBufSize -1.
    /// @return 0; 18 a negative size, a layout that does not fit 32 bits, or a unit band is held; 1 no store
    ///         could be allocated. After an error record and object are as they were. An alignment that is
    ///         not supported is no error here: the record keeps the layout that the caller filled in.
    DWORD SetImageInfo(T_ImageLrg_tag* pInfo);

    /// Copies m_ImgInfo to the caller's record. On a unit object this first restores the band height of the
    /// set-up, which bands of other heights have changed.
    virtual void GetImageInfo(T_ImageLrg_tag* pInfo);

    /// Sets charge and band height, as the planner decides them. The budget does not change. A band has 2 *
    /// nFsize lines fewer than its buffer; both have at least ms_MinBand lines if the image is that high.
    /// @param nBand   lines of one band buffer; 0 or less: the whole image
    /// @param nCount  band buffers; of a whole image one is charged, whatever the number
    /// @return the new charge: nLineBytes for each line of the buffers, GetAreaSize() for a whole image; at
    ///         most INT32_MAX
    virtual int SetBandInfo(int nBand, int nCount);

    /// Bytes that hold the image whole: nBufSize. 0: no geometry yet; -1: no buffer can hold it.
    virtual int GetAreaSize();

    /// Makes the store, as the planner does after sizing. A file that it has already is mapped whole when
    /// nSize <= nAllotted; a store that is created already stays as it is.
    /// @param nSize      bytes of the whole image
    /// @param nAllotted  bytes of the budget allotted to it
    /// @param nSlots     view slots, 1 to 10, of a store made here
    /// @return 0; 18 no store, or one that was made for a smaller image; 66; a code of CImageCtrl::Create.
    ///         m_nAreaSize is not changed.
    virtual DWORD Create(LONG nSize, LONG nAllotted, int nSlots);

    /// Lines of a band: m_ImgInfo.nBandLines.
    virtual int GetBandHeight();

    /// Lowers the band height; on a unit object also that of its set-up.
    /// @return 0; 117 below 0 or above the current band height
    DWORD SetBandHeight(int nLines);

    /// Sets the frame that is mapped with each band: lines above and below it, pixels at its sides.
    /// @return 0; 114 below 0 or above nMarginX
    DWORD SetFsize(int nSize);

    /// Sets the planner's weight of this image against the step's output, in percent. 0 is accepted, but an
    /// image that must be banded then fails with 89.
    /// @return 0; 115 below 0
    DWORD SetRatio(int nPercent);

    void SetOnMemory(); ///< makes the planner hold this image whole, for the object's life
    int IsOnMemory();   ///< 1: the charge covers the whole image, as it does for an empty one; else 0

    /// Gives the charge back and deletes the store with its image; with m_nKeepStore 1 the store stays as it
    /// is. The geometry stays. Without a store, band mapping returns 69 and the planner refuses the object
    /// with 18 until SetImageInfo makes a new one. A unit band that is held stays held, and unit mappings
    /// stay open: the destructor, ImportImg or another unit import releases them. Takes the lock. Always 0.
    DWORD Destroy();

    /// Turns an image in memory, or a file mapped whole, into a file reached through band views, and gives
    /// the charge back. The band height is then 0: the object must be planned before bands are mapped.
    /// @return 0; 49 (logged): no store or nothing to convert, a geometry with more bytes than the block or
    ///         with none, or a failed file. The image is then as it was.
    DWORD CnvFileImg();

    /// Swaps geometry, store and charge with another object, so that each then owns what was the other's. The
    /// charge of a file that comes in from pOther is given back, since it is planned afresh. A withheld
    /// reserve moves to this object, unless it has one already. Unit bands that either holds are freed
    /// without being written; all other members stay where they are. Exchanging an object with itself does
    /// nothing.
    void ExchangeImg(CImageObj* pOther);

    /// Calls Destroy on the source and then makes the target a copy of it. A held unit band, the unit
    /// mappings and, if m_nKeepStore has kept it, the store belong to the target afterwards, and so does a
    /// withheld reserve, unless the target has one already. The target's own unit mappings are closed.
    /// Nothing else that it held is released: it must hold no store, charge or band.
    static void ExchangeImg(CImageObj* pTarget, CImageObj* pSource);

    // Geometry --------------------------------------------------------------------------------------------

    /// Computes the layout that AllcImgBufLrg would make. Uses no member; any thread.
    /// @param nBufferSize, nLineBytes      out: bytes
    /// @param nBufferWidth, nBufferHeight  out: pixels per line and lines, margins and alignment included
    /// @param nWidth, nHeight              pixels and lines of the image, without margins
    /// @param nMarginX, nMarginY           pixels on each side, lines above and below
    /// @param nFormat, nAlign              format code (only samples and their bytes are read), MM_ALIGN
    /// @return 0; 18 unsupported alignment or sample size, a negative number, or a layout that does not fit
    ///         32 bits: nothing is written
    DWORD CalcImgBufLrg(int& nBufferSize, int& nLineBytes, int& nBufferWidth, int& nBufferHeight, int nWidth,
                        int nHeight, int nMarginX, int nMarginY, int nFormat, int nAlign);

    /// Recomputes nAllocWidth, nAllocHeight, nLineBytes, nBufSize and nLineSamples of a record from its size,
    /// margins, nPixelBytes, nSampleBytes, nSamples and nAlignType. Uses no member; any thread.
    /// @return 0; 18 as for CalcImgBufLrg
    DWORD CalcAlign(T_ImageLrg_tag* pInfo);

    /// Commits a standalone buffer, charges the budget for nBufSize bytes whatever is left, and fills the
    /// record's fields from pBase to nAlignType; the others stay. The buffer is zero-filled and belongs to
    /// the caller, who frees it with FreeImgBufLrg. pImage is the first image pixel. A buffer that the record
    /// names is not released. Arguments as for CalcImgBufLrg. Any thread. Can take 60 s.
    /// @return 0; 1 no memory; 18 as above. After an error nothing is charged or written.
    static DWORD AllcImgBufLrg(T_ImageLrg_tag* pInfo, int nWidth, int nHeight, int nMarginX, int nMarginY,
                               int nFormat, int nAlign);

    /// Frees such a buffer and gives the record's nBufSize back to the budget. A null pBase does nothing. The
    /// record is not changed, so a second call would free the buffer twice. Any thread.
    static void FreeImgBufLrg(T_ImageLrg_tag* pInfo);

    // Budget ----------------------------------------------------------------------------------------------
    //
    // A charge is a number of bytes taken from the free budget, which may become negative.

    /// Sizes the budget, in bytes: the free budget becomes the reserve. Call it while nothing is charged:
    /// existing charges are forgotten. Takes the lock; any thread. Always 0.
    /// @param nReserve     at least ms_nOnMemory is used
    /// @param nOneMapping  most bytes that are mapped as one piece. At most 32 MiB is used, then at least
    ///                     ms_nOnMemory and at most the reserve.
    static DWORD InitBaseMemory(LONG nReserve, LONG nOneMapping);

    /// Gives d bytes back, or charges them if d is negative. More than the reserve is never free. The caller
    /// holds the lock. Always 0.
    static DWORD UpdateUseMemory(LONG d);

    /// Takes the whole free budget, in bytes, and leaves 0. The caller holds the lock, and gives back what is
    /// left with UpdateUseMemory before releasing it.
    static LONG AskUseMemory();

    /// The free budget in bytes. Takes no lock: while another thread plans a step it may read 0, so a caller
    /// who needs a reliable number holds the lock.
    static LONG AskFreeMemory();

    /// The cap of SetUseMaxBandMemory in bytes, 24 MiB unless set. Takes no lock.
    static LONG GetUseMaxBandMemory();

    /// Caps the memory of an output's band, in MiB, for steps whose other images are all held whole; the
    /// step's smallest band may exceed it. Bands of inputs and temporaries, and the output's in steps with
    /// such bands, are not capped. Takes no lock, but the planner reads the cap under it: call this before
    /// other threads use the library, or hold the lock.
    /// @return 0; 18 below 1, or 2048 and more: nothing changes
    static int SetUseMaxBandMemory(LONG nMiB);

    static LONG GetUseMinBandMemory(); ///< ms_nUseMinBandMemory, in bytes

    /// The library's one lock. It is recursive, lives as long as the library, and guards the budget.
    static CRITICAL_SECTION* GetCS();

    // Planner ---------------------------------------------------------------------------------------------

    /// Plans one step inside the budget and makes the store of every image. Afterwards m_ImgInfo.nBandLines
    /// of each object is its band height (nHeight when it is held whole), and m_nAreaSize its charge.
    ///
    /// An input that keeps a charge from an earlier step and lies in memory stays as it is; the charge of one
    /// in a file is given back, and it is planned afresh. Any image that holds a charge, but has the band
    /// height 0, gets its whole height if the charge covers it; else it too is planned afresh. When a step
    /// with an input fails, the charges of its outputs and temporaries are given back, the reserve is
    /// withheld until the first input's destructor (not its Destroy) gives it back, and the step is planned
    /// once more with smallest bands. Charges whose store could not be made are dropped: they come back to
    /// the budget with InitBaseMemory only.
    ///
    /// @param pRequest            the counts, and the smallest band; not changed
    /// @param ppIn, ppOut, ppTmp  arrays with as many objects as the request counts; null for a count of 0:
    ///         the first object of ppOut is looked at whatever nOutCnt is
    /// @return 0; 18 a null object, one without store or geometry, with a store that was made for a smaller
    ///         image, with a negative ratio or with bands beyond 32 bits, or counts out of range: nothing is
    ///         changed; 88; 89; a code of Create: call Destroy on what is not planned again
    ///
    /// Any thread; takes the lock for the sizing only. The objects of one step belong to one thread. Can take
    /// 60 s while address space is short.
    static DWORD MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp);

    /// The sizing pass of MemoryAlloc: sets charge and band height of each object and lowers the free budget.
    /// Stores are not made. The caller holds the lock and has set ms_MinBand.
    /// @param pRequest  nInCnt is the length of the list, nOutCnt 0 or 1
    /// @param ppList    inputs and temporaries, each with a store
    /// @param ppOut     its first object is the output; not read for nOutCnt 0
    /// @return 0; 89: objects that were charged before stay charged
    static DWORD MemoryCalculation(tag_MemAlloc* pRequest, CImageObj** ppList, CImageObj** ppOut);

    /// Gives back the charges of the objects whose store has a file. Takes the lock. Always returns 0.
    static DWORD MemoryReturn(CImageObj** ppObjects, int nCount);

    /// Gives back the charges of a step's outputs and temporaries, keeps their stores and sets their band
    /// heights to 0. Takes the lock. Always 0.
    static DWORD MemoryClear(tag_MemAlloc* pRequest, CImageObj** ppOut, CImageObj** ppTmp);

    /// Ends a step: sets the temporaries' ratios to 100 and their band heights to 0, and calls Destroy on
    /// each. A null array does nothing. Takes the lock. Always 0.
    static DWORD MemoryRelease(tag_MemAlloc* pRequest, CImageObj** ppTmp);

    // Bands -----------------------------------------------------------------------------------------------

    /// Maps the band that starts or ends at one image line. It has at most nBandLines lines, the height that
    /// the planner chose, and does not pass the image's edge. The pixels are the object's, and valid until
    /// UnmapBand(nSlot). Can take 60 s while address space is short.
    ///
    /// @param nLine       image line, 0 (top) to nHeight - 1
    /// @param pBand       out: pImage is the first pixel of line nBandTop; nLineBytes leads to the next line,
    ///                    nPixelBytes to the next pixel; the band ends with line nBandBottom. nFsize pixels
    ///                    and, as far as nMarginY reaches, lines around the band may be used too. Untouched
    ///                    after an error, but for a failed read of MapBandRange.
    /// @param nDirection  MM_DIRECTION
    /// @param nSlot       view slot, 0 to 9, that has no band
    /// @return 0; 97 line outside the image; 113 unknown direction; a code of MapBandRange
    DWORD MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot);

    /// Maps exactly the lines nFirst to nLast.
    ///
    /// A unit object reads the lines, and those of the frame that the image has, into a fresh buffer with
    /// four samples a pixel, which is charged to the budget. Of a frame beyond the image only the lines below
    /// are painted, by modes 1 to 3. The object holds one band at a time, whatever the slot: a band that is
    /// still held is ended first, as UnmapBand does it. nBandLines is then the number of lines mapped.
    ///
    /// @param nFirst, nLast  image lines. For an object with a store they may lie in the margins: only the
    ///                       ends of the buffer are checked.
    /// @param pBand, nSlot   as for MapBand
    /// @return 0; 33 unknown access mode; 98 first after last; 69 no address; 18 the range exceeds 32 bits.
    ///         For a unit object also 97 lines outside the image; 18 external lines that overlap, are too few
    ///         or lie beyond 4 GiB: a band that is still held stays; 1 no memory; 49 a read failed (logged).
    ///         After a failed read, or without memory to read with, the band is held with what was read, and
    ///         pBand describes it: the next UnmapBand writes it. A source's view that failed is only logged.
    DWORD MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot);

    /// Ends the band of a slot; does nothing when none is mapped. The band of a unit object, if it has a
    /// destination, is written there: its own lines and pixels, not its frame.
    /// @return 0; 18 no such slot; 81. For a unit object 1 or 49 (logged): the lines could not be appended to
    ///         the destination's file, and the band stays held. A view that failed is only logged.
    DWORD UnmapBand(int nSlot);

    /// Sets the frame mode. On an object with a store and a frame it also paints the frame around the image's
    /// last line, through slot 0, which must be free.
    /// @param nMode   MM_FRAME_MODE
    /// @param nColor  read for MM_FRAME_COLOR, not -1. A pixel is its first nPixelBytes bytes in memory
    ///                order; in pixels of more than 4 bytes each of its bytes becomes a 16-bit sample
    /// @return 0; 116 unknown mode, or MM_FRAME_COLOR with -1: nothing is changed; a code of mapping
    DWORD SetFrameColor(int nMode, int nColor);

    /// Finds the bitmap signature in the unit source and sets m_InImgInf.nOffset to 54 bytes behind it. Only
    /// a block, or a file of ACS_FILEIO, is searched; the signature is found where its two bytes lie in one
    /// piece of an unpadded line's length. The file's position is moved.
    /// @return 0, also when the source has no hData; 18 not a bitmap, nothing found, or an access type that
    ///         is not searched; 1 no memory; 49 (logged)
    DWORD CalcOffsetLength();

    // Blocks ----------------------------------------------------------------------------------------------

    /// Copies a rectangle, with the block's margin of surrounding pixels, into the caller's block.
    ///
    /// Bands are mapped in slot 0, which must be free. The object's geometry and band fields are afterwards
    /// what they were. A band that a unit object still holds is ended first, as UnmapBand does it; nothing
    /// else is written.
    ///
    /// @param nTop, nBottom, nLeft, nRight  lines and pixels of the image, all inclusive
    /// @param pBlock  the caller's record and buffer, usually from AllcImgBufLrg: pImage is the block's first
    ///                pixel, nMarginX and nMarginY its margin, nPixelBytes the object's. Its size becomes the
    ///                rectangle's, and its layout that of CalcAlign, for which the buffer must have room;
    ///                nBufSize stays.
    /// @return 0; 99 to 102 nTop, nBottom, nLeft, nRight outside the image; 18 the object or one of its
    ///         bands has another pixel size, an empty rectangle, or a margin that reaches past the object's;
    ///         33 a unit object that appends to its destination; 98 a band height below 1, as band mapping
    ///         says; another code of band mapping: the block is filled in part
    DWORD MapBlock(int nTop, int nBottom, int nLeft, int nRight, T_ImageLrg_tag* pBlock);

    /// Copies the block's own pixels, without its margin, back into the rectangle. Maps bands in slot 0,
    /// which must be free, and leaves the band fields as the last of them set them: further blocks of a unit
    /// object are moved in bands of that height until GetImageInfo is called. Empty rectangles are ignored.
    ///
    /// A unit object writes whole lines: beside the block those of its source, or zeros when it has none. A
    /// second block in the same lines therefore undoes the first.
    /// @return 0; 103 to 106 as 99 to 102; 18 the object or one of its bands has another pixel size; 33;
    ///         98; another code of band mapping
    DWORD UnMapBlock(int nTop, int nBottom, int nLeft, int nRight, T_ImageLrg_tag* pBlock);

    // Work buffers ----------------------------------------------------------------------------------------

    /// Calls the table's AllocWorkTable. The table stays the caller's.
    /// @return 0; 1 it failed, or pTable is null
    static DWORD AllocWorkMem(CWorkTableList* pTable);

    /// Calls the table's List_Free. Null does nothing.
    static void ReleaseWorkMem(CWorkTableList* pTable);

    // Reports ---------------------------------------------------------------------------------------------
    //
    // For a host to call; the library does not. One thread at a time: the name's buffer, the counters and the
    // tables have no lock. A report that is switched off (its table is null) returns 1 and counts nothing.
    // Otherwise 1 is success, and 0 a failed write or a null argument.

    /// Name of a processing step, in code page 932: the name of the step field of its identifier if that is
    /// known, else of the category, else of the function, else "no ID given". The buffer is the library's and
    /// keeps the text until the next call.
    static char* GetIpName(int nIpNo);

    /// Records memory, state and geometry of each image of a planned step in ms_WorkList, in the section with
    /// the step's name, and then calls UseMemoryListMax with the sum of their charges.
    /// @param ppIn, ppOut, ppTmp  arrays with as many objects as the request counts
    static int UseMemoryListImg(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut,
                                CImageObj** ppTmp);

    /// Adds nUsed bytes to the images' sum of the step nIpNo in ms_WorkList, and records its work memory (0:
    /// the library does not count it), the free budget, and the largest sum of a step so far.
    static int UseMemoryListMax(LONG nIpNo, LONG nUsed);

    /// Records in ms_ThreadList that the calling thread enters (bLeave 0) or leaves a step.
    /// @param pszWork  text of the host's, cut where the entry becomes too long; may be null
    static int ThreadList(LONG nIpNo, LONG bLeave, const char* pszWork);

    /// Records in ms_MapList the remainder of a mapped address, taken as a signed 32-bit number, by 16.
    /// @param pszName  text of the host's, cut where the entry becomes too long; may be null
    static int MapList(void* pAddress, const char* pszName);

    /// Switches the thread and the mapping list on. One that exists is kept; without memory one stays off.
    static void DbgCImgLogInit();

    /// Appends the lists to debugthread.txt and debugmap.txt in "..\logdata\trace\", if that folder exists,
    /// and deletes them, which switches them off.
    static void DbgCImgLogEnd();

    // Debug dumps -----------------------------------------------------------------------------------------

    /// Copies an image into the caller's flat buffer and destroys the object's image. Margins above and below
    /// are not copied. pFlat->pImage becomes the first pixel, without rounding. The bands of a unit object
    /// are read, and written where it has a destination.
    ///
    /// @param pFlat  the caller's record and committed block, usually from AllcImgBufLrg; its lines are as
    ///               long as the object's, and there are at least as many. The block stays the caller's
    ///               unless it is freed below; its charge always does.
    /// @return 0; 18 no block, lines that do not fit it or the object's, or an image that stands for an
    ///         external one: nothing is done; a code of band mapping, or 18 for bands of a unit object with
    ///         other lines: the block is freed, and pBase and pImage are null
    static DWORD DebugConvertT_Image(CImageObj* pObject, T_Image_tag* pFlat);

    /// Makes an image of a flat buffer: in memory, and charged, if the free budget has room for all of it;
    /// else in a temporary file that is not charged.
    ///
    /// @param pFlat  the caller's record and committed block, which this frees as told below. The block's
    ///               charge stays the caller's to give back.
    /// @return 0: the block is freed, and pBase and pImage are null; 18 no block, lines that do not fit it,
    ///         margins narrower than the object's frame, or an object that holds an image or a charge or is
    ///         in unit mode: nothing is done; 1 no memory, a code of Create, or 49 (logged): the block stays,
    ///         the object has its geometry and no image; a code of band mapping: the block is freed
    static DWORD DebugConvertCImageObj(T_Image_tag* pFlat, CImageObj* pObject);

    /// Writes the whole buffer, margins included, as a 32-bit bitmap "..\logdata\trace\<name>.bmp": of 8-byte
    /// pixels each 16-bit sample, else four bytes from the pixel's first on. An older file of that name is
    /// deleted first, whatever becomes of the new one. Nothing is written for unit objects, for objects
    /// without a store and for those that stand for an external image. Failures are silent; folders are not
    /// created.
    /// @param nScale  1: 16-bit samples hold 8-bit values; else 12-bit values
    void OutPutBmp(const char* pszName, int nScale);

    /// Writes the pixels of a flat buffer, without margins, as raw samples in the order 2, 1, 0 and as a
    /// 24-bit bitmap: "..\tmp\<name>_<width>x<height>.raw" and ".bmp". Samples of pixels of more than four
    /// bytes have 16 bits, and lose their low four in the bitmap. Nothing is written for pixels with fewer
    /// than three samples. Failures are silent; the buffer stays as it is.
    static void Output(const char* pszName, T_Image_tag* pFlat);

    // State -----------------------------------------------------------------------------------------------
    //
    // Read by planner, reports and import functions. A host that sets them answers for the invariants.

    LONG m_nAreaSize;         ///< bytes of the budget that are charged to this object
    CImageCtrl* m_pImageCtrl; ///< backing store, owned; null: none
    T_ImageLrg_tag m_ImgInfo; ///< geometry and band state
    int m_nAlpha;             ///< fourth sample of an external output: 1 all ones, 0 the object's own
    int m_nUnitBottomUp;      ///< unit mode: 1 when the source is stored turned by 180 degrees
    int m_nUnitMode;          ///< band access: 0 unify (own store), 1 unit (external images)
    int m_nUnitBandHeight;    ///< unit mode: band height of the set-up or of SetBandHeight; 0: none
    T_ImgInf m_InImgInf;      ///< unit mode: external source; a host may set its nOffset after the set-up
    T_ImgInf m_OutImgInf;     ///< unit mode: external destination
    int m_nUnitType;          ///< unit mode: role, given by the import functions
    HANDLE m_hInMap;          ///< unit mode: mapping of the source's file, owned; null: none
    HANDLE m_hOutMap;         ///< unit mode: mapping of the destination's file, owned; null: none
    int m_nOnMemory;          ///< 1: always held whole, by SetOnMemory or because the image is small
    int m_nKeepStore;         ///< 1: Destroy keeps the store; 0 unless a host sets it, and after MemoryClear
    int m_nReserveTaken;      ///< 1: the reserve is withheld while this object lives

    // The budget's numbers are in bytes. The lock guards the first three; a host sets the others, if at all,
    // before other threads use the library.

    static LONG ms_ReserveMemory;     ///< ceiling of the budget
    static LONG ms_FreeMemory;        ///< budget that is not charged; may be negative
    static LONG ms_MaxOneMappingSize; ///< most bytes that are mapped as one piece
    static LONG ms_nOnMemory;         ///< images up to this size are always held whole
    static LONG ms_nUseMaxBandMemory; ///< cap of SetUseMaxBandMemory
    static LONG ms_nUseMinBandMemory; ///< for hosts to read; the library does not use it
    static LONG ms_nUseMaxMemoryUnit; ///< most memory for a unit object's band when its height is chosen
    static int ms_MinBand;            ///< smallest band, in lines, of the step planned last; at least 16
    static CRITICAL_SECTION m_g_cs;   ///< the lock, as GetCS gives it

    static CWorkTableList* ms_WorkList;   ///< memory report, which the host makes and deletes; null: off
    static CWorkTableList* ms_ThreadList; ///< thread list, which DbgCImgLogInit makes; null: off
    static LONG ms_ThreadListCount;       ///< entries recorded in it
    static CWorkTableList* ms_MapList;    ///< mapping list, which DbgCImgLogInit makes; null: off
    static LONG ms_MapListCount;          ///< entries recorded in it

private:
    static DWORD _MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp);
    DWORD MapBandRangeForUnify(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot);
    DWORD MapBandRangeForUnit(int nFirst, int nLast, T_ImageLrg_tag* pBand);
    DWORD ReadUnitBand();
    DWORD EndUnitBand();
    void ReadDataMem(int nLineBytes, int nPosition, int nClass, int nExtra);
    DWORD ReadDataFile(int nLineBytes, int nPosition, int nClass, int nExtra);
    DWORD WriteDataMem(int nPosition);
    DWORD WriteDataFile(int nPosition);
    DWORD SetFrameColorForUnit(int nMode, int nExtra);
    DWORD FillColor(T_ImageLrg_tag band, int nColor);
    void TUpFrame1(T_ImageLrg_tag band);
    void TUpFrame2(T_ImageLrg_tag band);
    void TUpFrame3(T_ImageLrg_tag band);
    void TUpFrame4(T_ImageLrg_tag band, int nColor);

    static LONG ms_nWorkMemory; ///< work memory shown by reports
};

/// Counts where a planned step's images are, and tells the band heights of the first input and the first
/// output. The counters are only added to: the caller sets them to 0 first.
///
/// An image counts as in memory when its charge covers it (IsOnMemory). An image without such a charge is
/// mapped whole if its band height is its height. If the first input is, all inputs count as in memory, and
/// likewise all outputs; temporaries do from the first one on that is. The others count as in files.
///
/// @param pRequest            the counts; null does nothing
/// @param ppIn, ppOut, ppTmp  arrays with as many objects as the request counts; null: that kind is skipped
/// @param nInBand, nOutBand   in lines; left alone when the first image of the list is not banded
MM_API void GetImageObjMemState(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut,
                                CImageObj** ppTmp, int& nInMemory, int& nOutMemory, int& nTmpMemory,
                                int& nInFile, int& nOutFile, int& nTmpFile, int& nInBand, int& nOutBand);
