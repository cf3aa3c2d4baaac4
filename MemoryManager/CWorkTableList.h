#pragma once
// A table of named sections and keys that is written out as text, and of work buffers that share one block.

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
    char szName[MM_TABLE_NAME]; ///< without blanks around it; empty in a work buffer
    _KEY* pKey;                 ///< owned, in the order they were added; null: no keys
    int nKeyCnt;                ///< keys in use, deleted ones included
    int nKeyMax;                ///< slots of pKey
    int nHash;                  ///< hash of szName; of a work buffer its bytes, unsigned
};

/// Sections of keys with text values, found without regard to the case of ASCII letters, in the order in
/// which they were first written. Texts are bytes of the system's code page and are stored as they are.
///
/// Or, in a table of its own, the work buffers of a processing step: SetWorkTable lists them, AllocWorkTable
/// commits one block for all. Both in one table is undefined: a named section's hash would count as a size.
///
/// Names are cut to 255 bytes and lose blanks around them when they are stored, but are looked up as given:
/// one that is changed by that is added anew by every write.
///
/// Copies are shallow: both then share arrays and block, and only one of them may be destroyed. No lock: one
/// thread at a time. Operations return 1 for success and 0 for failure; a failed one leaves the table
/// consistent.
class MM_API CWorkTableList
{
public:
    CWorkTableList();
    CWorkTableList(const CWorkTableList& other);
    CWorkTableList& operator=(const CWorkTableList& other);
    virtual ~CWorkTableList(); ///< calls Destroy

    // Sections and keys -------------------------------------------------------------------------------------

    /// The value as a decimal number, without blanks and one pair of double quotes around it; 0 when it is
    /// none. nDefault when section, key or value is missing.
    int KeyReadInt(const char* pszSection, const char* pszKey, int nDefault);

    /// Stores a number. A null key clears the section. 0: a null section, an empty key, or no memory.
    int KeyWriteInt(const char* pszSection, const char* pszKey, int nValue);

    /// Stores a text as it is; null stores the empty text. Otherwise as KeyWriteInt.
    int KeyWriteString(const char* pszSection, const char* pszKey, const char* pszValue);

    /// Appends all sections that have keys to a text file, which is created if need be; its folder is not.
    /// The section of the maximum is left out. The table stays: the next call appends it again.
    /// @return 0 also for a table that never had a section: no file is made then
    int FlushData(const char* pszPath);

    // Work buffers ------------------------------------------------------------------------------------------

    /// Lists a buffer: *ppBuf will receive its address. Listed again, its size is replaced. List all before
    /// the first allocation: the block keeps its size until List_Free.
    int SetWorkTable(unsigned char** ppBuf, unsigned int nSize);

    /// Bytes of the block, a multiple of the allocation granularity; 0 for nothing to allocate, or more than
    /// 2 GiB - 1.
    int GetTotalSize();

    /// Releases the old block, commits one, zero-filled, and writes the address of each buffer of more than 0
    /// bytes into the host's variable. Buffers follow each other without gaps, in the order they were listed.
    /// Can take 60 s while memory is short.
    /// @return 1 also for nothing to allocate. 0: buffers that do not fit the block or make it larger than
    ///         2 GiB - 1, and nothing is done; no memory, or an old block that cannot be released: the host's
    ///         variables are as they were, and that block may be gone
    int AllocWorkTable();

    void List_Free(); ///< frees everything; the host's variables are not touched and point nowhere
    void Destroy();   ///< the same

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
