// Filtered and enlarged pictures, against slow filters and enlargements of whole pictures.

#include "Choices.h"
#include "ToolFixture.h"

#include <cmath>

namespace {

constexpr std::pair<int, int> kSizes[] = {{1, 1}, {1, 40},  {40, 1},   {3, 5},
                                          {2, 7}, {33, 19}, {300, 21}, {9, 70}};
constexpr std::pair<int, int> kTall(1501, 1103), kWide(48001, 37); // in bands, lower ones than the frame too

/// One picture in three is nearly white, with black samples.
Picture AnyPicture(Choices& choices, std::pair<int, int> size)
{
    Picture picture = RandomPicture(choices.Of(kLayouts), size.first, size.second);
    if (choices.Number(0, 2) == 0)
        for (unsigned& nSample : picture.samples)
            nSample = nSample % 16 ? (1u << 8 * picture.layout.nBytes) - 1 : 0;
    return picture;
}

/// The samples of a pixel.
template <class Some> auto* PixelAt(Some& picture, std::ptrdiff_t x, std::ptrdiff_t y)
{
    return picture.samples.data() + (y * picture.nWidth + x) * picture.layout.nSamples;
}

class PixelWork : public Tool
{
protected:
    /// Runs a job in a way that must not change what comes out, in a budget that leaves only bands of large
    /// pictures: held in memory, both count, and wide lines take more, with their frame.
    void ExpectOutput(const Picture& expected, const Picture& in, const string& szJob, Choices& choices)
    {
        const string szScheme = choices.Of(std::array{"auto", "whole", "unit"}),
                     szAccess = choices.Of(std::array{"file", "memory", "mmap"});
        const int nBudget = szAccess == "memory" ? 64 : in.nWidth == kWide.first ? 32 : 12;
        const string szCommand = fmt::format(
            "{} --quiet --budget {}M --from {} --size {}x{} --scheme {} --access {} --threads {}", szJob,
            nBudget, in.layout.pszName, in.nWidth, in.nHeight, szScheme, szAccess, choices.Number(1, 3));
        SCOPED_TRACE(szCommand);
        Save("in", Encode(in, choices.Number(0, 1) == 0));
        EXPECT_EQ(kQuietly, Run(szCommand));
        EXPECT_TRUE(SameBytes(Encode(expected), Load("out")));
    }
};

constexpr const char* kFrames[] = {"replicate", "mirror", "mirror-edge", "#1E90FF"};
constexpr unsigned kColor = 0x1E90FF;

struct Filter
{
    string szOp;
    int nRadius;
    double nAmount;
    string szFrame;
    std::vector<double> weights;
};

Filter AnyFilter(Choices& choices)
{
    Filter filter{choices.Of(std::array{"box", "gauss", "sharpen"}),
                  choices.Number(1, 16),
                  choices.Number(0, 40) / 8.0,
                  choices.Of(kFrames),
                  {}};
    const double nSigma = filter.nRadius / 2.0;
    double nTotal = -1;
    for (int d = 0; d <= filter.nRadius; ++d) {
        filter.weights.push_back(filter.szOp == "box" ? 1 : std::exp(-(d * d) / (2 * nSigma * nSigma)));
        nTotal += 2 * filter.weights.back();
    }
    for (double& nWeight : filter.weights)
        nWeight /= filter.szOp == "box" ? 1 : nTotal;
    return filter;
}

/// What a place among nCount, or beyond them, takes.
int Source(int nPlace, int nCount, const string& szFrame)
{
    const int nBeyond = nPlace < 0 ? -nPlace : nPlace - nCount + 1;
    if (nBeyond <= 0)
        return nPlace;
    const int nWanted = szFrame == "replicate" ? 0 : szFrame == "mirror" ? nBeyond : nBeyond - 1;
    const int nInside = std::min(nWanted, nCount - 1);
    return nPlace < 0 ? nInside : nCount - 1 - nInside;
}

/// One sample of all pixels, with a frame.
std::vector<double> Framed(const Picture& in, int s, const Filter& filter)
{
    const unsigned nColor = (kColor >> 8 * s & 255) * (in.layout.nBytes == 2 ? 257 : 1);
    std::vector<double> plane;
    for (int y = -filter.nRadius; y < in.nHeight + filter.nRadius; ++y)
        for (int x = -filter.nRadius; x < in.nWidth + filter.nRadius; ++x) {
            const int nX = Source(x, in.nWidth, filter.szFrame), nY = Source(y, in.nHeight, filter.szFrame);
            const bool bBeyond = x < 0 || x >= in.nWidth || y < 0 || y >= in.nHeight;
            plane.push_back(bBeyond && filter.szFrame[0] == '#' ? nColor : PixelAt(in, nX, nY)[s]);
        }
    return plane;
}

/// The sum over nCount places, weighted across steps of nStep, the centre first.
std::vector<double> Weigh(const Filter& filter, const double* pCentre, std::ptrdiff_t nStep, int nCount)
{
    std::vector<double> sums;
    for (const double* pEnd = pCentre + nCount; pCentre < pEnd; ++pCentre) {
        sums.push_back(filter.weights[0] * *pCentre);
        for (int d = 1; d <= filter.nRadius; ++d)
            sums.back() +=
                filter.weights[static_cast<std::size_t>(d)] * (pCentre[-d * nStep] + pCentre[d * nStep]);
    }
    return sums;
}

unsigned Finished(const Filter& filter, double nOwn, double nSum, double nMost)
{
    const auto nArea = (2 * filter.nRadius + 1) * (2 * filter.nRadius + 1);
    if (filter.szOp == "box")
        return static_cast<unsigned>(nSum + nArea / 2) / static_cast<unsigned>(nArea);
    const double nValue = filter.szOp == "gauss" ? nSum : nOwn + filter.nAmount * (nOwn - nSum);
    return static_cast<unsigned>(std::clamp(std::floor(nValue + 0.5), 0.0, nMost));
}

Picture Filtered(const Picture& in, const Filter& filter)
{
    Picture out = in;
    const int nLine = in.nWidth + 2 * filter.nRadius;
    for (int s = 0; s < 3; ++s) {
        const std::vector<double> plane = Framed(in, s, filter);
        for (int y = 0; y < in.nHeight; ++y) {
            const double* pLine = plane.data() + std::ptrdiff_t{y + filter.nRadius} * nLine;
            const std::vector<double> columns = Weigh(filter, pLine, nLine, nLine);
            const std::vector<double> sums = Weigh(filter, columns.data() + filter.nRadius, 1, in.nWidth);
            for (int x = 0; x < in.nWidth; ++x)
                PixelAt(out, x, y)[s] =
                    Finished(filter, pLine[x + filter.nRadius], sums[static_cast<std::size_t>(x)],
                             (1u << 8 * in.layout.nBytes) - 1);
        }
    }
    return out;
}

TEST_F(PixelWork, FiltersAlikeInEveryWay)
{
    for (unsigned i = 0; i < 240; i += Pace(5)) {
        Choices choices{std::mt19937(i)};
        const Picture in = AnyPicture(choices, i % 60 == 5    ? kTall
                                               : i % 60 == 17 ? kWide
                                                              : choices.Of(kSizes));
        const Filter filter = AnyFilter(choices);
        const string szJob = fmt::format("filter in out --op {} --radius {} --amount {} --frame {}",
                                         filter.szOp, filter.nRadius, filter.nAmount, filter.szFrame);
        ExpectOutput(Filtered(in, filter), in, szJob, choices);
    }
}

/// Between the centres of the four pixels around a place.
unsigned Interpolated(const Picture& in, int x, int y, int s, int nFactor)
{
    const std::int64_t nAcross = 2 * x + 1 + nFactor, nDown = 2 * y + 1 + nFactor, nSpan = 2 * nFactor;
    std::int64_t nSum = nSpan * nSpan / 2;
    for (const int i : {0, 1})
        for (const int j : {0, 1}) {
            const int nX = std::clamp(static_cast<int>(nAcross / nSpan) - 1 + i, 0, in.nWidth - 1);
            const int nY = std::clamp(static_cast<int>(nDown / nSpan) - 1 + j, 0, in.nHeight - 1);
            nSum += (i ? nAcross % nSpan : nSpan - nAcross % nSpan) *
                    (j ? nDown % nSpan : nSpan - nDown % nSpan) * PixelAt(in, nX, nY)[s];
        }
    return static_cast<unsigned>(nSum / (nSpan * nSpan));
}

TEST_F(PixelWork, EnlargesAlikeInEveryWay)
{
    for (unsigned i = 0; i < 120; i += Pace(3)) {
        Choices choices{std::mt19937(i)};
        const bool bBands = i % 30 == 3, bManyTimes = i % 20 == 8; // sums beyond 32 bits
        const int nFactor = bManyTimes ? choices.Number(120, 160) : bBands ? 2 : choices.Number(1, 7);
        const Picture in = AnyPicture(choices, bManyTimes ? std::pair(2, 3)
                                               : bBands   ? std::pair(801, 503)
                                                          : choices.Of(kSizes));
        const bool bLinear = choices.Number(0, 2) > 0;
        Picture expected{in.layout, in.nWidth * nFactor, in.nHeight * nFactor, {}};
        for (int y = 0; y < expected.nHeight; ++y)
            for (int x = 0; x < expected.nWidth; ++x)
                for (int s = 0; s < in.layout.nSamples; ++s)
                    expected.samples.push_back(bLinear ? Interpolated(in, x, y, s, nFactor)
                                                       : PixelAt(in, x / nFactor, y / nFactor)[s]);
        const string szOp = bLinear ? "linear" : "nearest";
        ExpectOutput(expected, in, fmt::format("enlarge in out --factor {} --op {}", nFactor, szOp), choices);
    }
}

} // namespace
