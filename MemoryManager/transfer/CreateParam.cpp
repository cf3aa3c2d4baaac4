// The host's records of a pair of images turned into descriptions.
// Record fields lie on 2-byte boundaries, so they are copied by value and never referred to.

#include "MemoryManager/ImgObjUty.h"

#include <cstdint>
#include <limits>

namespace {

struct DataType
{
    MM_FORMAT eFormat;
    MM_FILE_TYPE eFileType;
    int nPixelBits;
    int nLineUnitBits; // a line fills whole units of this
};

constexpr DataType kDataTypes[] = {
    {MM_FORMAT_BGR24, MM_FILE_BITMAP, 24, 32},  // MM_DATA_BITMAP24
    {MM_FORMAT_BGRA32, MM_FILE_BITMAP, 32, 32}, // MM_DATA_BITMAP32
    {MM_FORMAT_RAW48, MM_FILE_RAW, 48, 48},     // MM_DATA_RAW48
    {MM_FORMAT_RAW64, MM_FILE_RAW, 64, 64},     // MM_DATA_RAW64
};

const DataType* FindDataType(int nType)
{
    return nType >= MM_DATA_BITMAP24 && nType <= MM_DATA_RAW64 ? &kDataTypes[nType] : nullptr;
}

/// 0 for a line that does not fit 32 bits: such an image is refused by whatever is to read or write it.
int LineBytes(const DataType& type, int nWidth)
{
    const std::int64_t nUnits =
        (std::int64_t{nWidth} * type.nPixelBits + type.nLineUnitBits - 1) / type.nLineUnitBits;
    const std::int64_t nBytes = nUnits * (type.nLineUnitBits / 8);
    return nBytes <= std::numeric_limits<int>::max() ? static_cast<int>(nBytes) : 0;
}

/// One half of a pair. The data type's code goes to nExternalFormat, if there is such a type.
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
