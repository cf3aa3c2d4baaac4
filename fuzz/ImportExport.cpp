// A whole small picture as the tool takes it: its header is parsed, and what passes is imported in every
// access type and exported again. What comes out has the pixels that went in.

#include "fuzz/Fuzzing.h"

#include "pictures/BitmapFile.h"
#include "values/Failure.h"

bool fuzz::Run(Input& input)
try {
    const auto eAccess = tag_E_ACSTYPE(input.UpTo(ACS_FILEIO));
    std::string szFile = "BM" + input.ConsumeRemainingBytesAsString();
    const std::span head(reinterpret_cast<const BYTE*>(szFile.data()), std::min(szFile.size(), kHeaderPeek));
    const PictureFacts facts = ParseBitmapHeader("picture.bmp", head, std::int64_t(szFile.size()));
    const int nWidth = facts.size.nWidth, nHeight = facts.size.nHeight, nPixel = SampleCount(facts.eFormat);
    const int nFormat = FormatCode(facts.eFormat), nOffset = int(facts.nOffset), nObject = MM_FORMAT_BGRA32;

    const HostFile file(szFile), outFile("");
    T_ImgInf in{MM_FILE_BITMAP, eAccess, file.Handle(), nOffset, nWidth, nHeight, nFormat, nObject, 0};
    T_ImgInf out{MM_FILE_BITMAP, eAccess, outFile.Handle(), 0, nWidth, nHeight, nObject, nObject, 0};
    if (eAccess == ACS_MEMORY)
        in.hData = szFile.data(), out.eAcsType = ACS_FILEIO;
    CImageObj image;
    assert(Done(ImportImg(&image, &in, facts.bBottomUp, nullptr)));
    assert(Done(ExportImg(&image, &out, facts.bBottomUp, nullptr, 0)));
    const std::string szOut = outFile.Content();
    for (int i = 0; i < nWidth * nHeight; ++i) {
        const auto nAt = nOffset + i / nWidth * LineBytes(facts.eFormat, nWidth) + i % nWidth * nPixel;
        std::string szPixel = szFile.substr(std::size_t(nAt), std::size_t(nPixel));
        szPixel.resize(4, '\xFF');
        assert(szOut.compare(std::size_t(MM_BITMAP_HEADER_BYTES + i * 4), 4, szPixel) == 0);
    }
    return true;
} catch (const Failure&) {
    return true; // the tool refuses the picture
}
