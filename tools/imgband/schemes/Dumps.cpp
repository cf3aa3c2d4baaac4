// Pictures of a filter's image objects. The library writes them to fixed places beside the current folder, so
// they are made in a private tree inside the wanted folder, and moved out of it.

#include "schemes/Dumps.h"

#include "pictures/Formats.h"
#include "schemes/BandLoop.h"
#include "system/Folders.h"
#include "system/Paths.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>

namespace fs = std::filesystem;

namespace {

constexpr int kTwelveBits = 0; // OutPutBmp: 16-bit samples hold 12-bit values

void Check(DWORD nCode, const char* pszWhat)
{
    if (nCode == MM_SUCCESS)
        return;
    Failure failure(ExitStatus::JobFailed, "", pszWhat);
    failure.libraryResult = {nCode, std::nullopt};
    throw failure;
}

/// A flat buffer for an object's pixels, charged to the budget.
class FlatBuffer
{
public:
    explicit FlatBuffer(const T_ImageLrg_tag& info)
    {
        Check(CImageObj::AllcImgBufLrg(&m_record, info.nWidth, info.nHeight, 0, 0,
                                       ObjectFormat(info.nSampleBytes), MM_ALIGN_PACKED),
              "no memory for a copy of the image");
    }
    ~FlatBuffer() { CImageObj::FreeImgBufLrg(&m_record); }
    FlatBuffer(const FlatBuffer&) = delete;
    FlatBuffer& operator=(const FlatBuffer&) = delete;

    const T_ImageLrg_tag& Record() const { return m_record; }

    T_Image_tag Flat() const
    {
        T_Image_tag flat;
        std::memcpy(&flat, &m_record, sizeof flat); // the full record begins with it
        return flat;
    }

private:
    T_ImageLrg_tag m_record = {};
};

void CopyPixels(CImageObj& object, const T_ImageLrg_tag& flat)
{
    const Bands bands{flat.nHeight, std::max(object.m_ImgInfo.nBandLines, 1)};
    for (int i = 0; i < bands.Count(); ++i) {
        const LineRange lines = bands.At(i);
        MappedBand band(object, lines);
        Check(band.Result(), "the image could not be read");
        const T_ImageLrg_tag& from = band.Record();
        for (int y = 0; y < lines.Count(); ++y)
            std::memcpy(flat.pImage + std::ptrdiff_t{flat.nLineBytes} * (lines.nFirst + y),
                        from.pImage + std::ptrdiff_t{from.nLineBytes} * y,
                        static_cast<std::size_t>(flat.nLineBytes));
        Check(band.End(), "the image could not be read");
    }
}

/// 16-bit samples become 12-bit ones, which the library makes bitmaps from.
void NarrowSamples(const T_ImageLrg_tag& flat)
{
    const std::ptrdiff_t nSamples = std::ptrdiff_t{flat.nLineSamples} * flat.nHeight;
    auto* pSamples = reinterpret_cast<std::uint16_t*>(flat.pImage);
    for (std::ptrdiff_t i = 0; i < nSamples; ++i)
        pSamples[i] = static_cast<std::uint16_t>(pSamples[i] >> 4);
}

/// The folders that the library's dumps need, made in the current folder for a scope.
class DumpTree
{
public:
    DumpTree() : m_root(os::PathOf(os::UnusedName(".dump-"))) {}
    ~DumpTree()
    {
        std::error_code error; // what cannot be removed stays
        fs::remove_all(m_root, error);
    }
    DumpTree(const DumpTree&) = delete;
    DumpTree& operator=(const DumpTree&) = delete;

    void Make() const
    {
        for (const char* pszFolder : {"logdata/trace", "tmp", "current"})
            fs::create_directories(m_root / pszFolder);
    }

    /// The process's current folder while the library dumps.
    std::string Place() const { return os::TextOf(m_root / "current"); }

    /// Moves a dump into the current folder. Throws Failure unless it has nBytes, for the library does not
    /// report a dump that failed.
    void Take(const char* pszFolder, const std::string& szName, std::int64_t nBytes) const
    {
        std::error_code error;
        const fs::path dump = m_root / pszFolder / os::PathOf(szName);
        if (fs::file_size(dump, error) != static_cast<std::uintmax_t>(nBytes))
            throw Failure(ExitStatus::JobFailed, szName, "could not be written");
        fs::rename(dump, os::PathOf(szName));
    }

private:
    fs::path m_root;
};

/// Makes the dumps and moves them away one by one.
void DumpObject(const std::string& szFolder, const std::string& szName, CImageObj& object)
{
    const T_ImageLrg_tag& info = object.m_ImgInfo;
    const FlatBuffer buffer(info);
    CopyPixels(object, buffer.Record());
    T_Image_tag flat = buffer.Flat();
    const std::string szFlat = fmt::format("{}_{}x{}", szName, info.nWidth, info.nHeight);
    const auto fnOutput = [&] { CImageObj::Output(szName.c_str(), &flat); };
    os::RunInFolder(szFolder, [&] {
        const DumpTree tree;
        tree.Make();
        os::RunInFolder(tree.Place(), [&] { object.OutPutBmp(szName.c_str(), kTwelveBits); });
        tree.Take("logdata/trace", szName + ".bmp",
                  FileBytes(Format::Bgra32, {info.nAllocWidth, info.nAllocHeight}));
        os::RunInFolder(tree.Place(), fnOutput);
        tree.Take("tmp", szFlat + ".raw", 3 * std::int64_t{info.nSampleBytes} * info.nWidth * info.nHeight);
        if (info.nSampleBytes == 2) {
            NarrowSamples(buffer.Record());
            os::RunInFolder(tree.Place(), fnOutput);
        }
        tree.Take("tmp", szFlat + ".bmp", FileBytes(Format::Bgr24, {info.nWidth, info.nHeight}));
    });
}

} // namespace

void DumpObjects(const Run& run, CImageObj& input, CImageObj& output)
{
    const std::string& szFolder = run.settings.szDump;
    try {
        fs::create_directory(os::PathOf(szFolder));
        DumpObject(szFolder, "input", input);
        DumpObject(szFolder, "output", output);
    } catch (const Failure& failure) {
        run.report.Say(fmt::format("imgband: {}: no dump: {}\n", szFolder, failure.Message()));
    } catch (const std::exception& e) {
        run.report.Say(fmt::format("imgband: {}: no dump: {}\n", szFolder, e.what()));
    }
}
