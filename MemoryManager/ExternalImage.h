#pragma once
// Descriptions of images that the host keeps in its own files or memory blocks.

#include "Platform/PlatformTypes.h"

/// How the bytes of a store or of an external image are reached.
enum tag_E_ACSTYPE : int
{
    ACS_MMF = 0,    ///< a file through mapped views
    ACS_MEMORY = 1, ///< a memory block
    ACS_FILEIO = 2, ///< a file, read and written through a buffer
    ACS_NONE = 3,   ///< nothing created yet
};

/// Role of an external image.
enum tag_E_IMGTYPE : int
{
    IMG_INPUT = 0,  ///< read
    IMG_OUTPUT = 1, ///< written back
    IMG_WORK = 2,   ///< neither
};

/// Kinds of external layout, the values of T_ImgInf::nFileType.
enum MM_FILE_TYPE : int
{
    MM_FILE_BITMAP = 0, ///< 8 bits a sample, behind a header; lines of 3-byte pixels padded to 4 bytes
    MM_FILE_RAW = 1,    ///< 16 bits a sample, no header, no padding
};

/// Bytes ahead of the pixels of a bitmap that the library writes.
inline constexpr int MM_BITMAP_HEADER_BYTES = 54;

/// One external image. The host fills the record, usually with CreateParam, and keeps the file open or the
/// block alive while the library works on it. The library keeps no pointer to the record.
struct T_ImgInf
{
    int nFileType;          ///< MM_FILE_TYPE
    tag_E_ACSTYPE eAcsType; ///< how the data is reached
    HANDLE hData;           ///< file handle (ACS_MMF, ACS_FILEIO) or block address (ACS_MEMORY); never owned
    int nOffset;    ///< whole images: for a bitmap input, bytes from "BM" to the first pixel byte; else not
                    ///< read. Unit images: position of the first stored line, as an unsigned number.
    int nWidth;     ///< pixels
    int nHeight;    ///< lines
    int nSrcFormat; ///< format code of the source: the external one for an input, else the object's
    int nDstFormat; ///< format code of the destination: the object's for an input, else the external one
    int nLineBytes; ///< bytes from one external line to the next; import and export do not read it
};
