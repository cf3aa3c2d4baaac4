// Import of a 432 MB bitmap into memory, its export, and its way from file to file through unit bands, which
// makes 32-bit pixels of it, beside cp of the same bytes in the same run.
// Files lie in the temporary folder ($TMPDIR, else /tmp) and in the page cache.

#include "MemoryManager/MemoryManager.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr LONG kMiB = 1 << 20;
constexpr int kSide = 12000;
constexpr int kLineBytes = kSide * 3;
constexpr int kHeaderBytes = 54;

std::string FileName(const char* pszName)
{
    return (std::filesystem::temp_directory_path() / pszName).string();
}

HANDLE Open(const std::string& name, int nFlags)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(open(name.c_str(), nFlags | O_CLOEXEC, 0600)));
}

void Close(HANDLE hFile)
{
    close(static_cast<int>(reinterpret_cast<std::intptr_t>(hFile)));
}

T_ImgInf Bitmap(HANDLE hFile, int nSrcFormat, int nDstFormat)
{
    return {MM_FILE_BITMAP, ACS_FILEIO, hFile,      kHeaderBytes, kSide,
            kSide,          nSrcFormat, nDstFormat, kLineBytes};
}

/// A bitmap on disk for the run: written once, removed at exit.
class SourceFile
{
public:
    SourceFile() : m_name(FileName("benchmark-source.bmp"))
    {
        std::vector<unsigned char> bytes(kLineBytes, 0x5A);
        std::vector<unsigned char> header(kHeaderBytes);
        header[0] = 'B';
        header[1] = 'M';
        const int fd = open(m_name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        m_bWritten = write(fd, header.data(), header.size()) == ssize_t(header.size());
        for (int y = 0; m_bWritten && y < kSide; ++y)
            m_bWritten = write(fd, bytes.data(), bytes.size()) == ssize_t(bytes.size());
        close(fd);
    }
    ~SourceFile() { std::filesystem::remove(m_name); }
    const std::string& Name() const { return m_name; }
    bool IsWritten() const { return m_bWritten; }

private:
    std::string m_name;
    bool m_bWritten = false;
};

const SourceFile& Source()
{
    static const SourceFile source;
    return source;
}

DWORD ImportSource(CImageObj& image)
{
    HANDLE hFile = Open(Source().Name(), O_RDONLY);
    T_ImgInf inf = Bitmap(hFile, MM_FORMAT_BGR24, MM_FORMAT_BGRA32);
    const DWORD nResult = ImportImg(&image, &inf, 1, nullptr);
    Close(hFile);
    return nResult;
}

/// A budget that holds the 32-bit image whole.
void SetLargeBudget()
{
    CImageObj::InitBaseMemory(1000 * kMiB, 32 * kMiB);
}

void SetBytes(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * std::int64_t{kLineBytes} * kSide);
    CImageObj::InitBaseMemory(100 * kMiB, 32 * kMiB);
}

void Import(benchmark::State& state)
{
    SetLargeBudget();
    for (auto _ : state) {
        CImageObj image;
        image.SetOnMemory();
        if (!Source().IsWritten() || ImportSource(image) != MM_SUCCESS)
            state.SkipWithError("not imported");
        state.PauseTiming(); // giving the memory back is the next step's
        image.Destroy();
        state.ResumeTiming();
    }
    SetBytes(state);
}

void Export(benchmark::State& state)
{
    SetLargeBudget();
    const std::string name = FileName("benchmark-export.bmp");
    for (auto _ : state) {
        state.PauseTiming();
        CImageObj image;
        image.SetOnMemory();
        if (ImportSource(image) != MM_SUCCESS)
            state.SkipWithError("not imported");
        std::filesystem::remove(name);
        HANDLE hFile = Open(name, O_RDWR | O_CREAT);
        T_ImgInf inf = Bitmap(hFile, MM_FORMAT_BGRA32, MM_FORMAT_BGR24);
        state.ResumeTiming();
        if (ExportImg(&image, &inf, 1, nullptr, 1) != MM_SUCCESS)
            state.SkipWithError("not exported");
        state.PauseTiming();
        Close(hFile);
        state.ResumeTiming();
    }
    std::filesystem::remove(name);
    SetBytes(state);
}

void UnitBands(benchmark::State& state)
{
    const std::string name = FileName("benchmark-unit.bmp");
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(name);
        HANDLE hIn = Open(Source().Name(), O_RDONLY);
        HANDLE hOut = Open(name, O_RDWR | O_CREAT);
        T_ImgInf in = Bitmap(hIn, MM_FORMAT_BGR24, MM_FORMAT_BGRA32);
        T_ImgInf out = Bitmap(hOut, MM_FORMAT_BGRA32, MM_FORMAT_BGRA32);
        out.nLineBytes = kSide * 4;
        state.ResumeTiming();
        {
            CImageObj image;
            if (ImportImgForUnit(&image, &in, &out, 0, nullptr, MM_ALIGN_LINES, 1) != MM_SUCCESS ||
                DuplicateImageForUnit(&image) != MM_SUCCESS)
                state.SkipWithError("not duplicated");
        }
        state.PauseTiming();
        Close(hIn);
        Close(hOut);
        state.ResumeTiming();
    }
    std::filesystem::remove(name);
    SetBytes(state);
}

void Cp(benchmark::State& state)
{
    const std::string name = FileName("benchmark-copy.bmp");
    const std::string command = "cp '" + Source().Name() + "' '" + name + "'";
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(name);
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("cp failed");
    }
    std::filesystem::remove(name);
    SetBytes(state);
}

} // namespace

BENCHMARK(Cp)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Import)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Export)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(UnitBands)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
