// Unit objects over files and blocks: set-up, and then bands read and written, blocks, frames and settings in
// any order. A reader only, one object, or a pair.

#include "fuzz/Fuzzing.h"

static void Use(CImageObj& object, fuzz::Input& input)
{
    const int nFirst = input.Number(30), nLast = input.Behind(nFirst, 8);
    const int nLeft = input.Number(30), nRight = input.Behind(nLeft, 8);
    const int nFormat = input.PickValueInArray({MM_FORMAT_BGRA32, MM_FORMAT_RAW64});
    T_ImageLrg_tag band{}, block{};
    CImageObj::AllcImgBufLrg(&block, 9, 9, input.UpTo(3), input.UpTo(3), nFormat, MM_ALIGN_PACKED);
    T_ImageLrg_tag moved = block; // its size becomes the rectangle's
    input.CallOneOf({[&] { return object.MapBand(nFirst, &band, input.UpTo(2), 0); },
                     [&] { return object.MapBandRange(nFirst, nLast, &band, 0); },
                     [&] { return object.MapBlock(nFirst, nLast, nLeft, nRight, &moved); },
                     [&] { return object.UnMapBlock(nFirst, nLast, nLeft, nRight, &moved); },
                     [&] { return object.UnmapBand(0); }, [&] { return object.SetFsize(nFirst); },
                     [&] { return object.SetFrameColor(input.UpTo(4), nLeft); },
                     [&] { return object.SetBandHeight(nFirst); }});
    for (std::ptrdiff_t k = 0; band.pImage && k < band.nBandLines; ++k)
        std::fill_n(band.pImage + k * band.nLineBytes, std::ptrdiff_t{band.nWidth} * band.nPixelBytes, 7);
    CImageObj::FreeImgBufLrg(&block);
}

bool fuzz::Run(Input& input)
{
    const int nObject = input.PickValueInArray({MM_FORMAT_BGRA32, MM_FORMAT_RAW64}), nObjects = input.UpTo(2);
    const int nWidth = input.Number(30), nHeight = input.Number(30), nUp = input.UpTo(1);
    const auto nIn = short(input.UpTo(3)), nOut = short(input.UpTo(3)), nAlpha = short(input.UpTo(1));
    ZBT_IMAGE_IN_FILE pair{nullptr, 0, nIn, nWidth, nHeight, 0, nullptr, 0, nOut, nWidth, nHeight};
    if (nObjects == 2)
        pair.nOutWidth = input.Number(30), pair.nOutHeight = input.Number(30);
    T_ImgInf in{}, out{};
    CreateParam(&pair, nObject, nObject, &in, &out);
    const External source(input, in, in.nLineBytes, in.nHeight);
    const External destination(input, out, out.nLineBytes, out.nHeight);
    CImageObj reader, writer;
    reader.m_ImgInfo.nMarginX = input.Number(4), reader.m_ImgInfo.nMarginY = input.Number(4);
    if (!in.hData || !out.hData || (nObjects == 0 && in.eAcsType == ACS_MMF) || // not mapped by a reader only
        !Done(nObjects == 0   ? ImportImgForUnitJudge(&reader, &in, nUp, nullptr, 0)
              : nObjects == 1 ? ImportImgForUnit(&reader, &in, &out, nUp, nullptr, input.UpTo(2), nAlpha)
                              : ImportImgForUnitEnLarge(&writer, &out, &reader, &in, nUp, nullptr, nAlpha)))
        return true;
    for (int i = 0; i < 8; ++i)
        Use(nObjects == 2 && input.ConsumeBool() ? writer : reader, input);
    if (input.ConsumeBool())
        Done(nObjects == 2 ? DuplicateImageForUnit(&writer, &reader) : DuplicateImageForUnit(&reader));
    return true;
}
