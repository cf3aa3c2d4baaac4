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

/// Frame fill modes: what a frame pixel or line at distance j beyond an image edge takes.
enum MM_FRAME_MODE : int
{
    MM_FRAME_NONE = 0,        ///< nothing is painted
    MM_FRAME_REPLICATE = 1,   ///< the edge itself
    MM_FRAME_MIRROR = 2,      ///< j inside the edge: the edge is not repeated
    MM_FRAME_MIRROR_EDGE = 3, ///< j - 1 inside the edge
    MM_FRAME_COLOR = 4,       ///< a fixed colour
};

/// An image whose data lies in a committed block or in a temporary file, and which a step reaches band by
/// band.
///
/// Invariants: IsOnMemory() is 1 exactly when m_ImgInfo.nBufSize <= m_nAreaSize. m_ImgInfo.nFsize set by
/// SetFsize never exceeds nMarginX. While nothing is clipped, withheld or dropped (see MemoryAlloc), the free
/// budget and the m_nAreaSize of all objects add up to the reserve.
///
/// A unit object (m_nUnitMode 1) has no image of its own: each band is read from one external image and
/// written to another, which the unit import functions describe to it. While it holds a band, m_ImgInfo.pBase
/// is that band's buffer; else it is null.
///
/// An object is used by one thread at a time and has no lock of its own. Results are the codes of
/// ResultCodes.h. Bands are released before their object is planned again or destroyed.
class MM_API CImageObj
{
public:
    // Life cycle ------------------------------------------------------------------------------------------

    /// No store and no geometry: SetImageInfo makes both.
    CImageObj();

    /// The source's geometry, a new empty store, no band state.
    explicit CImageObj(CImageObj* pSrc);

    /// The source's geometry with each argument above 0 in place of its width, height and bytes per pixel.
    /// A pixel size that differs from sample bytes * samples is kept, and sizes the lines.
    CImageObj(CImageObj* pSrc, int nWidth, int nHeight, int nPixelBytes);

    /// The source's geometry with a new size (arguments above 0), margins, samples and alignment type;
    /// nFormat keeps the source's value. Here and above: a size without a layout gives an object that the
    /// planner refuses (GetAreaSize() is -1).
    CImageObj(CImageObj* pSrc, int nWidth, int nHeight, int nMarginX, int nMarginY, int nFormat, int nAlign);

    /// Shallow: both objects then refer to one store and one charge, and only one of them may be destroyed
    /// while it holds them.
    CImageObj(const CImageObj& other);
    CImageObj& operator=(const CImageObj& other);

    /// Gives back a withheld reserve, destroys the image, frees a unit band that is still held without
    /// writing it, and closes the unit mappings. Not virtual: destroy an object through a pointer of its own
    /// class.
    ~CImageObj();

    /// Resets the band state: ratio 100; band, frame size and frame mode 0.
    void InitObj();

    /// Gives the object a geometry and completes the caller's record in place: samples and pixel size from
    /// nFormat, layout by CalcAlign. Makes a store when there is none. In unit mode pixels have four samples,
    /// the band height stays, and an image too large for any buffer is laid out by its lines: nBufSize is -1.
    /// @return 0; 18 the layout does not fit 32 bits, or a unit band is held; 1 no store could be allocated;
    ///         nothing is changed then
    DWORD SetImageInfo(T_ImageLrg_tag* pInfo);

    /// Copies the geometry record out. In unit mode the band height is then that of the set-up again, after
    /// bands of other heights.
    virtual void GetImageInfo(T_ImageLrg_tag* pInfo);

    /// Sets charge and band height for the planner; the budget is the planner's to lower.
    /// @param nBand   buffer lines of one band with its frame; 0 or less: the whole image
    /// @param nCount  band buffers
    /// @return the new charge in bytes, at most INT32_MAX
    virtual int SetBandInfo(int nBand, int nCount);

    /// Bytes needed to hold the image whole.
    virtual int GetAreaSize();

    /// Makes the store after planning, or maps the file that it already has.
    /// @param nSize      bytes of the whole image
    /// @param nAllotted  bytes of the budget allotted to it
    /// @param nSlots     view slots, 1 to 10, of a store made here
    /// @return 0; 18 no store; 66; a code of CImageCtrl::Create. The charge stays in m_nAreaSize.
    virtual DWORD Create(LONG nSize, LONG nAllotted, int nSlots);

    /// Band height in lines.
    virtual int GetBandHeight();

    DWORD SetBandHeight(int nLines); ///< lowers the band height; 117 below 0 or above the current one
    DWORD SetFsize(int nSize);       ///< sets the frame size; 114 below 0 or above nMarginX
    DWORD SetRatio(int nPercent);    ///< sets the planner's weight; 115 below 0
    void SetOnMemory();              ///< the planner keeps this image whole, for the object's life
    int IsOnMemory();                ///< 1: the charge covers the whole image

    /// Gives the charge back and destroys the store, unless m_nKeepStore is 1.
    /// @return 0, or the store's code
    DWORD Destroy();

    /// Turns an image in memory, or a file mapped whole, into a file reached through band views, and gives
    /// its charge back.
    /// @return 0; 49 (logged) or 18 (the geometry has more bytes than the block): the image is as it was
    DWORD CnvFileImg();

    /// Swaps geometry, store and charge with another object. The charge of a file that comes in is given
    /// back: it is planned afresh.
    void ExchangeImg(CImageObj* pOther);

    /// Destroys the source's image and makes the target a plain copy of the source; the reserve mark and the
    /// unit mappings move. Precondition: the target holds no store and no charge, for nothing of it is
    /// released.
    static void ExchangeImg(CImageObj* pTarget, CImageObj* pSource);

    // Geometry --------------------------------------------------------------------------------------------

    /// The layout that AllcImgBufLrg would make. nBufferSize and nLineBytes in bytes, nBufferWidth in
    /// pixels, nBufferHeight in lines, margins included.
    /// @return 0; 18 unsupported alignment or sample size, or it does not fit 32 bits: nothing written
    DWORD CalcImgBufLrg(int& nBufferSize, int& nLineBytes, int& nBufferWidth, int& nBufferHeight, int nWidth,
                        int nHeight, int nMarginX, int nMarginY, int nFormat, int nAlign);

    /// Recomputes nAllocWidth, nAllocHeight, nLineBytes, nBufSize and nLineSamples of a record from its size,
    /// margins, nPixelBytes, nSampleBytes, nSamples and nAlignType.
    /// @return 0; 18 as above
    DWORD CalcAlign(T_ImageLrg_tag* pInfo);

    /// Allocates a standalone buffer, charges the budget for it whatever is left, and fills the record's
    /// fields from pBase to nAlignType. Waits up to 60 s while memory is short.
    /// @return 0; 1 no memory; 18: nothing charged, nothing written
    static DWORD AllcImgBufLrg(T_ImageLrg_tag* pInfo, int nWidth, int nHeight, int nMarginX, int nMarginY,
                               int nFormat, int nAlign);

    /// Frees such a buffer and gives nBufSize back; a null pBase does nothing. The record is not changed:
    /// free it once.
    static void FreeImgBufLrg(T_ImageLrg_tag* pInfo);

    // Budget ----------------------------------------------------------------------------------------------

    /// Sizes the budget, in bytes, while nothing is allotted. The reserve becomes at least ms_nOnMemory; the
    /// one-mapping size lies between that and the reserve, and is at most 32 MiB. Always 0. Any thread.
    static DWORD InitBaseMemory(LONG nReserve, LONG nOneMapping);

    /// Gives d bytes back (or charges them, d < 0), clipped at the reserve. Always 0. The caller holds the
    /// lock.
    static DWORD UpdateUseMemory(LONG d);

    /// Takes the whole free budget; the caller holds the lock and gives the rest back before it releases it.
    static LONG AskUseMemory();

    static LONG AskFreeMemory();               ///< free budget in bytes
    static LONG GetUseMaxBandMemory();         ///< bytes
    static int SetUseMaxBandMemory(LONG nMiB); ///< 18 below 1, or 2048 and more
    static LONG GetUseMinBandMemory();         ///< bytes
    static CRITICAL_SECTION* GetCS();          ///< the library's one, recursive lock

    // Planner ---------------------------------------------------------------------------------------------

    /// Plans one step inside the budget and makes every image's store. When that fails and the step has an
    /// input, it clears the step, withholds the reserve until the first input's destructor (not its Destroy)
    /// gives it back, and plans once more with smallest bands. Charges whose store could not be made are
    /// dropped: they do not come back to the budget until InitBaseMemory.
    ///
    /// @param ppIn, ppOut, ppTmp  arrays with the request's counts of objects; null for a count of 0
    /// @return 0: every image has its store; 18 a null object, one without a store or geometry, or counts out
    ///         of range: nothing charged; 88; 89; a code of Create
    ///
    /// Any thread; the objects of one step belong to one thread. Band heights are then in m_ImgInfo.
    static DWORD MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut, CImageObj** ppTmp);

    /// The sizing pass over nInCnt listed objects and the output. The caller holds the lock.
    /// @return 0; 89
    static DWORD MemoryCalculation(tag_MemAlloc* pRequest, CImageObj** ppList, CImageObj** ppOut);

    /// Gives back the charges of those objects whose store has a file. Always 0.
    static DWORD MemoryReturn(CImageObj** ppObjects, int nCount);

    /// Gives back the charges of outputs and temporaries and keeps their stores. Always 0.
    static DWORD MemoryClear(tag_MemAlloc* pRequest, CImageObj** ppOut, CImageObj** ppTmp);

    /// Destroys the temporaries' images at the end of a step. Always 0.
    static DWORD MemoryRelease(tag_MemAlloc* pRequest, CImageObj** ppTmp);

    // Bands -----------------------------------------------------------------------------------------------

    /// Maps the band that starts or ends at one image line.
    ///
    /// The band has at most nBandLines lines, the height the planner chose, and ends at the image's edge.
    ///
    /// @param nLine       image line, 0 (top) .. nHeight - 1
    /// @param pBand       out: pImage is the first pixel of line nBandTop; nLineBytes leads to the next line,
    ///                    nPixelBytes to the next pixel; nBandLines lines. nFsize pixels and, as far as
    ///                    nMarginY reaches, lines around the band may be used too. Untouched after an error.
    /// @param nDirection  MM_DIRECTION
    /// @param nSlot       view slot, 0 .. 9
    /// @return 0; 97 line outside the image; 113 unknown direction; or what MapBandRange returns
    ///
    /// The pixels stay the object's, and valid until UnmapBand(nSlot). Can take 60 s while address space is
    /// short.
    DWORD MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot);

    /// Maps exactly the lines nFirst to nLast.
    ///
    /// A unit object reads the lines, and those of the frame that the image has, into a fresh buffer with
    /// four samples a pixel, which is charged to the budget. It holds one band at a time, whatever the slot:
    /// a band still held is ended first, as UnmapBand does it. nBandLines is then the number of lines mapped.
    ///
    /// @param nFirst, nLast  image lines; of an object with a store only the buffer's ends are checked
    /// @param pBand, nSlot   as for MapBand
    /// @return 0; 33 unknown access mode; 98 first after last; 69 no address; 18 the range exceeds 32 bits;
    ///         of a unit object also 97 lines outside the image; 18 external lines that overlap, are too few
    ///         or lie beyond 4 GiB: a band still held stays; 1 no memory; 49 a read failed (logged).
    ///         After a failed read, or without memory to read with, the band is held, with what was read, and
    ///         pBand tells of it: the next UnmapBand writes it.
    DWORD MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot);

    /// Ends the band of a slot; nothing to do when none is mapped. The band of a unit object, if it has a
    /// destination, is written there: its own lines and pixels, not its frame.
    /// @return 0; 18 no such slot; 81; of a unit object 1 or 49 (logged): the lines could not be appended
    ///         to the destination's file and the band stays held. What a mapped destination's view could not
    ///         take is logged only.
    DWORD UnmapBand(int nSlot);

    /// Sets the frame mode and, on an object with a frame, paints the frame round the image's last line.
    /// Mode 4 takes the first nPixelBytes bytes of the colour in memory order; 8-byte pixels take each of its
    /// bytes as one 16-bit sample. Uses slot 0.
    /// @return 0; 116 mode outside 0 to 4, or mode 4 with colour -1; a code of band mapping
    DWORD SetFrameColor(int nMode, int nColor);

    /// Finds the bitmap signature in the unit source and sets m_InImgInf.nOffset to 54 bytes behind it. Only
    /// a block or a file read with file reads is searched; a signature is found where its two bytes lie in
    /// one piece of an unpadded line's length.
    /// @return 0, also when the source has no hData; 18 nothing found or not to be searched; 1; 49 (logged)
    DWORD CalcOffsetLength();

    // Blocks ----------------------------------------------------------------------------------------------

    /// Copies a rectangle, with the block's margin of surrounding pixels, into the caller's block.
    ///
    /// Goes through bands in slot 0, which must be free. The object's geometry and band fields are afterwards
    /// what they were. Of a unit object nothing is written.
    ///
    /// @param nTop, nBottom, nLeft, nRight  lines and pixels of the image, inclusive
    /// @param pBlock  the caller's record and buffer, usually from AllcImgBufLrg: pImage is the block's first
    ///                pixel, nMarginX and nMarginY its margin, nPixelBytes the object's. Its size becomes the
    ///                rectangle's, and its layout that of CalcAlign, for which the buffer must have room;
    ///                nBufSize stays.
    /// @return 0; 99 to 102 nTop, nBottom, nLeft, nRight outside the image; 18 other pixels, an empty
    ///         rectangle, or a margin that reaches past the object's; 33 a unit object that appends; a code
    ///         of band mapping, and the block is then filled in part
    DWORD MapBlock(int nTop, int nBottom, int nLeft, int nRight, T_ImageLrg_tag* pBlock);

    /// Copies the block's own pixels, without its margin, back into the rectangle. Maps bands in slot 0 and
    /// leaves the band fields as the last of them set them: on a unit object the next blocks go by the lines
    /// of its last band until GetImageInfo is called. An empty rectangle does nothing.
    ///
    /// A unit object writes whole lines: beside the block those of its source, so that a second block in the
    /// same lines undoes the first; without a source zero.
    /// @return 0; 103 to 106 as 99 to 102; 18 other pixels; 33; a code of band mapping
    DWORD UnMapBlock(int nTop, int nBottom, int nLeft, int nRight, T_ImageLrg_tag* pBlock);

    // Work buffers ----------------------------------------------------------------------------------------

    static DWORD AllocWorkMem(CWorkTableList* pTable);  ///< AllocWorkTable; 0, or 1 if it failed or for null
    static void ReleaseWorkMem(CWorkTableList* pTable); ///< List_Free; null does nothing

    // Reports ---------------------------------------------------------------------------------------------
    //
    // For a host to call; the library does not. One thread at a time: the name's buffer, the counters and the
    // tables have no lock. A report that is switched off, its table null, returns 1 and counts nothing; 0 is
    // a failed write, or a null argument.

    /// Name of a processing step, code page 932: of the step field of its identifier if that is known, else
    /// of the category, else of the function, else "no ID given". The buffer is the library's, and keeps the
    /// text until the next call.
    static char* GetIpName(int nIpNo);

    /// Records memory, state and geometry of each of a planned step's images in ms_WorkList, in the section
    /// of the step's name, and adds them up.
    static int UseMemoryListImg(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut,
                                CImageObj** ppTmp);

    /// Adds nUsed bytes to those of the step's images, and records its work memory, the budget left, and the
    /// largest sum of a step so far.
    static int UseMemoryListMax(LONG nIpNo, LONG nUsed);

    /// Records that the calling thread enters (bLeave 0) or leaves a step. Long texts are cut.
    static int ThreadList(LONG nIpNo, LONG bLeave, const char* pszWork);

    /// Records how far a mapped address is from a multiple of 16 bytes. Long names are cut.
    static int MapList(void* pAddress, const char* pszName);

    /// Switches the thread and the mapping list on; lists that exist are kept.
    static void DbgCImgLogInit();

    /// Appends the lists to debugthread.txt and debugmap.txt in "..\logdata\trace\", if that folder
    /// exists, and switches them off.
    static void DbgCImgLogEnd();

    // Debug dumps -----------------------------------------------------------------------------------------

    /// Copies an image into the caller's flat buffer and destroys the object's image; margins above and below
    /// are not copied. pImage becomes the first pixel, without rounding. A unit object's bands are read, and
    /// written where it has a destination.
    ///
    /// @param pFlat  the caller's record and committed block, usually from AllcImgBufLrg, whose charge stays
    ///               the caller's to give back; its lines are as long as the object's, and at least as many
    /// @return 0; 18 no block, lines that do not fit it or the object's, or an image that stands for an
    /// external
    ///         one: nothing is done; a code of band mapping, or 18 for bands of a unit object with other
    ///         lines: the block is freed, pBase null
    static DWORD DebugConvertT_Image(CImageObj* pObject, T_Image_tag* pFlat);

    /// Makes an image of a flat buffer: in memory, charged, if the free budget has room for all of it, else
    /// in a temporary file that costs the budget nothing. The flat block's own charge, if any, is the
    /// caller's to give back.
    /// @return 0: the flat block is freed, pBase null; 18 no block, lines that do not fit it, or an object
    ///         that holds an image or a charge or is in unit mode: nothing is done; 1 no memory, a code of
    ///         Create, or 49 (logged): the flat block stays, the object has its geometry and no image; a code
    ///         of band mapping: the flat block is freed
    static DWORD DebugConvertCImageObj(T_Image_tag* pFlat, CImageObj* pObject);

    /// Writes the whole buffer, margins included, as a 32-bit bitmap "..\logdata\trace\<name>.bmp": of 8-byte
    /// pixels each 16-bit sample, else the pixel's first four bytes. Of unit objects, objects without a store
    /// and those that stand for an external image nothing is written. Failures are silent; folders are not
    /// created.
    /// @param nScale  1: 16-bit samples hold 8-bit values; else 12-bit values
    void OutPutBmp(const char* pszName, int nScale);

    /// Writes the pixels of a flat buffer, without margins, as raw samples in the order 2, 1, 0 and as a
    /// 24-bit bitmap: "..\tmp\<name>_<width>x<height>.raw" and ".bmp". Samples of pixels of more than four
    /// bytes have 16 bits, and lose their low four in the bitmap. Pixels with fewer than three samples are
    /// not written. Failures are silent.
    static void Output(const char* pszName, T_Image_tag* pFlat);

    // State, read by planner, reports and the import functions ----------------------------------------------

    LONG m_nAreaSize;         ///< bytes of the budget charged to this object
    CImageCtrl* m_pImageCtrl; ///< backing store, owned
    T_ImageLrg_tag m_ImgInfo; ///< geometry and band state
    int m_nAlpha;             ///< fourth sample of an external output: 1 all ones, 0 the object's own
    int m_nUnitBottomUp;      ///< unit mode: 1 when the source is stored turned by 180 degrees
    int m_nUnitMode;          ///< band access: 0 unify (own store), 1 unit (external images)
    int m_nUnitBandHeight;    ///< unit mode: band height of the set-up or of SetBandHeight
    T_ImgInf m_InImgInf;      ///< unit mode: external source
    T_ImgInf m_OutImgInf;     ///< unit mode: external destination
    int m_nUnitType;          ///< role code given by the import functions
    HANDLE m_hInMap;          ///< unit mode: mapping of the source file, closed by the destructor
    HANDLE m_hOutMap;         ///< unit mode: mapping of the destination file, closed by the destructor
    int m_nOnMemory;          ///< 1: always held whole
    int m_nKeepStore;         ///< 1: Destroy keeps the store
    int m_nReserveTaken;      ///< 1: the reserve is withheld while this object lives

    static LONG ms_ReserveMemory;     ///< ceiling of the budget
    static LONG ms_FreeMemory;        ///< budget not yet allotted; may be negative
    static LONG ms_MaxOneMappingSize; ///< most bytes that are mapped as one piece
    static LONG ms_nOnMemory;         ///< images up to this size are always held whole
    static LONG ms_nUseMaxBandMemory; ///< most bytes of an output's band when all other images fit
    static LONG ms_nUseMinBandMemory; ///< for hosts to read; sizes nothing
    static LONG ms_nUseMaxMemoryUnit; ///< band memory cap of the unit import
    static int ms_MinBand;            ///< smallest band height of the last planned step, at least 16
    static CRITICAL_SECTION m_g_cs;   ///< the lock that GetCS gives

    static CWorkTableList* ms_WorkList;   ///< memory report; the host makes, flushes and deletes it
    static CWorkTableList* ms_ThreadList; ///< thread list; null: off
    static LONG ms_ThreadListCount;       ///< entries recorded in it
    static CWorkTableList* ms_MapList;    ///< mapping list; null: off
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

/// Counts where a step's images are: in memory (or mapped whole) or in files, and the band heights of first
/// input and output. It only adds: the caller sets the counters to 0 first. A null request does nothing.
MM_API void GetImageObjMemState(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut,
                                CImageObj** ppTmp, int& nInMemory, int& nOutMemory, int& nTmpMemory,
                                int& nInFile, int& nOutFile, int& nTmpFile, int& nInBand, int& nOutBand);
