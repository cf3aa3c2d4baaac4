#pragma once
// A table of named sections and keys, which can be written as text, or of work buffers that share one block.

#include "MemoryManager/Export.h"

/// Bytes of a section's or key's name with its terminator; longer names are cut.
inline constexpr int MM_TABLE_NAME = 256;

/// One key of a section.
struct _KEY
{
    char szName[MM_TABLE_NAME]; ///< without blanks around it; empty: the key is deleted
    char* pszValue;             ///< owned; null: no value
    int nHash;                  ///< hash of szName
};

/// One named section, or one work buffer.
struct _SECTION
{
    unsigned char** ppBuf;      ///< work buffer: the host's variable for its address; null in a named section
    char szName[MM_TABLE_NAME]; ///< without blanks around it; empty for a work buffer
    _KEY* pKey;                 ///< owned, in the order they were added; null: no keys
    int nKeyCnt;                ///< keys in use, deleted ones included
    int nKeyMax;                ///< slots of pKey
    int nHash;                  ///< hash of szName; for a work buffer its bytes, as an unsigned number
};

/// A table of one of two kinds.
///
/// Named sections of keys with text values. They are found without regard to the case of ASCII letters and
/// keep the order in which they were first written. Texts are bytes of the system's code page; they are
/// copied and stored as they are.
///
/// Or the work buffers of a processing step: SetWorkTable lists them, AllocWorkTable commits one block for
/// all. Do not mix the two in one table: the hash of a named section would count as a size.
///
/// Names are stored without the spaces and tabs around them and cut to 255 bytes, but looked up as given: a
/// name that storing changes is not found, and every write adds it again.
///
/// Copies are shallow: both tables then share arrays and block, and since the destructor frees them, only one
/// of the two may ever be destroyed. Assignment does not free what the target has: call the target's Destroy
/// first. One thread at a time on one table; no lock is taken. Operations return 1 for success and 0 for
/// failure unless they say otherwise; a failure leaves the table consistent.
class MM_API CWorkTableList
{
public:
    CWorkTableList();                                       ///< an empty table
    CWorkTableList(const CWorkTableList& other);            ///< shallow, see above
    CWorkTableList& operator=(const CWorkTableList& other); ///< shallow, see above
    virtual ~CWorkTableList();                              ///< calls Destroy

    // Sections and keys -------------------------------------------------------------------------------------

    /// Reads a value as a decimal number, which may stand behind blanks and a double quote.
    /// @return the number, or the nearest that an int holds; 0 when the value is no number; nDefault when
    ///         section, key or value is missing or a name is null
    int KeyReadInt(const char* pszSection, const char* pszKey, int nDefault);

    /// Stores a number as text. Section and key are added if need be; an existing value is replaced. A null
    /// key removes all keys of the section.
    /// @return 1; 0: a null section, an empty key, or no memory, in which case an existing value is lost
    int KeyWriteInt(const char* pszSection, const char* pszKey, int nValue);

    /// Stores a copy of a text; null stores the empty text. Otherwise as KeyWriteInt.
    int KeyWriteString(const char* pszSection, const char* pszKey, const char* pszValue);

    /// Appends all sections that have keys to a text file, which is created if need be; its folder is not. A
    /// section is left out when its first key is the maximum that CImageObj::UseMemoryListMax keeps. The
    /// table stays as it is: the next call appends it again.
    /// @return 1; 0: the file could not be opened or written, no memory, or the table is empty, in which case
    ///         no file is made
    int FlushData(const char* pszPath);

    // Work buffers ------------------------------------------------------------------------------------------

    /// Lists a buffer of nSize bytes, or changes the size of one that is listed. List all buffers before
    /// GetTotalSize or AllocWorkTable is first called: the block keeps its size until List_Free.
    /// @param ppBuf  the host's variable for the buffer's address, which every AllocWorkTable fills in
    /// @return 1; 0 no memory, or ppBuf is null
    int SetWorkTable(unsigned char** ppBuf, unsigned int nSize);

    /// Bytes of the block that all listed buffers need, rounded up to the allocation granularity, as computed
    /// by the first call. 0: nothing to allocate, or more than 2 GiB - 1.
    int GetTotalSize();

    /// Commits a zero-filled block for all listed buffers and writes each buffer's address into the host's
    /// variable, but for buffers of 0 bytes. They follow each other without gaps, in the order they were
    /// listed. An earlier block is released first. The block belongs to the table, and is not charged to the
    /// images' budget. Can take 60 s while memory is short.
    /// @return 1, also when there is nothing to allocate. 0: the buffers exceed the block's size or 2 GiB -
    ///         1, and nothing is done; no memory, or the earlier block could not be released: the host's
    ///         variables are as they were, and that block may be gone
    int AllocWorkTable();

    /// Empties the table: frees sections, keys and block. The host's variables are not changed, and must not
    /// be used to reach the buffers any more.
    void List_Free();

    void Destroy(); ///< the same operation as List_Free

private:
    int AddSection(const char* pszName);
    int AddSection(unsigned char** ppBuf);
    int FindSection(const char* pszName);
    int FindSection(unsigned char** ppBuf);
    int AddKey(_SECTION* pSection, const char* pszName, const char* pszValue);
    int FindKey(_SECTION* pSection, const char* pszName);
    int KeyWriteData(const char* pszSection, const char* pszKey, const char* pszValue);
    int Trim(char* pszText);
    int str2hash(const char* pszText);
    char* StrCpy(char* pszTo, const char* pszFrom);

    _SECTION* m_pSection; ///< owned, in the order they were added
    int m_nSectionCnt;    ///< sections in use
    int m_nSectionMax;    ///< slots of m_pSection
    void* m_pWorkMem;     ///< block of the work buffers
    int m_nTotalSize;     ///< its size once computed; 0 before
};
