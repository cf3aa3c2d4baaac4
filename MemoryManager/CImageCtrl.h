#pragma once
// The backing store of one image object.

#include "MemoryManager/Export.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/ImageRecord.h"

/// View slots of a store: so many bands of it can be mapped at a time.
inline constexpr int MM_SLOT_COUNT = 10;

/// Owns the bytes of an image's whole buffer and gives addresses of byte ranges of it. The bytes lie in one
/// committed memory block, or in a temporary file that is reached through one view per slot.
///
/// Invariant of the slots: while m_nAllMapFlg is 1, slot 0 holds the block or a view of the whole file (null
/// after Destroy) and every other slot is null. Otherwise each slot is null or holds the view of its last
/// mapping.
///
/// Copies are shallow: both stores then name the same file, views and block, and only one may be destroyed.
/// Assignment does not release what the target holds. The destructor releases nothing: the owner calls
/// Destroy first. One thread at a time on one store; no lock is taken.
class MM_API CImageCtrl
{
public:
    /// An empty store: no file, no block, access type ACS_NONE, role IMG_WORK.
    CImageCtrl();
    CImageCtrl(const CImageCtrl& other);
    CImageCtrl& operator=(const CImageCtrl& other);

    /// Makes the store: a memory block when nSize <= nLimit, else a temporary file for band views. A store
    /// that has a file already, as ConvertFile makes it, is mapped whole when nSize <= nLimit, and else kept
    /// as it is. Do not call it on a store that holds a block or a view: the store would forget it. Can take
    /// 60 s while address space is short.
    ///
    /// @param nSize   bytes of the image data, without the header
    /// @param nLimit  bytes that may be held in memory
    /// @param nSlots  view slots that the caller will use, 1 to 10; only kept
    /// @return 0; 1 no memory, or a negative size; 49 temporary file not made (logged); 65 whole view not
    ///         mapped; 18 a negative header, or header and data exceed 2 GiB - 1 bytes
    virtual DWORD Create(LONG nSize, LONG nLimit, int nSlots);

    /// Releases block, views, mapping and file; a temporary file of Create is deleted with its handle.
    /// Everything else stays, IsCreated too: a destroyed store is not used again. Always 0; a second call
    /// does nothing.
    virtual DWORD Destroy();

    /// Gives the address of the byte nOffset of the image data. From there nBytes can be read and written, or
    /// as many as the data has. Free a slot before mapping it: a view that it still holds is forgotten, not
    /// released. Where everything is addressable, the slot does not matter, and data whose size nobody has
    /// set has no end. Can take 60 s while address space is short.
    /// @return the address, which is valid until FreeBandAdress of the slot, ConvertFile or Destroy; null:
    ///         not mapped, no such slot (0 to 9), no bytes (unless everything is addressable), or the range
    ///         starts behind the data
    virtual void* MapBandAdress(DWORD nOffset, DWORD nBytes, int nSlot);

    /// Releases the slot's view. For a block or a whole view, whatever the slot, and for an empty slot there
    /// is nothing to do.
    /// @return 0; 81 the view could not be released, but the slot is empty; 18 no such slot
    virtual DWORD FreeBandAdress(int nSlot);

    /// Maps the first nBytes of the data into slot 0, which must be free. Every band is addressed there
    /// afterwards, without a check of nBytes: pass the bytes of all data. Can take 60 s while address space
    /// is short.
    /// @param nUnused, nUnusedSlot  not used
    /// @return 0; 66 nothing could be mapped, or the header is as long as the allocation granularity or
    ///         longer
    DWORD MapBandAll(DWORD nUnused, DWORD nBytes, int nUnusedSlot);

    /// Turns a memory block, or a file mapped whole, into a file reached through band views.
    ///
    /// A file made here is not deleted with its handle: it stays in the temporary folder until
    /// CleanTempFolder of a later process.
    /// @param nSize  bytes to write from the block's start; the file has exactly these. Not read for a file.
    /// @return 0; 49 (logged): there was neither a block that Create made nor a file; no bytes, or more than
    ///         the block has; or the file could not be written and is deleted. The store is then as it was.
    DWORD ConvertFile(int nSize);

    /// Writes nHeaderBytes zero bytes and nTotalBytes - nHeaderBytes bytes of a flat buffer into a new
    /// temporary file, which becomes the store's and is reached through band views. Like a file of
    /// ConvertFile it is not deleted with its handle; it is at least one allocation granule long. Bands are
    /// addressed behind the header whose size SetHdrSize sets, not behind nHeaderBytes.
    ///
    /// @param pFlat         its block is only read from pBase on, and stays the caller's
    /// @param nHeaderBytes  0 to 100
    /// @return 0; 49 (logged): the file is deleted; 18 no block, sizes out of range or larger than the
    ///         buffer, or a store that holds something. After an error the store is as it was.
    DWORD DebugConvertWrite(T_Image_tag* pFlat, LONG nTotalBytes, LONG nHeaderBytes);

    // The setters are for CImageCtrlIO, which never releases a host's block or file. Destroy of a plain
    // CImageCtrl releases both as its own. Set everything before Create; nothing is checked or released.

    void* GetMemPtr() const;              ///< slot 0: the block, the whole view or a band's view; may be null
    void SetImageData(void* pData);       ///< puts a host's block into slot 0
    void* GetFHandle() const;             ///< the temporary or host's file; INVALID_HANDLE_VALUE: none
    void SetFileHandle(void* hFile);      ///< gives the store a host's file
    void SetFileSize(int nSize);          ///< bytes of header and data
    void SetHdrSize(int nSize);           ///< bytes ahead of the image data
    int GetHdrSize() const;               ///< bytes ahead of the image data
    tag_E_ACSTYPE GetAcsType() const;     ///< how the bytes are reached
    void SetAcsType(tag_E_ACSTYPE eType); ///< how the bytes of a host's image are reached
    tag_E_IMGTYPE GetImgType() const;     ///< role of the image
    void SetImgType(tag_E_IMGTYPE eType); ///< role of a host's image
    int GetAllMapFlg() const;             ///< 1: everything is addressable through slot 0
    int IsCreated() const;                ///< 1 since a successful Create or DebugConvertWrite

    /// Finds the temporary folder, once per process; later calls return 0 at once. The folder stays the same
    /// when the host changes its current one. Any thread; takes the library's lock.
    /// @return 0; 18 it could not be determined, or ms_ExecuteFlg is not 0
    static DWORD GetTempDirctoryName();

    /// Finds the temporary folder and deletes the files in it whose names begin with LRG, as temporary files
    /// of all processes do; files that a process still uses are left alone, and outside Windows everything
    /// that is no regular file of this user. Any thread; only a process's
    /// first call does this, later ones return 0 at once.
    /// @return 0; 18 the folder could not be determined
    static DWORD CleanTempFolder();

protected:
    /// Makes m_hMap, a mapping of nSize bytes of m_hFile. With bNewFile 1, m_hFile becomes a new temporary
    /// file first.
    /// @return 0; 49 (logged): m_hFile is closed and INVALID_HANDLE_VALUE, even if it was a host's file
    DWORD CreateMMF(int nSize, int bNewFile);

    /// Maps nBytes from the file offset nPos, cut at m_nFileSize.
    /// @param ppView  out: the start of the view, null when nothing could be mapped; untouched without a
    ///                mapping
    /// @return the address of the byte at nPos; null: not mapped
    void* ReadMMF(DWORD nPos, DWORD nBytes, void** ppView);

    /// Whether a store has this slot.
    static bool IsSlot(int nSlot) { return nSlot >= 0 && nSlot < MM_SLOT_COUNT; }

    bool ReleaseSlot(int nSlot); ///< empties the slot; false: its view could not be unmapped
    void UnmapSlots();           ///< releases the views of all slots
    void CloseMapping();         ///< closes m_hMap, if any

    char m_szFileName[261];         ///< full path of the temporary file
    HANDLE m_hFile;                 ///< temporary file, or the host's; INVALID_HANDLE_VALUE: none
    HANDLE m_hMap;                  ///< mapping of m_hFile, or null
    void* m_pMapAdr[MM_SLOT_COUNT]; ///< view per slot; slot 0 also the block or the whole view
    int m_nMapCnt;                  ///< slots that Create was given
    int m_nAllMapFlg;               ///< 1: everything is addressable through slot 0
    int m_nFileSize;                ///< bytes of header and data; views end there
    tag_E_ACSTYPE m_eAcsType;       ///< how the bytes are reached
    int m_nHdrSize;                 ///< bytes ahead of the image data
    tag_E_IMGTYPE m_eImgType;       ///< role of the image
    int m_bCreated;                 ///< what IsCreated tells

    static char ms_TempDirctoryName[261]; ///< with its final separator; empty until found; set under the lock
    static int ms_ExecuteFlg;             ///< not 0: GetTempDirctoryName refuses with 18

private:
    friend bool IsTooShort(const CImageCtrl& store, const T_ImageLrg_tag& info);

    bool MakeTempName();
    DWORD GiveUpTempFile(int nLine);
    struct TempFile;
    DWORD WriteTempFile(const TempFile& file);

    static bool IsTempFolderKnown();
    static void RemoveTmpFiles();
    static char* strchri(const char* pszText, int nChar);
    static int strncmpi(const char* pszA, const char* pszB, unsigned int nCount);
};
