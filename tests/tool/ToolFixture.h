#pragma once
// Runs the real program in a fresh folder, and makes pictures for it.

#include "../SameBytes.h"

#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using std::string;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

using Json = nlohmann::ordered_json;
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

/// An outcome with this status, whose errors contain all these words.
template <class... Words> auto Ends(int nStatus, const Words&... words)
{
    return AllOf(testing::Field(&Outcome::nStatus, nStatus),
                 testing::Field(&Outcome::szErr, AllOf(HasSubstr(words)...)));
}

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

/// Of a bitmap file; the height is negative where the lines go down.
inline string BitmapHeader(const Layout& layout, int nWidth, int nHeight, int nImageBytes)
{
    string szBytes = "BM";
    for (const int nField : {54 + nImageBytes, 0, 54, 40, nWidth, nHeight, 1 | 8 * layout.nSamples << 16, 0,
                             nImageBytes, 0, 0, 0, 0})
        Put(szBytes, static_cast<unsigned>(nField), 4);
    return szBytes;
}

/// The file that holds the picture.
inline string Encode(const Picture& in, bool bTopDown = false)
{
    const int nUsed = in.nWidth * in.layout.nSamples * in.layout.nBytes;
    const bool bBitmap = in.layout.nBytes == 1;
    const int nPad = bBitmap ? (4 - nUsed % 4) % 4 : 0, nImage = (nUsed + nPad) * in.nHeight;
    string szBytes =
        bBitmap ? BitmapHeader(in.layout, in.nWidth, bTopDown ? -in.nHeight : in.nHeight, nImage) : "";
    const int nLine = in.nWidth * in.layout.nSamples;
    for (int i = 0; i < in.nHeight; ++i) {
        const int nFirst = nLine * (bBitmap && !bTopDown ? in.nHeight - 1 - i : i);
        for (int k = 0; k < nLine; ++k)
            Put(szBytes, in.samples[static_cast<std::size_t>(nFirst + k)], in.layout.nBytes);
        Put(szBytes, 0, nPad);
    }
    return szBytes;
}

/// Whether the environment names a script that runs a Windows program, to be tested instead of this build's.
/// It has a temporary folder of its own, unless --temp-dir is given.
inline const char* const kWindowsProgram = std::getenv("IMGBAND_PROGRAM");
inline const string kProgram = kWindowsProgram ? kWindowsProgram : IMGBAND_PROGRAM;

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
        string szFolder = (fs::temp_directory_path() / "imgband-test-XXXXXX").string();
        m_szFolder = mkdtemp(szFolder.data());
        fs::create_directories(m_szFolder + "/here/tmp");
    }
    ~Tool() override
    {
        std::error_code error;
        do // what a killed Windows program held vanishes by itself meanwhile
            fs::remove_all(m_szFolder, error);
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
    Json LoadJson(const string& szName) const { return Json::parse(Load(szName)); }
    /// A bitmap of zeros, 24 bits a pixel and without padding, that takes no room on the disk.
    void SaveSparse(const string& szName, int nWidth, int nHeight) const
    {
        Save(szName, BitmapHeader(kLayouts[0], nWidth, nHeight, 0));
        fs::resize_file(At(szName), 54 + 3 * std::uintmax_t(nWidth) * std::uintmax_t(nHeight));
    }
    bool Exists(const string& szName) const { return fs::exists(At(szName)); }
    void Remove(const string& szName) const { fs::remove_all(At(szName)); }

    /// Every file below a folder, by its path from there.
    Names Files(const string& szFolder = ".") const
    {
        Names names;
        for (const auto& entry : fs::recursive_directory_iterator(At(szFolder)))
            if (entry.is_symlink() || !entry.is_directory())
                names.push_back(entry.path().lexically_relative(At(szFolder)).string());
        std::sort(names.begin(), names.end());
        return names;
    }
    /// Whether the library has a temporary file there.
    bool HasTemporaryFile(const string& szFolder = "tmp") const
    {
        const Names names = Files(szFolder);
        return std::any_of(names.begin(), names.end(),
                           [](auto& szName) { return szName.starts_with("LRG"); });
    }

    /// Whether a run has written the first band of its output, which may have no name yet.
    bool HasOutput(pid_t nChild) const
    {
        std::error_code gone; // the size is the largest number then
        for (const auto& entry : fs::directory_iterator(fmt::format("/proc/{}/fd", nChild), gone)) {
            const string szFile = fs::read_symlink(entry, gone).string();
            if ((szFile.starts_with(At("#")) || szFile.starts_with(At(".imgband-"))) &&
                fs::file_size(entry, gone) + 1 > 55)
                return true;
        }
        return false;
    }
    /// A number of the kernel's about a run, in KiB; 0 while another program or none runs.
    static rlim_t StatusOf(pid_t nChild, const string& szField)
    {
        std::ifstream file(fmt::format("/proc/{}/status", nChild));
        const string szStatus(std::istreambuf_iterator<char>(file), {});
        const std::size_t nField = szStatus.find(szField);
        const bool bFound = szStatus.starts_with("Name:\timgband") && nField != string::npos;
        return bFound ? std::stoul(szStatus.substr(nField + szField.size())) : 0;
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
    static Names Program(const string& szArguments, const string& szProgram = kProgram)
    {
        Names words = Words(szArguments);
        words.insert(words.begin(), szProgram);
        return words;
    }
    Outcome Run(const string& szArguments, const Look& fnLook = nullptr,
                rlim_t nMostBytes = RLIM_INFINITY) const
    {
        return Start(Program(szArguments), fnLook, nMostBytes);
    }
    /// What a run shows on a terminal.
    string Screen(const string& szArguments) const
    {
        return Start({"script", "-qec", fmt::format("'{}' {}", kProgram, szArguments), "/dev/null"}).szOut;
    }
    /// The JSON object of a run that succeeds.
    Json RunJson(const string& szArguments) const
    {
        const Outcome outcome = Run(szArguments + " --json");
        EXPECT_EQ(0, outcome.nStatus) << outcome.szErr;
        return Json::parse(outcome.szOut);
    }
    /// Interrupts a run once, as soon as fnWhen is true.
    static Look Signal(int nSignal, const std::function<bool()>& fnWhen)
    {
        return [=, bSent = false](pid_t nChild) mutable {
            bSent = bSent || (fnWhen() && kill(nChild, nSignal) == 0);
        };
    }

    /// The rows of a table in the folder tables/, column by column.
    static std::vector<Names> Table(const string& szFile)
    {
        static const std::regex border(" +\\| ");
        std::vector<Names> rows;
        std::ifstream file(TABLES + szFile);
        for (string szRow; std::getline(file, szRow);)
            if (!szRow.starts_with('#'))
                rows.emplace_back(std::sregex_token_iterator(szRow.begin(), szRow.end(), border, -1),
                                  std::sregex_token_iterator());
        EXPECT_GT(rows.size(), 5u) << szFile << " is not read";
        return rows;
    }
    /// Runs every command line of a table and looks for its exit status and words.
    void ExpectMessages(const string& szFile) const
    {
        const string szHere = "z:" + At(""), szHERE = std::regex_replace(szHere, std::regex("/"), "\\");
        for (const Names& row : Table(szFile)) {
            SCOPED_TRACE(testing::PrintToString(row));
            const string szArguments =
                fmt::format(fmt::runtime(row.at(1)), fmt::arg("null", kWindowsProgram ? "NUL" : "/dev/null"),
                            fmt::arg("here", szHere), fmt::arg("HERE", szHERE));
            const Outcome outcome = Run(szArguments + " --json");
            EXPECT_THAT(outcome, Ends(std::stoi(row[0]), row.at(2)));
            const Json report = Json::parse(outcome.szOut);
            EXPECT_EQ(outcome.nStatus, report.at("exit_status"));
            if (outcome.nStatus != 0) {
                const string szMessage = report.at("error").at("message");
                const std::size_t nRest = outcome.szErr.find("imgband: the report could not");
                EXPECT_EQ("imgband: " + szMessage + "\n", outcome.szErr.substr(0, nRest));
            }
        }
    }

    string m_szFolder;
    mutable int m_nStarted = 0;
};

using ToolOnPosix = Tool;
using ToolOnWindows = Tool;
