// Parsing the values of options.

#include "OptionValues.h"

#include "pictures/Formats.h"

#include <charconv>
#include <string_view>

namespace {

constexpr std::int64_t kMiB = 1 << 20;

[[noreturn]] void RefuseValue(const std::string& szOption, const std::string& szValue, const char* pszWanted)
{
    throw CLI::ValidationError(szOption, fmt::format("'{}' is not {}", szValue, pszWanted));
}

/// A decimal number of at least nLeast that is the whole text.
std::optional<std::int64_t> Number(std::string_view szText, std::int64_t nLeast = 1)
{
    std::int64_t nValue = 0;
    const auto [pEnd, eError] = std::from_chars(szText.data(), szText.data() + szText.size(), nValue);
    if (eError != std::errc() || pEnd != szText.data() + szText.size() || nValue < nLeast)
        return std::nullopt;
    return nValue;
}

/// A number of bytes with an optional K, M or G, as K, KiB and so on.
std::optional<std::int64_t> Bytes(std::string_view szText)
{
    if (szText.ends_with("iB"))
        szText.remove_suffix(2);
    int nShift = 0;
    switch (szText.empty() ? 0 : szText.back()) {
    case 'K':
    case 'k':
        nShift = 10;
        break;
    case 'M':
        nShift = 20;
        break;
    case 'G':
        nShift = 30;
        break;
    default:
        break;
    }
    if (nShift)
        szText.remove_suffix(1);
    const auto nValue = Number(szText);
    if (!nValue || *nValue > INT64_MAX >> nShift)
        return std::nullopt;
    return *nValue << nShift;
}

/// WxH
std::optional<ImageSize> Size(std::string_view szText)
{
    const std::size_t nCross = szText.find('x');
    if (nCross == std::string_view::npos)
        return std::nullopt;
    const auto nWidth = Number(szText.substr(0, nCross));
    const auto nHeight = Number(szText.substr(nCross + 1));
    if (!nWidth || !nHeight || *nWidth > INT32_MAX || *nHeight > INT32_MAX)
        return std::nullopt;
    return ImageSize{static_cast<int>(*nWidth), static_cast<int>(*nHeight)};
}

ImageSize ParseSize(const std::string& szValue)
{
    const auto size = Size(szValue);
    if (!size)
        RefuseValue("--size", szValue, "a size in pixels, such as 640x480");
    return *size;
}

template <class Target> CLI::Option* AddSizeTo(CLI::App& app, Target& target, const char* pszHelp)
{
    return app
        .add_option_function<std::string>(
            "--size", [&target](const std::string& szValue) { target = ParseSize(szValue); }, pszHelp)
        ->type_name("WxH");
}

std::optional<Format> FormatOf(std::string_view szName)
{
    for (const Format eFormat : kFormats)
        if (szName == FormatName(eFormat))
            return eFormat;
    return std::nullopt;
}

/// Cuts a number of at least 0 off the end of a text, together with the mark in front of it. Where the mark
/// is missing, text and number stay as they are. Returns whether what follows the mark is such a number.
bool CutNumber(std::string_view& szText, char cMark, int& nTarget)
{
    const std::size_t nMark = szText.find(cMark);
    if (nMark == std::string_view::npos)
        return true;
    const auto nValue = Number(szText.substr(nMark + 1), 0);
    if (!nValue || *nValue > INT32_MAX)
        return false;
    nTarget = static_cast<int>(*nValue);
    szText = szText.substr(0, nMark);
    return true;
}

/// WxH:FORMAT[@RATIO][+FRAME]
std::optional<StepImage> ParseStepImage(std::string_view szText)
{
    StepImage image{};
    if (!CutNumber(szText, '+', image.nFrame) || !CutNumber(szText, '@', image.nRatio))
        return std::nullopt;
    const std::size_t nColon = szText.find(':');
    const auto size = Size(szText.substr(0, nColon));
    const auto eFormat =
        nColon == std::string_view::npos ? std::nullopt : FormatOf(szText.substr(nColon + 1));
    if (!size || !eFormat)
        return std::nullopt;
    image.size = *size;
    image.eFormat = *eFormat;
    return image;
}

/// #RRGGBB
std::optional<std::uint32_t> ColorOf(std::string_view szText)
{
    std::uint32_t nColor = 0;
    if (szText.size() != 7 || szText[0] != '#')
        return std::nullopt;
    const auto [pEnd, eError] = std::from_chars(szText.data() + 1, szText.data() + 7, nColor, 16);
    return eError == std::errc() && pEnd == szText.data() + 7 ? std::optional(nColor) : std::nullopt;
}

} // namespace

void AddBytes(CLI::App& app, const char* pszOption, LONG& nTarget, const char* pszHelp)
{
    app.add_option_function<std::string>(
           pszOption,
           [&nTarget, pszOption](const std::string& szValue) {
               const auto nBytes = Bytes(szValue);
               if (!nBytes || *nBytes > INT32_MAX)
                   RefuseValue(pszOption, szValue, "a number of bytes below 2G, such as 64M");
               nTarget = static_cast<LONG>(*nBytes);
           },
           pszHelp)
        ->type_name("BYTES");
}

void AddMebibytes(CLI::App& app, const char* pszOption, LONG& nTarget, const char* pszHelp)
{
    app.add_option_function<std::string>(
           pszOption,
           [&nTarget, pszOption](const std::string& szValue) {
               const auto nBytes = Bytes(szValue);
               if (!nBytes || *nBytes > INT32_MAX || *nBytes % kMiB != 0)
                   RefuseValue(pszOption, szValue, "a whole number of MiB below 2G, such as 24M");
               nTarget = static_cast<LONG>(*nBytes / kMiB);
           },
           pszHelp)
        ->type_name("BYTES");
}

CLI::Option* AddSize(CLI::App& app, std::optional<ImageSize>& target, const char* pszHelp)
{
    return AddSizeTo(app, target, pszHelp);
}

CLI::Option* AddSize(CLI::App& app, ImageSize& target, const char* pszHelp)
{
    return AddSizeTo(app, target, pszHelp);
}

void AddFormat(CLI::App& app, const char* pszOption, std::optional<Format>& eTarget, const char* pszHelp)
{
    std::vector<std::pair<std::string, std::optional<Format>>> choices;
    for (const Format eFormat : kFormats)
        choices.emplace_back(FormatName(eFormat), eFormat);
    AddChoice(app, pszOption, eTarget, choices, pszHelp);
}

CLI::Option* AddStepImages(CLI::App& app, const char* pszOption, std::vector<StepImage>& target,
                           const char* pszHelp)
{
    return app
        .add_option_function<std::vector<std::string>>(
            pszOption,
            [&target, pszOption](const std::vector<std::string>& values) {
                for (const std::string& szValue : values) {
                    const auto image = ParseStepImage(szValue);
                    if (!image)
                        RefuseValue(pszOption, szValue, "an image, such as 640x480:bgra32@100+2");
                    target.push_back(*image);
                }
            },
            pszHelp)
        ->type_name("WxH:FORMAT[@RATIO][+FRAME]");
}

CLI::Option* AddNumber(CLI::App& app, const char* pszOption, int& nTarget, int nFirst, int nLast,
                       const char* pszHelp)
{
    return app
        .add_option_function<std::string>(
            pszOption,
            [=, &nTarget](const std::string& szValue) {
                const auto nValue = Number(szValue);
                if (!nValue || *nValue < nFirst || *nValue > nLast)
                    RefuseValue(pszOption, szValue,
                                fmt::format("a whole number from {} to {}", nFirst, nLast).c_str());
                nTarget = static_cast<int>(*nValue);
            },
            pszHelp)
        ->type_name("N");
}

void AddAmount(CLI::App& app, const char* pszOption, double& fTarget, double fMost, const char* pszHelp)
{
    app.add_option_function<std::string>(
           pszOption,
           [=, &fTarget](const std::string& szValue) {
               double fValue = -1;
               const auto [pEnd, eError] =
                   std::from_chars(szValue.data(), szValue.data() + szValue.size(), fValue);
               const bool bWhole = eError == std::errc() && pEnd == szValue.data() + szValue.size();
               if (!bWhole || !(fValue >= 0 && fValue <= fMost)) // a NaN is refused too
                   RefuseValue(pszOption, szValue, fmt::format("a number from 0 to {:.0f}", fMost).c_str());
               fTarget = fValue;
           },
           pszHelp)
        ->type_name("A");
}

void AddFrame(CLI::App& app, FrameFill& target)
{
    static const std::pair<const char*, int> kModes[] = {{"replicate", MM_FRAME_REPLICATE},
                                                         {"mirror", MM_FRAME_MIRROR},
                                                         {"mirror-edge", MM_FRAME_MIRROR_EDGE}};
    app.add_option_function<std::string>(
           "--frame",
           [&target](const std::string& szValue) {
               for (const auto& [pszName, nMode] : kModes)
                   if (szValue == pszName) {
                       target = {nMode, 0};
                       return;
                   }
               const auto nColor = ColorOf(szValue);
               if (!nColor)
                   RefuseValue("--frame", szValue,
                               "replicate, mirror, mirror-edge or a colour, such as #808080");
               target = {MM_FRAME_COLOR, *nColor};
           },
           "What lies beyond the edges [replicate]")
        ->option_text("replicate|mirror|mirror-edge|#RRGGBB");
}
