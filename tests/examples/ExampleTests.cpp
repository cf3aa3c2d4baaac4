// The examples as a user runs them, on a small bitmap; every byte of the result against what each promises.

#include "../ReportFiles.h"
#include "../SameBytes.h"

#if defined(_WIN32)
#include <process.h>
#else
#include <spawn.h>
#include <sys/wait.h>
#endif

namespace {

/// Runs an example, whose folder may have a space in its name; its exit status.
int StatusOf(const std::string& sProgram, const std::vector<std::string>& words)
{
    std::vector<char*> arguments{const_cast<char*>(sProgram.c_str())};
    for (const std::string& sWord : words)
        arguments.push_back(const_cast<char*>(sWord.c_str()));
    arguments.push_back(nullptr);
    const std::string sPath = EXAMPLES_FOLDER + sProgram;
#if defined(_WIN32)
    return static_cast<int>(_spawnv(_P_WAIT, (sPath + ".exe").c_str(), arguments.data()));
#else
    pid_t nChild = 0;
    int nState = posix_spawn(&nChild, sPath.c_str(), nullptr, nullptr, arguments.data(), environ);
    if (nState != 0 || waitpid(nChild, &nState, 0) != nChild)
        return -1;
    return WIFEXITED(nState) ? WEXITSTATUS(nState) : -WTERMSIG(nState);
#endif
}

constexpr int kWidth = 301, kHeight = 700, kHeader = 54; // three bands of the filter

int LineBytes(int nSamples)
{
    return (kWidth * nSamples + 3) / 4 * 4;
}

/// Samples of the picture, in storage order. Beyond an edge: the edge's own.
int Sample(int x, int y, int i)
{
    return (std::clamp(x, 0, kWidth - 1) * 71 + std::clamp(y, 0, kHeight - 1) * 149 + i * 37) & 0xFF;
}

/// A bitmap of the samples that the function gives, with bytes that mean nothing ahead of them.
template <class Function> std::string BitmapOf(int nSamples, Function sample, int nGap = 0)
{
    const int nBytes = LineBytes(nSamples) * kHeight, nPad = LineBytes(nSamples) - kWidth * nSamples;
    std::string s = "BM";
    for (const int n :
         {kHeader + nBytes, 0, kHeader + nGap, 40, kWidth, kHeight, nSamples << 19 | 1, 0, nBytes})
        s.append(reinterpret_cast<const char*>(&n), 4);
    s.resize(kHeader, '\0');
    s.append(std::size_t(nGap), '?');
    for (int y = 0; y < kHeight; ++y, s.append(std::size_t(nPad), '\0'))
        for (int n = 0; n < kWidth * nSamples; ++n)
            s += char(sample(n / nSamples, y, n % nSamples));
    return s;
}

/// What an example makes of the picture; its exit status if that is not 0.
std::string ResultOf(const std::string& sExample, std::vector<std::string> words = {})
{
    const RunFolder folder;
    std::ofstream("in.bmp", std::ios::binary) << BitmapOf(3, Sample, 20);
    words.insert(words.begin(), {"in.bmp", "out.bmp"});
    const int nStatus = StatusOf(sExample, words);
    return nStatus == 0 ? FileBytes("out.bmp") : "status " + std::to_string(nStatus);
}

TEST(Examples, DoWhatTheySay)
{
    const auto inverted = [](int x, int y, int i) { return i == 3 ? 0xFF : 0xFF - Sample(x, y, i); };
    EXPECT_TRUE(SameBytes(BitmapOf(4, inverted), ResultOf("import_export")));
    const auto softened = [](int x, int y, int i) {
        int nSum = 4;
        for (int n = 0; n < 9; ++n)
            nSum += Sample(x + n % 3 - 1, y + n / 3 - 1, i);
        return nSum / 9;
    };
    EXPECT_TRUE(SameBytes(BitmapOf(3, softened), ResultOf("unit_filter")));
    const auto relief = [](int x, int y, int i) {
        const int nOwn = Sample(x, y, i), nRelief = 128 + nOwn - Sample(x - 1, y - 1, i);
        return x >= 2 && x <= 300 && y >= 3 && y <= 690 ? std::clamp(nRelief, 0, 255) : nOwn;
    };
    EXPECT_TRUE(SameBytes(BitmapOf(3, relief), ResultOf("blocks", {"3", "690", "2", "300"})));
    EXPECT_EQ("status 1", ResultOf("blocks", {"3", "5", "2", "301"})) << "past the right edge";
    EXPECT_EQ("status 2", ResultOf("unit_filter", {"surplus"}));
}

} // namespace
