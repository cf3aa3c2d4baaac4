#pragma once
// Runs the real program in a fresh folder, and makes pictures for it.

#include "../SameBytes.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using std::string;
using testing::AllOf;
using testing::HasSubstr;

using Names = std::vector<string>;

/// nStatus: the exit status, or minus the number of the signal that ended the program.
struct Outcome
{
    int nStatus;
    string szOut, szErr;
    bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Outcome& outcome)
{
    return out << "status " << outcome.nStatus << ", output:\n"
               << outcome.szOut << "errors:\n"
               << outcome.szErr;
}

const Outcome kQuietly{0, "", ""};

struct Layout
{
    const char* pszName;
    int nSamples, nBytes;
};
constexpr Layout kLayouts[] = {{"bgr24", 3, 1}, {"bgra32", 4, 1}, {"raw48", 3, 2}, {"raw64", 4, 2}};

/// Samples from top to bottom and left to right.
struct Picture
{
    Layout layout;
    int nWidth, nHeight;
    std::vector<unsigned> samples;
};

/// Whether the environment names a script that runs a Windows program, to be tested instead of this build's.
/// It has a temporary folder of its own, unless --temp-dir is given.
inline const char* const kWindowsProgram = std::getenv("IMGBAND_PROGRAM");

/// From one case to the next: a Windows program starts slowly here, so it gets fewer of them.
inline unsigned Pace(unsigned nWindows)
{
    return kWindowsProgram ? nWindows : 1;
}

/// The words of a command line; one in single quotes may have blanks.
inline Names Words(const string& szLine)
{
    Names words;
    std::istringstream line(szLine);
    for (string szWord; line >> std::quoted(szWord, '\'', '\0');)
        words.push_back(szWord);
    return words;
}

/// Runs programs in a fresh folder; "tmp" in it is for temporary files. A Windows program leaves out the
/// suites that are named ...OnPosix, this build's those that are named ...OnWindows.
class Tool : public testing::Test
{
protected:
    using Look = std::function<void(pid_t)>;

    Tool()
    {
        string szFolder = (std::filesystem::temp_directory_path() / "imgband-test-XXXXXX").string();
        m_szFolder = mkdtemp(szFolder.data());
        std::filesystem::create_directories(m_szFolder + "/here/tmp");
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
    bool Exists(const string& szName) const { return std::filesystem::exists(At(szName)); }
    void Rename(const string& szFrom, const string& szTo) const
    {
        std::filesystem::rename(At(szFrom), At(szTo));
    }
    void Remove(const string& szName) const { std::filesystem::remove_all(At(szName)); }

    /// Every file below a folder, by its path from there.
    Names Files(const string& szFolder = ".") const
    {
        Names names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(At(szFolder)))
            if (entry.is_symlink() || !entry.is_directory())
                names.push_back(std::filesystem::relative(entry.path().parent_path(), At(szFolder)) /
                                entry.path().filename());
        for (string& szName : names)
            szName.erase(0, szName.starts_with("./") ? 2 : 0);
        std::sort(names.begin(), names.end());
        return names;
    }
    /// Whether the library has a temporary file there.
    bool HasTemporaryFile(const string& szFolder = "tmp") const
    {
        for (const string& szName : Files(szFolder))
            if (szName.starts_with("LRG"))
                return true;
        return false;
    }

    /// Runs a program, which may write so many bytes into a file, and calls fnLook every millisecond until it
    /// ends.
    Outcome Start(Names words, const Look& fnLook = nullptr, rlim_t nMostBytes = RLIM_INFINITY) const
    {
        std::vector<char*> arguments;
        for (string& szWord : words)
            arguments.push_back(szWord.data());
        arguments.push_back(nullptr);
        const string szOut = fmt::format("{}/out{}", m_szFolder, ++m_nStarted), szErr = szOut + "err";
        std::fflush(nullptr); // or the child would write it once more
        const pid_t nChild = fork();
        if (nChild == 0) {
            const bool bReady = std::freopen("/dev/null", "r", stdin) &&
                                std::freopen(szOut.c_str(), "w", stdout) &&
                                std::freopen(szErr.c_str(), "w", stderr) && chdir(At("").c_str()) == 0;
            if (!kWindowsProgram) // Wine would put its own files there
                setenv("TMPDIR", At("tmp").c_str(), 1);
            std::signal(SIGINT, SIG_DFL);
            const rlimit limit{nMostBytes, nMostBytes};
            if (bReady && (nMostBytes == RLIM_INFINITY || setrlimit(RLIMIT_FSIZE, &limit) == 0))
                execvp(arguments[0], arguments.data());
            _exit(127);
        }
        int nState = 0;
        for (; waitpid(nChild, &nState, WNOHANG) == 0; usleep(1000))
            if (fnLook)
                fnLook(nChild);
        if (kWindowsProgram && WIFEXITED(nState) && WEXITSTATUS(nState) == 128 + SIGINT)
            usleep(500000); // Wine closes the files of an ended process a moment later
        return {WIFEXITED(nState) ? WEXITSTATUS(nState) : -WTERMSIG(nState), Load(szOut), Load(szErr)};
    }
    /// The program with the words of a command line.
    static Names Program(const string& szArguments)
    {
        Names words = Words(szArguments);
        words.insert(words.begin(), kWindowsProgram ? kWindowsProgram : IMGBAND_PROGRAM);
        return words;
    }
    /// The same on a terminal.
    static Names OnTerminal(const string& szArguments)
    {
        const string szProgram = kWindowsProgram ? kWindowsProgram : IMGBAND_PROGRAM;
        return {"script", "-qec", "'" + szProgram + "' " + szArguments, "/dev/null"};
    }
    Outcome Run(const string& szArguments) const { return Start(Program(szArguments)); }

    /// Runs every command line of a file in messages/ and looks for its exit status and words; fnAlso looks
    /// further.
    template <class Also>
    void ExpectMessages(const string& szFile, const string& szMoreArguments, Also fnAlso) const
    {
        const std::regex row("(\\d) \\| (.*?) +\\| (.*)");
        const string szHere = "z:" + At("");
        std::ifstream rows(MESSAGES + szFile);
        int nRows = 0;
        std::smatch parts;
        for (string szRow; std::getline(rows, szRow);) {
            if (!std::regex_match(szRow, parts, row))
                continue;
            SCOPED_TRACE(szRow);
            ++nRows;
            const string szHERE = std::regex_replace(szHere, std::regex("/"), "\\");
            string szArguments = parts.str(2) + szMoreArguments;
            for (const auto& [pszName, szPlace] :
                 {std::pair(R"(\{null\})", string(kWindowsProgram ? "NUL" : "/dev/null")),
                  {R"(\{here\})", szHere},
                  {R"(\{HERE\})", szHERE}})
                szArguments = std::regex_replace(szArguments, std::regex(pszName), szPlace);
            const Outcome outcome = Run(szArguments);
            EXPECT_EQ(parts.str(1), std::to_string(outcome.nStatus));
            EXPECT_THAT(outcome.szErr, HasSubstr(parts.str(3)));
            fnAlso(outcome);
        }
        EXPECT_GT(nRows, 5) << szFile << " is not read";
    }

    string m_szFolder;
    mutable int m_nStarted = 0;
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
