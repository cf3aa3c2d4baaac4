#pragma once
// An image object that stands for an external image in another sample layout.

#include "MemoryManager/CImageObj.h"

#include <cstdint>

class CImageCtrlIO;
struct T_ImgInf;

/// Wraps a host's file or block: m_ImgInfo is the image as the pipeline sees it, m_ImgInfoIO the external
/// layout. Every band is converted between the two.
///
/// Invariant: the band fields of both records describe the external band that was mapped last, but
/// MapBandRange leaves those of m_ImgInfoIO alone and MapBandRangeBuf those of m_ImgInfo.
///
/// Construct, set up with one of the three InitFor operations, plan with MemoryAlloc, map bands. Only
/// InitForUnify gives the object a store: until then it can be neither planned nor mapped. The host's file
/// and block stay the host's and must outlive the object's use. One thread at a time; no lock is taken.
class MM_API CImageObjIO : public CImageObj
{
public:
    /// No store and no geometry: format, band state and sizes 0, ratio 100, file type -1, work-buffer mode
    /// and conversion on. One of the InitFor operations comes next.
    CImageObjIO();

    /// Shallow: both objects then share one store and one charge, and only one of them may be destroyed
    /// while it holds them.
    CImageObjIO(const CImageObjIO& other);
    CImageObjIO& operator=(const CImageObjIO& other);

    /// Destroys the store; the host's file and block stay open. Not virtual.
    ~CImageObjIO();

    // Set-up ----------------------------------------------------------------------------------------------

    /// Binds the object to an external image, with a store of its own; what an earlier set-up made is
    /// destroyed. A bitmap input is searched for its signature from the file's start, a bitmap output gets
    /// its 54-byte header. The object side has margins of 16, whatever the arguments say.
    ///
    /// @param pInf         the external image; IMG_INPUT reads it, every other role takes nDstFormat as its
    ///                     format and nSrcFormat as the object's
    /// @param nMarginX     pixels beside each external line; nMarginY: lines above and below the picture
    /// @param nSearch      handed on to the header search
    /// @param nAlign       MM_ALIGN type of the object's buffer; external lines are never aligned
    /// @param nBottomUp    1: external lines are stored last line first
    /// @param nTmpBufMode  1: external bands live in the store's work buffer, 0: in the store itself
    /// @return 0; 18 a size that does not fit 32 bits or an alignment that does not exist: nothing changed,
    ///         or, for a header that reaches too far, as after 49; 1 no memory for the store; 49 no bitmap
    ///         signature or header not written (logged): the store is there, without header and file size
    DWORD InitForUnify(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch,
                       int nAlign, int nBottomUp, int nTmpBufMode);

    /// Fills m_ImgInfo with what a unit-mode object needs for SetImageInfo: nSrcFormat, four samples a pixel,
    /// the given margins. No store; role, nSearch and nTmpBufMode mean nothing. Always 0.
    DWORD InitForUnit(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch,
                      int nAlign, int nBottomUp, int nTmpBufMode);

    /// Fills m_ImgInfo so that it addresses the caller's pixels in place: hData, behind the 54 bytes of a
    /// bitmap's header. No store. nLineBytes does not include the m_nLinePad bytes of 3-byte bitmap lines.
    /// @return 0; 18 the layout does not fit 32 bits: nothing changed
    DWORD InitForCMS(T_ImgInf* pInf, tag_E_IMGTYPE eRole, int nMarginX, int nMarginY, int nSearch, int nAlign,
                     int nBottomUp, int nTmpBufMode);

    // Planning --------------------------------------------------------------------------------------------

    /// Plans one step of an object and an I/O object, without temporaries, both at ratio 100. An I/O input
    /// with a pipeline object as output reaches the planner the other way round, so that the pipeline
    /// object's band decides.
    /// @return as CImageObj::MemoryAlloc
    static DWORD MemoryAlloc(tag_MemAlloc* pRequest, CImageObj** ppIn, CImageObj** ppOut);

    /// Copies m_ImgInfoIO out.
    void GetImageInfo(T_ImageLrg_tag* pInfo) override;

    /// As CImageObj::SetBandInfo, over external lines.
    int SetBandInfo(int nBand, int nCount) override;

    /// Bytes of the object's buffer, with those of the external image in work-buffer mode; -1: unknown mode,
    /// or more than 32 bits hold.
    int GetAreaSize() override;

    /// Makes the store. In work-buffer mode the area is split by line length: one part becomes the work
    /// buffer for the external band, the other the store's area, and the lines that both hold become the
    /// band height of both records. What an earlier call made for the same allotment stays, with its content
    /// and addresses, and a band height that is lower by now stays low.
    /// @return 0; 1 no memory; 18 not set up; a code of CImageCtrlIO::Create; after a failure the band
    ///         heights are as they were
    DWORD Create(LONG nSize, LONG nAllotted, int nSlots) override;

    /// External lines of a band.
    int GetBandHeight() override;

    void GetImageInfoIO(T_ImageLrg_tag* pInfo); ///< the same operation as GetImageInfo

    /// What a fourth external sample receives on output: 1 all ones, 0 the object's own, if it has one; any
    /// other value makes four-sample outputs write nothing.
    void SetAlpha(int nAlpha);

    // Bands -----------------------------------------------------------------------------------------------

    /// Maps the external band that starts or ends at one line, at most m_ImgInfoIO.nBandLines lines.
    ///
    /// @param nLine       external line, 0 .. nHeight - 1
    /// @param pBand       out: a copy of m_ImgInfo with the band's lines; pImage is the band's external
    ///                    address, null when the store gave none
    /// @param nDirection  MM_DIRECTION
    /// @param nSlot       view slot, 0 .. 9; for access type 0 the view goes to slot 0 whatever it says:
    ///                    use 0, or UnmapBand will not find it
    /// @return 0; 18 not set up; 107 line outside the image; 118 unknown direction
    ///
    /// An output is filled through UnmapBand with a buffer. An input is converted into the store's work
    /// buffer, at the object's offset of its first line, when that buffer has the room; in work-buffer mode
    /// nothing is read from the file: the band is what the work buffer begins with.
    DWORD MapBand(int nLine, T_ImageLrg_tag* pBand, int nDirection, int nSlot);

    /// Maps exactly the external lines nFirst to nLast, always through the store. pBand and nSlot as in
    /// MapBand, but for an output pImage stays what it was.
    /// @return 0; 70 no address; 108 first after last
    DWORD MapBandRange(int nFirst, int nLast, T_ImageLrg_tag* pBand, int nSlot);

    /// Maps the external lines nFirst to nLast in slot 0 and converts them straight to pDst, the first pixel
    /// of a band in the object's layout. Of pBand only nBandTop, nBandBottom and pImage are set.
    /// @return 0; 71 no address, or lines outside the image or none: nothing is converted
    DWORD MapBandRangeBuf(int nFirst, int nLast, unsigned char* pDst, T_ImageLrg_tag* pBand);

    /// Ends the band without converting anything. nSlot is the one that was mapped, for access type 0 slot 0.
    /// @return 0; 18 not set up; 49; 82
    DWORD UnmapBand(int nSlot);

    /// Converts a band from the object's layout into the external one and ends it, which writes an output to
    /// its file.
    /// @param pBuffer  first pixel of the object's band; null: the store's work buffer, if it has room for
    ///                 the band's lines in the object
    /// @return as the other UnmapBand; 49 after up to a minute while the disk is full. 18 also when a null
    /// buffer
    ///         cannot be used, or when the store lends fewer bytes than the converted lines need (none for a
    ///         band that lies in the work buffer, unless the store holds the image whole): a band on loan
    ///         still is
    DWORD UnmapBand(unsigned char* pBuffer, int nSlot);

    T_ImageLrg_tag m_ImgInfoIO; ///< layout of the external image, header included in nBufSize
    int m_nBottomUp;            ///< 1: external lines are stored last line first
    int m_nFileType;            ///< MM_FILE_TYPE, -1 until set up
    int m_nLinePad;             ///< padding bytes at the end of each external line, 0 to 3
    int m_nTmpBufMode;          ///< 1: the external band is held in the store's work buffer
    int m_nConvert;             ///< 1: samples are converted

private:
    CImageCtrlIO* Store() const;
    unsigned char* MapExternal(std::int64_t nOffset, std::int64_t nBytes, int nSlot);
    void ConvertToWorkBuffer(int nFirst, int nLast);

    /// Convert the lines nFirst to nLast, whose first lines lie at pSrc and pDst; the line numbers give the
    /// count only. A combination of layouts that is not supported writes nothing.
    void ConvertInData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                       T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo);
    void ConvertOutData(int nFirst, int nLast, unsigned char* pSrc, unsigned char* pDst,
                        T_ImageLrg_tag* pSrcInfo, T_ImageLrg_tag* pDstInfo);
};
