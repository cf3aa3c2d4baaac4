#pragma once
// Runs the real program in a fresh folder, and makes pictures for it.

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

using std::string;
using testing::AllOf;
using testing::HasSubstr;

// clang-format off
/// nStatus: the exit status, or minus the number of the signal that ended the command.
struct Outcome { int nStatus; string szOut, szErr; };

struct Layout { const char* pszName; int nSamples, nBytes; };
constexpr Layout kLayouts[] = {{"bgr24", 3, 1}, {"bgra32", 4, 1}, {"raw48", 3, 2}, {"raw64", 4, 2}};

/// Samples from top to bottom and left to right.
struct Picture { Layout layout; int nWidth, nHeight; std::vector<unsigned> samples; };
// clang-format on

/// Whether the environment names a script that runs a Windows program, to be tested instead of this build's.
/// It has a temporary folder of its own, unless --temp-dir is given.
inline const char* const kWindowsProgram = std::getenv("IMGBAND_PROGRAM");

/// From one case to the next: a Windows program starts slowly here, so it gets fewer of them.
inline unsigned Pace(unsigned nWindows)
{
    return kWindowsProgram ? nWindows : 1;
}

/// Runs shell command lines, in which $IMGBAND is the program, in a fresh folder; "tmp" in it is for its
/// temporary files. A Windows program leaves out the suites that are named ...OnPosix, this build's those
/// that are named ...OnWindows.
class Tool : public testing::Test
{
protected:
    Tool()
    {
        string szFolder = (std::filesystem::temp_directory_path() / "imgband-test-XXXXXX").string();
        m_szFolder = mkdtemp(szFolder.data());
        std::filesystem::create_directories(m_szFolder + "/here/tmp");
        std::filesystem::create_symlink(kWindowsProgram ? kWindowsProgram : IMGBAND_PROGRAM,
                                        m_szFolder + "/imgband"); // a name that the shell takes for one word
    }
    ~Tool() override
    {
        std::error_code error;
        do // what a killed Windows program held vanishes by itself meanwhile
            std::filesystem::remove_all(m_szFolder, error);
        while (error == std::errc::no_such_file_or_directory);
    }

    string At(const string& szName) const
    {
        return szName[0] == '/' ? szName : m_szFolder + "/here/" + szName;
    }
    void Save(const string& szName, const string& szBytes) const { std::ofstream(At(szName)) << szBytes; }
    string Load(const string& szName) const
    {
        std::ifstream file(At(szName));
        return string(std::istreambuf_iterator<char>(file), {});
    }

    /// Calls fnLook with the process number every millisecond until the command has ended.
    template <class Look> Outcome Watch(const string& szCommand, Look fnLook) const
    {
        // Wine would put its own files into TMPDIR.
        const string szLine =
            fmt::format("cd {0}/here && export {1}IMGBAND={0}/imgband && exec >../out 2>../err && {2}",
                        m_szFolder, kWindowsProgram ? "" : "TMPDIR=$PWD/tmp ", szCommand);
        const pid_t nChild = fork();
        if (nChild == 0) {
            std::signal(SIGINT, SIG_DFL);
            execl("/bin/sh", "sh", "-c", szLine.c_str(), nullptr);
        }
        int nState = 0;
        for (; waitpid(nChild, &nState, WNOHANG) == 0; usleep(1000))
            fnLook(nChild);
        if (kWindowsProgram && WIFEXITED(nState) && WEXITSTATUS(nState) == 128 + SIGINT)
            usleep(500000); // Wine closes the files of an ended process a moment later
        return {WIFEXITED(nState) ? WEXITSTATUS(nState) : -WTERMSIG(nState), Load("../out"), Load("../err")};
    }
    static void JustWait(pid_t) {}
    Outcome Shell(const string& szCommand) const { return Watch(szCommand, JustWait); }
    Outcome Run(const string& szArguments) const { return Shell("exec $IMGBAND " + szArguments); }
    string Files() const { return Shell("find . ! -type d | sort | tr '\\n' ' '").szOut; }

    string m_szFolder;
};

using ToolOnPosix = Tool;
using ToolOnWindows = Tool;

inline Picture RandomPicture(const Layout& layout, int nWidth, int nHeight)
{
    std::minstd_rand random(static_cast<unsigned>(nWidth * nHeight));
    Picture picture{layout, nWidth, nHeight, {}};
    picture.samples.resize(static_cast<std::size_t>(nWidth * nHeight * layout.nSamples));
    const unsigned nMask = layout.nBytes == 1 ? 0xFF
                           : nWidth % 2       ? 0xFFFF
                                              : 0x1FF; // 255 is where clamping begins
    for (unsigned& nSample : picture.samples)
        nSample = static_cast<unsigned>(random() >> 8) & nMask;
    return picture;
}

inline void Put(string& szBytes, unsigned nValue, int nBytes)
{
    for (int i = 0; i < nBytes; ++i)
        szBytes.push_back(static_cast<char>(nValue >> 8 * i));
}

/// The file that holds the picture.
inline string Encode(const Picture& in, bool bTopDown = false)
{
    const int nUsed = in.nWidth * in.layout.nSamples * in.layout.nBytes;
    const bool bBitmap = in.layout.nBytes == 1;
    const int nPad = bBitmap ? (4 - nUsed % 4) % 4 : 0, nImage = (nUsed + nPad) * in.nHeight;
    string szBytes = bBitmap ? "BM" : "";
    if (bBitmap)
        for (const int nField : {54 + nImage, 0, 54, 40, in.nWidth, bTopDown ? -in.nHeight : in.nHeight,
                                 1 | 8 * in.layout.nSamples << 16, 0, nImage, 0, 0, 0, 0})
            Put(szBytes, static_cast<unsigned>(nField), 4);
    const int nLine = in.nWidth * in.layout.nSamples;
    for (int i = 0; i < in.nHeight; ++i) {
        const int nFirst = nLine * (bBitmap && !bTopDown ? in.nHeight - 1 - i : i);
        for (int k = 0; k < nLine; ++k)
            Put(szBytes, in.samples[static_cast<std::size_t>(nFirst + k)], in.layout.nBytes);
        Put(szBytes, 0, nPad);
    }
    return szBytes;
}
