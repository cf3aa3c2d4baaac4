#pragma once
// An image object that stands for an external image in another sample layout.

#include "MemoryManager/CImageObj.h"

#include <cstdint>

class CImageCtrlIO;

/// An image in the host's file or block, and the conversion of its bands: m_ImgInfo describes the image as
/// the pipeline sees it, m_ImgInfoIO its external layout.
///
/// The order of calls: construct; set up with one of the three InitFor operations; plan with MemoryAlloc; map
/// and unmap bands. Only InitForUnify gives the object a store, and without one it can be neither planned nor
/// mapped.
///
/// Invariant: nBandTop and nBandBottom of both records tell the external band that was mapped last, but
/// MapBandRange sets those of m_ImgInfo only, and MapBandRangeBuf those of m_ImgInfoIO only.
///
/// The host's file and block stay the host's: they are never closed or freed, with the one exception that
/// CImageCtrlIO::Create tells, and must outlive the object's use. No pointer argument may be null unless its
/// description says so. Results are the codes of ResultCodes.h. An object is used by one thread at a time;
/// planning and destruction take the library's lock for the budget.
class MM_API CImageObjIO : public CImageObj
{
public:
    /// No store and no geometry: all fields of both records are 0 but for the ratio of 100, and the file type
    /// is -1. Work-buffer mode and conversion are on.
    CImageObjIO();

    /// Shallow: both objects then refer to one store and one charge, which the destructors of both would
    /// release. Copy only an object without a store.
    CImageObjIO(const CImageObjIO& other);
    CImageObjIO& operator=(const CImageObjIO& other);

    /// Releases store and charge. The host's file and block stay as they are. Not virtual: destroy an object
    /// through a pointer of its own class.
    ~CImageObjIO();

    // Set-up ----------------------------------------------------------------------------------------------

    /// Binds the object to an external image through a store of its own. What an earlier set-up made is
    /// destroyed first. A bitmap input is searched for its signature from the file's start; a bitmap output
    /// gets its 54-byte header, for which a file of ACS_MMF is empty. An image of the role IMG_WORK is
    /// neither searched nor given a header.
    ///
    /// @param pInf         the external image, copied; nLineBytes is not read. A store of ACS_MMF reads and
    ///                     writes the file through views, one of ACS_FILEIO through a buffer.
    /// @param eRole        IMG_INPUT: nSrcFormat is the external format and nDstFormat the object's; any
    ///                     other role: the other way round
    /// @param nMarginX     pixels that lie on both sides of each external line
    /// @param nMarginY     lines that lie above and below the external picture
    /// @param nSearch      means nothing
    /// @param nAlign       MM_ALIGN type of the object's buffer, whose margins are 16 pixels and lines.
    ///                     External lines are packed.
    /// @param nBottomUp    1: the external lines are stored last line first
    /// @param nTmpBufMode  0: external bands lie in the store; 1: in the store's work buffer. With any other
    ///                     value the planner refuses the object.
    /// @return 0; 18 a negative size, one that does not fit 32 bits, or an unsupported alignment: nothing has
    ///         changed; 1 no memory for the store: the object has none; 49 no bitmap signature, or a header
    ///         that was not written (logged), or 18 a header of a negative length or beyond 32 bits: the
    ///         store is there, with header and file size 0, and is destroyed with the object or by the next
    ///         set-up
    DWORD InitForUnify(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch,
                       int nAlign, int nBottomUp, int nTmpBufMode);

    /// Fills m_ImgInfo with the geometry that a unit object's SetImageInfo completes: the description's size,
    /// nSrcFormat with four samples a pixel, the margins and the alignment type. Makes no store and lays no
    /// buffer out; m_nLinePad becomes 0. Of the description, nFileType, nWidth, nHeight and nSrcFormat are
    /// read.
    ///
    /// @param nMarginX, nMarginY            margin pixels on each side, margin lines above and below
    /// @param nAlign                        MM_ALIGN argument
    /// @param nBottomUp                     stored in m_nBottomUp
    /// @param eRole, nSearch, nTmpBufMode   mean nothing
    /// @return 0 always: nothing is checked
    DWORD InitForUnit(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch,
                      int nAlign, int nBottomUp, int nTmpBufMode);

    /// Fills m_ImgInfo so that it describes the host's pixels where they are: pImage becomes hData, plus 54
    /// for a bitmap. Makes no store and leaves m_ImgInfoIO alone. Of the description, nFileType, hData,
    /// nWidth, nHeight and nSrcFormat are read; hData is taken for an address, whatever eAcsType says.
    ///
    /// The layout is that of a buffer with nSrcFormat, the margins and the alignment. It fits the host's
    /// pixels when both margins are 0 and the alignment is packed, but for the padding of bitmap lines:
    /// nLineBytes does not include it. The next line begins nLineBytes + m_nLinePad bytes further.
    ///
    /// @param nMarginX, nMarginY            make the described lines longer and more; pImage does not move
    /// @param nAlign                        MM_ALIGN argument. An unsupported one is accepted: the layout
    ///                                      fields (nBufSize, nLineBytes, nAllocWidth, nAllocHeight,
    ///                                      nLineSamples) then stay as they were.
    /// @param nBottomUp                     stored in m_nBottomUp
    /// @param eRole, nSearch, nTmpBufMode   mean nothing
    /// @return 0; 18 a negative size, or a layout that does not fit 32 bits: nothing has changed
    DWORD InitForCMS(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch, int nAlign,
                     int nBottomUp, int nTmpBufMode);

    // Planning --------------------------------------------------------------------------------------------

    /// Plans one step of a pipeline object and an I/O object, without temporaries. The first object of each
    /// list gets the ratio 100.
    ///
    /// An input of the role IMG_INPUT with an output of the role IMG_WORK reaches the planner with inputs and
    /// outputs exchanged, so that the pipeline object's band decides. The request itself is not changed.
    ///
    /// @param pRequest     null is refused; nTmpCnt is 0
    /// @param ppIn, ppOut  arrays with the request's counts of objects; null for a count of 0
    /// @return as CImageObj::MemoryAlloc; 18 also for a null request
    static DWORD MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut);

    /// Copies m_ImgInfoIO into the caller's record.
    void GetImageInfo(T_ImageLrg_tag* pInfo) override;

    /// As CImageObj::SetBandInfo, but the lines are external ones and the band height is m_ImgInfoIO's.
    int SetBandInfo(int nBand, int nCount) override;

    /// Bytes that hold the image whole: the object's buffer and, in work-buffer mode, the external image.
    /// -1: an unknown mode, or more bytes than 32 bits hold.
    int GetAreaSize() override;

    /// Makes the store. In work-buffer mode nAllotted is divided in the proportion of the line lengths: one
    /// part becomes the work buffer, in which external bands lie, the other is allotted to the store. The
    /// lines for which both have room become the band height of both records.
    ///
    /// What an earlier call made for the same sizes stays, with its content and addresses, and so does a band
    /// height that was lowered since, but not to 0.
    ///
    /// @param nSize, nAllotted, nSlots  as for CImageObj::Create
    /// @return 0; 1 no memory; 18 the object has no store over an external image; a code of
    ///         CImageCtrlIO::Create. After a failure the band heights are as they were.
    DWORD Create(LONG nSize, LONG nAllotted, int nSlots) override;

    /// Height of the external band, in lines.
    int GetBandHeight() override;

    void GetImageInfoIO(T_ImageLrg_tag* pInfo); ///< the same operation as GetImageInfo

    /// Sets what the fourth sample of an external pixel receives on output: 1 all ones; 0 the object's fourth
    /// sample, or all ones when it has none. With any other value an output of four samples is not converted.
    void SetAlpha(int nAlpha);

    // Bands -----------------------------------------------------------------------------------------------
    //
    // A band is valid until UnmapBand of its slot. It lies in external bytes: an output is filled by
    // UnmapBand with a buffer. An input is converted while it is mapped. MapBandRangeBuf converts it to the
    // caller's address. MapBand and MapBandRange convert it into the store's work buffer, to the offset that
    // the band's first line has in an image of the object's layout, if the buffer has room there; there is
    // such a buffer in work-buffer mode only. With m_nBottomUp 1, converting reverses the lines of a band.

    /// Maps the external band that starts or ends at one line. It has at most m_ImgInfoIO.nBandLines lines
    /// and ends at the image's edge.
    ///
    /// In work-buffer mode nothing is read from the file: the band is the start of the work buffer as it is.
    ///
    /// @param nLine       external line, 0 .. nHeight - 1
    /// @param pBand       out: a copy of m_ImgInfo with the lines of the band. pImage is the band's first
    ///                    pixel in the external bytes, and null when the store has no address for them.
    ///                    Untouched after an error.
    /// @param nDirection  MM_DIRECTION
    /// @param nSlot       view slot, 0 .. 9. A view of access type 0 always goes to slot 0: pass 0, or
    ///                    UnmapBand does not find it.
    /// @return 0, even when pImage is null; 18 the object has no store over an external image; 107 line
    ///         outside the image; 118 unknown direction
    DWORD MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot);

    /// Maps exactly the external lines nFirst to nLast, through the store in either mode. Whether the lines
    /// belong to the image is not checked: the store only refuses bytes that start outside its data.
    ///
    /// @param pBand  out, as for MapBand; of an output, pImage keeps the value that m_ImgInfo.pImage has
    /// @param nSlot  as for MapBand
    /// @return 0; 70 no address; 108 first line after last
    DWORD MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot);

    /// Maps the external lines nFirst to nLast in slot 0 and converts them to pDst.
    ///
    /// @param pDst   first pixel of a band in the object's layout, whose lines are m_ImgInfo.nLineBytes apart
    /// @param pBand  out: nBandTop, nBandBottom and pImage (pDst) are set, the other fields stay
    /// @return 0; 71 the store has no address, or there are no such lines in the image: nothing is converted
    DWORD MapBandRangeBuf(int nFirst, int nLast, unsigned char* pDst, T_ImageLrg_tag* pBand);

    /// Ends a band without converting it. An output of ACS_FILEIO is written to its file with what the band
    /// holds by then.
    /// @param nSlot  the slot of the mapping; of access type 0 slot 0
    /// @return 0; 18 no store over an external image, or no such slot; 49 (logged) not written: the band
    ///         stays on loan; 82 a view could not be released
    DWORD UnmapBand(int nSlot);

    /// Converts a band of the object's layout into the band that the store has on loan, and ends that as the
    /// other UnmapBand does. Can take a minute while the disk is full.
    ///
    /// @param pBuffer  first pixel of the lines m_ImgInfo.nBandTop to nBandBottom, m_ImgInfo.nLineBytes
    ///                 apart; null: they are at the start of the store's work buffer
    /// @return as the other UnmapBand. 18 also when a null pBuffer finds no work buffer with room for the
    ///         lines, or when the converted lines need more bytes than the store has on loan, as after a band
    ///         that has ended: nothing is ended. A band of MapBand in the work buffer is on loan only while
    ///         the store holds the image whole.
    DWORD UnmapBand(unsigned char* pBuffer, int nSlot);

    T_ImageLrg_tag m_ImgInfoIO; ///< layout of the external image, header included in nBufSize
    int m_nBottomUp;            ///< 1: the external lines are stored last line first
    int m_nFileType;            ///< MM_FILE_TYPE; -1 until set up
    int m_nLinePad;             ///< padding bytes at the end of each external line, 0 to 3
    int m_nTmpBufMode;          ///< 1: external bands lie in the store's work buffer; 0: in the store
    int m_nConvert;             ///< 1: bands are converted; any other value: they are mapped and ended only

private:
    /// The store that InitForUnify made; null when there is none, or one that SetImageInfo made.
    CImageCtrlIO* Store() const;

    /// The store's address of a range of external bytes; null when there is no such range.
    unsigned char* MapExternal(std::int64_t nOffset, std::int64_t nBytes, int nSlot);

    /// Whether nLines converted lines fit the band on loan and, when the store holds the image whole, the
    /// image too. The bands of the two records may differ, and the loan may be shorter than both.
    bool LendsRoomFor(std::int64_t nLines) const;

    /// Position in the image data of the first of the nLines lines on loan. It lies behind the frame of a
    /// band that was mapped with one.
    std::int64_t FirstLineOnLoan(std::int64_t nLines) const;

    /// Converts an input band into the work buffer, at the place of the object's line nFirst. Nothing is
    /// converted when the buffer has no room for those lines, or an external band that lies in the buffer
    /// itself would be overwritten.
    void ConvertToWorkBuffer(int nFirst, int nLast);

    /// Convert as many lines as nFirst to nLast are; the first of them lie at pSrc and pDst. A combination of
    /// layouts that is not supported writes nothing.
    void ConvertInData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                       T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo);
    void ConvertOutData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                        T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo);
};
