// Turning the host's records of a pair of images into descriptions.
// Fields of the records lie on 2-byte boundaries: they are copied by value, as references need alignment.

#include "MemoryManager/ImgObjUty.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <cstdint>
#include <utility>

namespace {

struct DataType
{
    MM_FORMAT eFormat;
    MM_FILE_TYPE eFileType;
};

constexpr DataType kDataTypes[] = {
    {MM_FORMAT_BGR24, MM_FILE_BITMAP},  // MM_DATA_BITMAP24
    {MM_FORMAT_BGRA32, MM_FILE_BITMAP}, // MM_DATA_BITMAP32
    {MM_FORMAT_RAW48, MM_FILE_RAW},     // MM_DATA_RAW48
    {MM_FORMAT_RAW64, MM_FILE_RAW},     // MM_DATA_RAW64
};

/// Null: there is no such type.
const DataType* FindDataType(int nType)
{
    return nType >= MM_DATA_BITMAP24 && nType <= MM_DATA_RAW64 ? &kDataTypes[nType] : nullptr;
}

/// The line length that a description of this type has; that of a negative width is negative. 0: a length
/// that 32 bits do not hold. Whatever reads or writes an image of either kind refuses it.
int LineBytes(const DataType& type, int nWidth)
{
    const std::int64_t nPixels = std::int64_t{nWidth} * SampleBytesOf(type.eFormat) * SamplesOf(type.eFormat);
    const std::int64_t nBytes = type.eFileType == MM_FILE_BITMAP ? (nPixels * 8 + 31) / 32 * 4 : nPixels;
    return std::in_range<int>(nBytes) ? static_cast<int>(nBytes) : 0;
}

/// Describes one half of a pair.
/// @param nExternalFormat  out: the data type's format; untouched when there is no such type
void Describe(T_ImgInf& inf, tag_E_ACSTYPE eAcsType, void* hData, int nOffset, int nWidth, int nHeight,
              int nType, int& nExternalFormat)
{
    inf.eAcsType = eAcsType;
    inf.hData = hData;
    inf.nOffset = nOffset;
    inf.nWidth = nWidth;
    inf.nHeight = nHeight;
    if (const DataType* pType = FindDataType(nType)) {
        inf.nFileType = pType->eFileType;
        inf.nLineBytes = LineBytes(*pType, nWidth);
        nExternalFormat = pType->eFormat;
    }
}

template <class Pair>
void DescribePair(const Pair& pair, tag_E_ACSTYPE eAcsType, int nInFormat, int nOutFormat, T_ImgInf& in,
                  T_ImgInf& out)
{
    Describe(in, eAcsType, pair.hInImage, pair.nInOffset, pair.nInWidth, pair.nInHeight, pair.nInType,
             in.nSrcFormat);
    in.nDstFormat = nInFormat;
    Describe(out, eAcsType, pair.hOutImage, pair.nOutOffset, pair.nOutWidth, pair.nOutHeight, pair.nOutType,
             out.nDstFormat);
    out.nSrcFormat = nOutFormat;
}

} // namespace

void CreateParam(ZBT_IMAGE_IN_FILE* pPair, int nInFormat, int nOutFormat, T_ImgInf* pIn, T_ImgInf* pOut)
{
    DescribePair(*pPair, ACS_FILEIO, nInFormat, nOutFormat, *pIn, *pOut);
}

void CreateParam(ZBT_IMAGE_ON_MEMORY* pPair, int nInFormat, int nOutFormat, T_ImgInf* pIn, T_ImgInf* pOut)
{
    DescribePair(*pPair, ACS_MEMORY, nInFormat, nOutFormat, *pIn, *pOut);
    if (const DataType* pType = FindDataType(pPair->nOutType))
        pPair->nOutOffset = pType->eFileType == MM_FILE_BITMAP ? MM_BITMAP_HEADER_BYTES : 0;
}
