#pragma once
// The store over an image that the host has in a file or memory block of its own.

#include "MemoryManager/CImageCtrl.h"

/// Makes a store of a host's file, reached through views (ACS_MMF) or read and written through a band buffer
/// (ACS_FILEIO), or of a host's block (ACS_MEMORY). The host's file and block are never closed or freed, with
/// one exception: see Create.
///
/// Set access type, image type, file handle or block, header size and file size before Create. The file size
/// is what the whole image takes in the file or block: header and padded lines. One band is on loan at a
/// time.
///
/// Invariant of the slots: ACS_FILEIO keeps its band buffer in slot 0 and the address behind that buffer in
/// slot 1; both are null while there is none. Slot 2 then holds no address: for an output that is held whole
/// it keeps the length, plus 1, that the file had before the first band was written. ACS_MMF and ACS_MEMORY
/// use slot 0 only: for the view of the band or of the whole file, and for the host's block.
///
/// Invariant of the band: m_nBandSize is 0 when nothing is left to be written. It is negative when writing
/// failed; of an image that is not held whole m_nBandOffset is then where the band begins in the file, so
/// that the next attempt writes it there.
///
/// Copies are shallow, as those of CImageCtrl are. One thread at a time on one store; no lock is taken.
class MM_API CImageCtrlIO : public CImageCtrl
{
public:
    /// A store without file, block and buffers: access type ACS_NONE, role IMG_WORK.
    CImageCtrlIO();
    CImageCtrlIO(const CImageCtrlIO& other);
    CImageCtrlIO& operator=(const CImageCtrlIO& other);

    void* GetFHandle() const;        ///< the host's file; INVALID_HANDLE_VALUE: none
    void SetFileHandle(void* hFile); ///< the host's file, for ACS_MMF and ACS_FILEIO
    void SetFileSize(int nSize);     ///< bytes of header and padded lines; 0 or less: Create takes its nSize
    void SetImageData(void* pData);  ///< the host's block, for ACS_MEMORY
    void SetHederSize(int nSize);    ///< bytes ahead of the first line

    /// Makes mapping and view (ACS_MMF) or the band buffer (ACS_FILEIO); what an earlier Create made is
    /// released first. With nSize <= nLimit the image is held whole: in one view, or in a buffer into which
    /// an input is read at once. An output's file of ACS_MMF is extended to the file size; an input's is
    /// never extended. For ACS_MEMORY nothing is made, and IsCreated stays 0. Can take 60 s while address
    /// space is short.
    ///
    /// @param nSize   bytes that decide whether the image is held whole
    /// @param nLimit  bytes of the band buffer; that of a whole image has at least the file size
    /// @param nSlots  only kept: bands use slot 0
    /// @return 0; 1 no memory for the buffer, or a negative size; 33 unknown access type; 49 (logged): the
    ///         file could not be mapped or read, or an input is shorter than the file size; 67 no mapping; 68
    ///         whole view not mapped. When the mapping fails, the host's file is closed and GetFHandle gives
    ///         INVALID_HANDLE_VALUE; no other failure closes it.
    DWORD Create(LONG nSize, LONG nLimit, int nSlots) override;

    /// Releases views, mapping, band buffer and work buffer; the host's file and block stay as they are. A
    /// band that was not written is lost. Create can make the store again. Always 0.
    DWORD Destroy() override;

    /// Gives the address of nBytes from the byte nOffset of the image data on. An input of ACS_FILEIO is
    /// read, with zeros behind the file's end; an output gets room in the band buffer, which shows what the
    /// band before it left there. ACS_MMF maps every view into slot 0, whatever nSlot is; a view that is
    /// still there is forgotten, not released: free slot 0 before the next band.
    /// @return the address, which is valid until FreeBandAdress; null: not read or mapped, larger than the
    ///         band buffer, no bytes or no such slot (unless the image is held whole), or the range starts
    ///         behind the data
    void* MapBandAdress(DWORD nOffset, DWORD nBytes, int nSlot) override;

    /// Ends the band on loan. An output of ACS_FILEIO is written to the file once, behind what the file held
    /// before: to its own place when the image is held whole, else to the end of the file. Writing is tried
    /// for about a minute while the disk is full, and ten times when it fails for other reasons. Releasing a
    /// whole view (ACS_MMF, slot 0) leaves a store that maps band by band.
    /// @return 0: every byte of the band is in its place; 49 not written (logged): the file holds an
    ///         unfinished image, and the next call tries again at the same place; 82 view not released; 18 no
    ///         such slot, unless the image is held whole
    DWORD FreeBandAdress(int nSlot) override;

    /// Makes the zero-filled work buffer for sample conversion; an earlier one is released first.
    /// @return 0; 1 no memory, or nBytes below 1: there is no work buffer afterwards
    DWORD CreateTMPBuf(int nBytes);

    /// The address of the work buffer's byte nOffset, which is not checked; null: no work buffer. Valid until
    /// CreateTMPBuf or Destroy.
    unsigned char* GetTMPBuf(int nOffset);
    unsigned char* GetTempBuf(int nOffset); ///< the same operation as GetTMPBuf

    /// The address for converted output of the band on loan: that of the image data's byte nOffset when the
    /// image is addressable as a whole, else the start of the band, whatever nOffset is. Null: slot 0 is
    /// empty.
    unsigned char* GetWrtBuf(int nOffset);

    /// Writes the 54-byte header of a new bitmap, with 32 bits a pixel when nPixelBytes is 4, else 24: to the
    /// block's start, to the start of a file of ACS_MMF, which must be empty, or to the end of one of
    /// ACS_FILEIO. Call it before Create.
    /// @param nWidth, nHeight  pixels and lines of the picture
    /// @return 1; 0 not written, with the reason as last error
    int OutPutDIBHeader(int nWidth, int nHeight, int nPixelBytes);

    /// Searches the input for the bitmap signature "BM". Its first byte must be among the first bytes, as
    /// many as the picture has and at most one allocation granule. A file of ACS_FILEIO is read from its
    /// current position and left behind the signature. Call it before Create.
    /// @param nWidth, nHeight, nPixelBytes  the picture; any pixel size but 3 counts as 4
    /// @param nUnused                       not used
    /// @return the offset of the signature; -1: there is none, or the input cannot be read
    int SchDIBHeader(int nWidth, int nHeight, int nPixelBytes, int nUnused);

protected:
    unsigned char* m_pTmpBuf; ///< work buffer, released by Destroy; its size stands ahead of it in its block
    int m_nBandOffset;        ///< offset of the band on loan, header included; see the invariant
    int m_nBandSize;          ///< its length in bytes; see the invariant

private:
    friend class CImageObjIO;

    /// Whether Create with these arguments would make what the store has already.
    bool HoldsAllotment(LONG nSize, LONG nLimit) const;
    SIZE_T WorkBufferBytes() const; ///< size of the work buffer; 0: there is none

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
