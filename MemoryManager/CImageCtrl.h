#pragma once
// The backing store of one image object.

#include "MemoryManager/Export.h"
#include "MemoryManager/ExternalImage.h"
#include "MemoryManager/ImageRecord.h"

/// View slots of a store.
inline constexpr int MM_SLOT_COUNT = 10;

/// Owns the bytes of an image's whole buffer and hands out addresses of byte ranges of it. The bytes lie in
/// one committed memory block, or in a temporary file reached through one view per slot.
///
/// Invariant of the slots: while m_nAllMapFlg is 1, slot 0 holds the block or a view of the whole file (null
/// after Destroy) and every other slot is null; otherwise each slot is null or holds the view that its last
/// mapping made.
///
/// Copies are shallow: both then name the same file, views and block, and only one may be destroyed. The
/// destructor releases nothing; the owner calls Destroy first. One thread at a time; no lock is taken.
class MM_API CImageCtrl
{
public:
    /// An empty store: no file, no block, access type ACS_NONE, role IMG_WORK.
    CImageCtrl();
    CImageCtrl(const CImageCtrl& other);
    CImageCtrl& operator=(const CImageCtrl& other);

    /// Makes the store: a memory block when nSize <= nLimit, else a temporary file with nSlots view slots.
    /// A store that has a file and a mapping already is mapped whole, or kept for band views. Not for a store
    /// that is created: it would lose what it holds.
    ///
    /// @param nSize   bytes of the image data, header not included
    /// @param nLimit  bytes that may be held in memory
    /// @return 0; 1 no memory; 49 temporary file not made (logged); 65 whole view not mapped; 18 out of range
    virtual DWORD Create(LONG nSize, LONG nLimit, int nSlots);

    /// Releases block, views, mapping and file. Always 0; a second call does nothing.
    virtual DWORD Destroy();

    /// Address of the byte nOffset of the image data, with nBytes from there mapped as far as the data goes.
    /// Valid until FreeBandAdress of the slot, ConvertFile or Destroy. Null: not mapped, no such slot, or the
    /// range starts behind the data. Can take 60 s while address space is short. A view that the slot still
    /// holds is overwritten, not released: free a slot before mapping it.
    virtual void* MapBandAdress(DWORD nOffset, DWORD nBytes, int nSlot);

    /// Releases the slot's view; nothing to do for a block, a whole view or an empty slot.
    /// @return 0; 81 the view could not be released (the slot is empty all the same); 18 no such slot
    virtual DWORD FreeBandAdress(int nSlot);

    /// Maps the first nBytes of the data into slot 0 and addresses every band from there on.
    /// @return 0; 66 nothing could be mapped, or the header is longer than the allocation granularity
    DWORD MapBandAll(DWORD nUnused, DWORD nBytes, int nUnusedSlot);

    /// Turns a memory block, or a file mapped whole, into a file reached through band views.
    ///
    /// The file made here is an ordinary one: it stays in the temporary folder until that is cleaned.
    /// @param nSize  bytes of the block to write; the file has exactly these, header or not
    /// @return 0; 49 (logged): there was neither block nor file, or the block is as it was and the file gone;
    ///         18 no bytes, or more than the block has
    DWORD ConvertFile(int nSize);

    /// Writes nHeaderBytes zero bytes (at most 100) and nTotalBytes - nHeaderBytes bytes of a flat buffer
    /// into a new temporary file, which becomes the store's and is reached through band views. The file is an
    /// ordinary one, as ConvertFile makes it, and at least one allocation granule long.
    /// @return 0; 49 (logged): the file is gone; 18 no block, sizes out of range or larger than the buffer,
    ///         or a store that holds something: nothing is done
    /// Bands are addressed behind the header that SetHdrSize tells.
    DWORD DebugConvertWrite(T_Image_tag* pFlat, LONG nTotalBytes, LONG nHeaderBytes);

    void* GetMemPtr() const;              ///< slot 0: the block or whole view, or a band's view; may be null
    void SetImageData(void* pData);       ///< puts a block into slot 0; the host's stays the host's
    void* GetFHandle() const;             ///< the temporary file or the host's; -1 when there is none
    void SetFileHandle(void* hFile);      ///< gives the store a host's file, which stays the host's
    void SetFileSize(int nSize);          ///< header and data in bytes
    void SetHdrSize(int nSize);           ///< bytes ahead of the image data; set it before Create
    int GetHdrSize() const;               ///< bytes ahead of the image data
    tag_E_ACSTYPE GetAcsType() const;     ///< how the bytes are reached
    void SetAcsType(tag_E_ACSTYPE eType); ///< for stores over a host's image, before Create
    tag_E_IMGTYPE GetImgType() const;     ///< role of the image
    void SetImgType(tag_E_IMGTYPE eType); ///< for stores over a host's image, before Create
    int GetAllMapFlg() const;             ///< 1: everything is addressable through slot 0
    int IsCreated() const;                ///< 1 after a successful Create

    /// Finds the temporary folder, once per process. Any thread.
    /// @return 0; 18 it could not be determined
    static DWORD GetTempDirctoryName();

    /// Finds the temporary folder and deletes the files in it whose names begin with LRG, once per process;
    /// files that a process still holds are left alone. Any thread; only the first call works, the others
    /// return 0 at once.
    /// @return 0; 18 the folder could not be determined
    static DWORD CleanTempFolder();

protected:
    /// Makes the mapping of nSize bytes over m_hFile, which a new temporary file becomes first when bNewFile
    /// is 1. A failed mapping closes m_hFile, with bNewFile 0 the one that the store was given.
    /// @return 0; 49 (logged)
    DWORD CreateMMF(int nSize, int bNewFile);

    /// Maps nBytes from the file offset nPos, cut at m_nFileSize, and returns the address of the first.
    /// *ppView is the view's base, null when it could not be mapped; untouched while there is no mapping.
    void* ReadMMF(DWORD nPos, DWORD nBytes, void** ppView);

    static bool IsSlot(int nSlot) { return nSlot >= 0 && nSlot < MM_SLOT_COUNT; }
    bool ReleaseSlot(int nSlot); ///< unmaps the slot's view, if any; the slot is empty whatever comes of it
    void UnmapSlots();           ///< releases the views of all slots
    void CloseMapping();         ///< closes m_hMap, if any

    char m_szFileName[261];         ///< full path of the temporary file
    HANDLE m_hFile;                 ///< temporary file, or the host's
    HANDLE m_hMap;                  ///< mapping over m_hFile
    void* m_pMapAdr[MM_SLOT_COUNT]; ///< view per slot; slot 0 also the block or the whole view
    int m_nMapCnt;                  ///< slots in use
    int m_nAllMapFlg;               ///< 1: everything is addressable through slot 0
    int m_nFileSize;                ///< header + data in bytes; views end there
    tag_E_ACSTYPE m_eAcsType;       ///< how the bytes are reached
    int m_nHdrSize;                 ///< bytes ahead of the image data
    tag_E_IMGTYPE m_eImgType;       ///< role of the image
    int m_bCreated;                 ///< 1 after a successful Create

    static char ms_TempDirctoryName[261]; ///< with its trailing separator; empty until found
    static int ms_ExecuteFlg;             ///< nonzero: GetTempDirctoryName refuses

private:
    bool MakeTempName();
    DWORD GiveUpTempFile(int nLine);
    struct TempFile;
    DWORD WriteTempFile(const TempFile& file);

    static bool IsTempFolderKnown();
    static void RemoveTmpFiles();
    static char* strchri(const char* pszText, int nChar);
    static int strncmpi(const char* pszA, const char* pszB, unsigned int nCount);
};
