#pragma once
// The store over an image that the host has in a file or memory block of its own.

#include "MemoryManager/CImageCtrl.h"

/// Puts a host's file (through views, or read and written through a band buffer) or a host's block behind
/// the store interface. The host's file and block are never closed or freed, but see Create.
///
/// Set access type, image type, file handle or block, header size and file size before Create. m_nFileSize is
/// what the whole image takes in the file or block: header and padded lines.
///
/// Invariant of the slots: access type 2 keeps its band buffer in slot 0 and the address behind that buffer
/// in slot 1; both are null while there is none. Access types 0 and 1 use slot 0 only: for the view of the
/// band or of the whole file, and for the host's block. At most one band is on loan at a time in access types
/// 0 and 2.
///
/// Invariant of the band: m_nBandSize is 0 once the band is written. It is negative when writing failed: from
/// then on m_nBandOffset is where the band begins in the file, so that the next release shifts nothing.
///
/// Copies are shallow, as CImageCtrl's. One thread at a time; no lock is taken.
class MM_API CImageCtrlIO : public CImageCtrl
{
public:
    /// A store without file, block and buffers: access type ACS_NONE, role IMG_WORK.
    CImageCtrlIO();
    CImageCtrlIO(const CImageCtrlIO& other);
    CImageCtrlIO& operator=(const CImageCtrlIO& other);

    void* GetFHandle() const;        ///< the host's file; -1 when there is none
    void SetFileHandle(void* hFile); ///< the host's file, for access types 0 and 2
    void SetFileSize(int nSize);     ///< header and padded lines in bytes; 0: Create's nSize
    void SetImageData(void* pData);  ///< the host's block, for access type 1
    void SetHederSize(int nSize);    ///< bytes ahead of the first line

    /// Makes mapping and view, or the band buffer; what an earlier Create made is released first. With
    /// nSize <= nLimit the image is held whole: one view, or a buffer into which an input is read at once.
    ///
    /// @param nSize   bytes that decide whether the image is held whole; also the file size when none was set
    /// @param nLimit  bytes allotted: the size of the band buffer; a whole image may get more
    /// @param nSlots  kept, but decides nothing: bands use slot 0
    /// @return 0; 1 no buffer; 18 a negative size; 33 access type; 49 (logged) the file could not be mapped
    ///         or read, or an input is shorter than m_nFileSize; 67; 68 whole view not mapped. A mapping that
    ///         fails closes the host's file, and GetFHandle is then INVALID_HANDLE_VALUE; nothing else does.
    ///
    /// Access type 0 makes an output's file m_nFileSize bytes long; an input never grows. IsCreated stays 0
    /// for access type 1.
    DWORD Create(LONG nSize, LONG nLimit, int nSlots) override;

    /// Releases views, mapping, band buffer and work buffer; the host's file and block stay as they are.
    DWORD Destroy() override;

    /// The band of nBytes from nOffset of the image data: an input is read (zeros behind the file's end), an
    /// output gets room that still shows the band before. Valid until FreeBandAdress. Null: no such slot, not
    /// read or mapped, larger than the band buffer, no bytes (unless the image is addressed whole), or the
    /// range starts behind the data. Access type 0 maps every band's view into slot 0, whatever nSlot is; a
    /// view that is still there is overwritten, not released: free slot 0 before the next band.
    void* MapBandAdress(DWORD nOffset, DWORD nBytes, int nSlot) override;

    /// Ends the band on loan. An output of access type 2 goes to the file, once: to the end of the file, or
    /// to its own place when the image is held whole. Retried for about a minute while the disk is full, ten
    /// times after any other error. A whole view that is released (slot 0) leaves a store that maps band by
    /// band.
    /// @return 0: every byte of the band is in its place; 49 not written (logged): the file holds an
    ///         unfinished image, and the next call tries again at the same place; 82 view not released; 18 no
    ///         such slot
    DWORD FreeBandAdress(int nSlot) override;

    /// Makes the work buffer for sample conversion, zero-filled; an earlier one is released first.
    /// @return 0; 1 no memory, or nBytes below 1: there is no work buffer then
    DWORD CreateTMPBuf(int nBytes);

    /// The work buffer's byte nOffset; the offset is not checked. Null: no work buffer. Valid until
    /// CreateTMPBuf or Destroy.
    unsigned char* GetTMPBuf(int nOffset);
    unsigned char* GetTempBuf(int nOffset); ///< the same operation as GetTMPBuf

    /// Where converted output goes while its band is on loan: the place of the image's byte nOffset when the
    /// image is addressable as a whole, else the start of the band, whatever nOffset. Null: no band.
    unsigned char* GetWrtBuf(int nOffset);

    /// Writes the 54-byte header of a new bitmap: 32 bits when nPixelBytes is 4, else 24. The file is empty.
    /// 1 written; 0 failed, with the reason as last error.
    int OutPutDIBHeader(int nWidth, int nHeight, int nPixelBytes);

    /// Offset of the signature "BM" whose first byte is among the first bytes of the input, at most one
    /// allocation granule and at most the size of the picture; -1 when there is none or it cannot be read. A
    /// file of access type 2 is read from its current position and left behind the signature.
    int SchDIBHeader(int nWidth, int nHeight, int nPixelBytes, int nUnused);

protected:
    unsigned char* m_pTmpBuf; ///< work buffer, released by Destroy; its size stands ahead of it in its block
    int m_nBandOffset;        ///< file offset of the band on loan, header included
    int m_nBandSize;          ///< its length in bytes; what a release writes back

private:
    friend class CImageObjIO;

    /// True when Create has made what it would make again: false asks for a new Create.
    bool HoldsAllotment(LONG nSize, LONG nLimit) const;
    SIZE_T WorkBufferBytes() const; ///< 0: no work buffer

    DWORD CreateMapping(bool bWhole);
    DWORD CreateBuffer(LONG nBytes, bool bWhole);
    void ReleaseBacking();
    void ReleaseWorkBuffer();
    LONG BufferBytes(LONG nSize, LONG nLimit) const;
    SIZE_T BufferCapacity() const;
    bool IsInputTooShort() const;
    bool ReadAt(DWORD nPos, DWORD nBytes);
    DWORD WriteBack();
    int WriteHeaderView(const void* pHeader, SIZE_T nBytes);
    int ScanMapping(DWORD nData, int nScan);
    int ScanFile(int nScan);
};
