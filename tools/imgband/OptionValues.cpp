// Parsing the values of options.

#include "OptionValues.h"

#include <charconv>
#include <string_view>

namespace {

constexpr std::int64_t kMiB = 1 << 20;

[[noreturn]] void RefuseValue(const std::string& szOption, const std::string& szValue, const char* pszWanted)
{
    throw CLI::ValidationError(szOption, fmt::format("'{}' is not {}", szValue, pszWanted));
}

/// A positive decimal number that is the whole text.
std::optional<std::int64_t> Number(std::string_view szText)
{
    std::int64_t nValue = 0;
    const auto [pEnd, eError] = std::from_chars(szText.data(), szText.data() + szText.size(), nValue);
    if (eError != std::errc() || pEnd != szText.data() + szText.size() || nValue < 1)
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

/// #RRGGBB
std::optional<std::uint32_t> Color(std::string_view szText)
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
    return app
        .add_option_function<std::string>(
            "--size",
            [&target](const std::string& szValue) {
                const std::size_t nCross = szValue.find('x');
                const auto nWidth = Number(std::string_view(szValue).substr(0, nCross));
                const auto nHeight = nCross == std::string::npos
                                         ? std::nullopt
                                         : Number(std::string_view(szValue).substr(nCross + 1));
                if (!nWidth || !nHeight || *nWidth > INT32_MAX || *nHeight > INT32_MAX)
                    RefuseValue("--size", szValue, "a size in pixels, such as 640x480");
                target = ImageSize{static_cast<int>(*nWidth), static_cast<int>(*nHeight)};
            },
            pszHelp)
        ->type_name("WxH");
}

void AddFormat(CLI::App& app, const char* pszOption, std::optional<Format>& eTarget, const char* pszHelp)
{
    AddChoice<std::optional<Format>>(app, pszOption, eTarget,
                                     {{"bgr24", Format::Bgr24},
                                      {"bgra32", Format::Bgra32},
                                      {"raw48", Format::Raw48},
                                      {"raw64", Format::Raw64}},
                                     pszHelp);
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

void AddAmount(CLI::App& app, const char* pszOption, double& dTarget, double dMost, const char* pszHelp)
{
    app.add_option_function<std::string>(
           pszOption,
           [=, &dTarget](const std::string& szValue) {
               double dValue = -1;
               const auto [pEnd, eError] =
                   std::from_chars(szValue.data(), szValue.data() + szValue.size(), dValue);
               const bool bWhole = eError == std::errc() && pEnd == szValue.data() + szValue.size();
               if (!bWhole || !(dValue >= 0 && dValue <= dMost)) // which is no number either
                   RefuseValue(pszOption, szValue, fmt::format("a number from 0 to {:.0f}", dMost).c_str());
               dTarget = dValue;
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
               const auto nColor = Color(szValue);
               if (!nColor)
                   RefuseValue("--frame", szValue,
                               "replicate, mirror, mirror-edge or a colour, such as #808080");
               target = {MM_FRAME_COLOR, *nColor};
           },
           "What lies beyond the edges [replicate]")
        ->option_text("replicate|mirror|mirror-edge|#RRGGBB");
}
