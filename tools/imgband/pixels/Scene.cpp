// Noise, gradient, and a landscape made of noise: sky with sun and clouds above two ranges of hills and a
// meadow. It uses basic arithmetic only, so that every machine paints the same picture.

#include "pixels/Scene.h"

#include "pixels/BandLines.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int kFull = 65535;

std::uint64_t Mix(std::uint64_t n)
{
    n ^= n >> 30;
    n *= 0xBF58476D1CE4E5B9u;
    n ^= n >> 27;
    n *= 0x94D049BB133111EBu;
    return n ^ n >> 31;
}

std::uint64_t Hash(std::uint64_t nSeed, int x, int y)
{
    return Mix(nSeed + (static_cast<std::uint64_t>(static_cast<std::uint32_t>(y)) << 32 |
                        static_cast<std::uint32_t>(x)) *
                           0x9E3779B97F4A7C15u);
}

float Unit(std::uint64_t nHash)
{
    return static_cast<float>(nHash >> 40) / static_cast<float>(1 << 24);
}

std::uint16_t Sample(float f)
{
    return static_cast<std::uint16_t>(std::clamp(f, 0.0f, 1.0f) * float{kFull} + 0.5f);
}

float Smooth(float t)
{
    return t * t * (3 - 2 * t);
}

float Blend(float a, float b, float t)
{
    return a + (b - a) * t;
}

/// Random values at the corners of a grid of cells, blended smoothly in between.
class ValueNoise
{
public:
    /// Cells of nCellX x nCellY pixels; values 0 to fAmplitude.
    ValueNoise(std::uint64_t nSeed, int nCellX, int nCellY, float fAmplitude)
        : m_nSeed(nSeed), m_nCellX(std::max(1, nCellX)), m_nCellY(std::max(1, nCellY)),
          m_fAmplitude(fAmplitude), m_weights(static_cast<std::size_t>(m_nCellX))
    {
        for (int i = 0; i < m_nCellX; ++i)
            m_weights[static_cast<std::size_t>(i)] =
                Smooth(static_cast<float>(i) / static_cast<float>(m_nCellX));
    }

    /// Adds the pixels of a line, from its first one on.
    void AddLine(int nLine, std::vector<float>& line) const
    {
        const int nRow = nLine / m_nCellY;
        const float fDown = Smooth(static_cast<float>(nLine % m_nCellY) / static_cast<float>(m_nCellY));
        const std::size_t nCell = static_cast<std::size_t>(m_nCellX);
        float fRight = Corner(0, nRow, fDown);
        for (std::size_t x = 0, nColumn = 0; x < line.size(); x += nCell) {
            const float fLeft = fRight;
            fRight = Corner(static_cast<int>(++nColumn), nRow, fDown);
            const std::size_t nEnd = std::min(nCell, line.size() - x);
            for (std::size_t i = 0; i < nEnd; ++i)
                line[x + i] += Blend(fLeft, fRight, m_weights[i]);
        }
    }

private:
    float Corner(int nColumn, int nRow, float fDown) const
    {
        return m_fAmplitude *
               Blend(Unit(Hash(m_nSeed, nColumn, nRow)), Unit(Hash(m_nSeed, nColumn, nRow + 1)), fDown);
    }

    std::uint64_t m_nSeed;
    int m_nCellX;
    int m_nCellY;
    float m_fAmplitude;
    std::vector<float> m_weights;
};

/// Octaves of noise, each with cells of half the size and half the strength. Their sum is 0 to 1.
class FractalNoise
{
public:
    FractalNoise(std::uint64_t nSeed, int nCellX, int nCellY, int nOctaves)
    {
        float fAmplitude = 0.5f / (1 - 1 / static_cast<float>(1 << nOctaves));
        for (int i = 0; i < nOctaves; ++i, fAmplitude /= 2)
            m_octaves.emplace_back(nSeed + static_cast<std::uint64_t>(i), nCellX >> i, nCellY >> i,
                                   fAmplitude);
    }

    void FillLine(int nLine, std::vector<float>& line) const
    {
        std::fill(line.begin(), line.end(), 0.0f);
        for (const ValueNoise& octave : m_octaves)
            octave.AddLine(nLine, line);
    }

private:
    std::vector<ValueNoise> m_octaves;
};

struct Color
{
    float fBlue;
    float fGreen;
    float fRed;
};

Color Blend(const Color& a, const Color& b, float t)
{
    return {Blend(a.fBlue, b.fBlue, t), Blend(a.fGreen, b.fGreen, t), Blend(a.fRed, b.fRed, t)};
}

class Landscape final : public Scene
{
public:
    Landscape(ImageSize size, std::uint64_t nSeed)
        : m_size(size), m_nSeed(Mix(nSeed)), m_clouds(m_nSeed + 100, size.nWidth / 3, size.nHeight / 9, 7),
          m_forest(m_nSeed + 200, size.nWidth / 40, size.nHeight / 60, 5),
          m_meadow(m_nSeed + 300, size.nWidth / 5, size.nHeight / 30, 8), m_far(Ridge(400, 0.50f, 0.16f)),
          m_near(Ridge(500, 0.60f, 0.16f)), m_edge(Ridge(600, 0.76f, 0.06f)), m_cloudLine(m_edge.size()),
          m_forestLine(m_edge.size()), m_meadowLine(m_edge.size()),
          m_fSunX((0.25f + 0.5f * Unit(Hash(m_nSeed, 1, 0))) * static_cast<float>(size.nWidth)),
          m_fSunY(0.30f * static_cast<float>(size.nHeight)),
          m_fSunSize(0.035f * static_cast<float>(std::min(size.nWidth, size.nHeight)) + 0.5f)
    {
    }

    void PaintLine(int nLine, std::uint16_t* pLine) override
    {
        const float y = static_cast<float>(nLine);
        const float fDown = y / static_cast<float>(m_size.nHeight);
        m_clouds.FillLine(nLine, m_cloudLine);
        if (fDown < kLowestForest)
            m_forest.FillLine(nLine, m_forestLine);
        if (fDown > kHighestMeadow)
            m_meadow.FillLine(nLine, m_meadowLine);
        for (std::size_t x = 0; x < m_cloudLine.size(); ++x, pLine += kSamples) {
            Color color;
            if (y < m_far[x])
                color = Sky(static_cast<float>(x), y, fDown, m_cloudLine[x]);
            else if (y < m_near[x])
                color = Blend({0.62f, 0.52f, 0.46f}, {0.74f, 0.68f, 0.66f},
                              Depth(y, m_far[x]) * 2 + m_forestLine[x] * 0.2f);
            else if (y < m_edge[x])
                color = Blend({0.16f, 0.22f, 0.13f}, {0.38f, 0.46f, 0.36f},
                              m_forestLine[x] * 0.8f + Depth(y, m_near[x]));
            else
                color = Blend({0.08f, 0.25f, 0.15f}, {0.28f, 0.66f, 0.60f}, m_meadowLine[x] * 1.5f - 0.4f);
            Put(pLine, color, Unit(Hash(m_nSeed, static_cast<int>(x), nLine)) - 0.5f);
        }
    }

private:
    // The meadow's edge lies between these fractions of the height.
    static constexpr float kHighestMeadow = 0.69f;
    static constexpr float kLowestForest = 0.83f;

    /// The line of the ridge above every pixel of a line. Heights are fractions of the picture's.
    std::vector<float> Ridge(std::uint64_t nSeed, float fHeight, float fRelief) const
    {
        std::vector<float> ridge(static_cast<std::size_t>(m_size.nWidth));
        FractalNoise(m_nSeed + nSeed, m_size.nWidth / 3, 1, 10).FillLine(0, ridge);
        for (float& f : ridge)
            f = (fHeight - (f - 0.5f) * 2 * fRelief) * static_cast<float>(m_size.nHeight);
        return ridge;
    }

    float Depth(float y, float fRidge) const { return (y - fRidge) / static_cast<float>(m_size.nHeight); }

    Color Sky(float x, float y, float fDown, float fNoise) const
    {
        const Color sky = Blend({0.78f, 0.48f, 0.22f}, {0.72f, 0.80f, 0.93f}, std::min(1.0f, fDown * 2));
        const float fCloud = Smooth(std::clamp((fNoise - 0.48f) * 4, 0.0f, 1.0f));
        const Color clouded = Blend(
            sky, Blend({0.97f, 0.97f, 0.97f}, {0.70f, 0.72f, 0.78f}, fNoise * 1.4f - 0.6f), fCloud * 0.85f);
        const float dx = (x - m_fSunX) / m_fSunSize;
        const float dy = (y - m_fSunY) / m_fSunSize;
        const float fDistance = dx * dx + dy * dy;
        const float fGlow = 1 / (1 + fDistance * 0.08f) + std::clamp(1.5f - fDistance, 0.0f, 1.0f);
        return Blend(clouded, {0.80f, 0.97f, 1.0f}, std::min(1.0f, fGlow));
    }

    /// Writes a pixel with the grain of a sensor and an opaque fourth sample.
    static void Put(std::uint16_t* pPixel, const Color& color, float fGrain)
    {
        const float f = fGrain * 0.03f;
        pPixel[0] = Sample(color.fBlue + f);
        pPixel[1] = Sample(color.fGreen + f);
        pPixel[2] = Sample(color.fRed + f);
        pPixel[3] = kFull;
    }

    ImageSize m_size;
    std::uint64_t m_nSeed;
    FractalNoise m_clouds;
    FractalNoise m_forest;
    FractalNoise m_meadow;
    std::vector<float> m_far;
    std::vector<float> m_near;
    std::vector<float> m_edge;
    std::vector<float> m_cloudLine;
    std::vector<float> m_forestLine;
    std::vector<float> m_meadowLine;
    float m_fSunX;
    float m_fSunY;
    float m_fSunSize;
};

/// Blue rises to the right, green downwards, red with both; alpha falls to the right.
class Gradient final : public Scene
{
public:
    Gradient(ImageSize size, std::uint64_t nSeed)
        : m_size(size), m_nRedStart(static_cast<std::int64_t>(Mix(nSeed) % kFull))
    {
    }

    void PaintLine(int nLine, std::uint16_t* pLine) override
    {
        const std::int64_t nDown = Ramp(nLine, m_size.nHeight);
        for (int x = 0; x < m_size.nWidth; ++x, pLine += kSamples) {
            const std::int64_t nRight = Ramp(x, m_size.nWidth);
            const std::int64_t nRed = ((nRight + nDown) / 2 + m_nRedStart) % kFull;
            pLine[0] = static_cast<std::uint16_t>(nRight);
            pLine[1] = static_cast<std::uint16_t>(nDown);
            pLine[2] = static_cast<std::uint16_t>(nRed);
            pLine[3] = static_cast<std::uint16_t>(kFull - nRight);
        }
    }

private:
    static std::int64_t Ramp(int n, int nEnd) { return std::int64_t{n} * kFull / std::max(1, nEnd - 1); }

    ImageSize m_size;
    std::int64_t m_nRedStart; ///< the seed shifts where the red ramp begins
};

/// Every sample random.
class Noise final : public Scene
{
public:
    Noise(ImageSize size, std::uint64_t nSeed) : m_size(size), m_nSeed(Mix(nSeed)) {}

    void PaintLine(int nLine, std::uint16_t* pLine) override
    {
        for (int x = 0; x < m_size.nWidth; ++x) {
            const std::uint64_t nHash = Hash(m_nSeed, x, nLine);
            for (int k = 0; k < kSamples; ++k)
                *pLine++ = static_cast<std::uint16_t>(nHash >> 16 * k);
        }
    }

private:
    ImageSize m_size;
    std::uint64_t m_nSeed;
};

} // namespace

std::unique_ptr<Scene> MakeScene(const SceneSettings& settings)
{
    switch (settings.ePattern) {
    case Pattern::Gradient:
        return std::make_unique<Gradient>(settings.size, settings.nSeed);
    case Pattern::Noise:
        return std::make_unique<Noise>(settings.size, settings.nSeed);
    case Pattern::Photo:
        break;
    }
    return std::make_unique<Landscape>(settings.size, settings.nSeed);
}
