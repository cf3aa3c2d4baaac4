// Reading the command line with CLI11.

#include "Options.h"

#include "Failure.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <string_view>
#include <vector>

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

void AddBandCap(CLI::App& app, Options& options)
{
    app.add_option_function<std::string>(
           "--band-cap",
           [&options](const std::string& szValue) {
               const auto nBytes = Bytes(szValue);
               if (!nBytes || *nBytes > INT32_MAX || *nBytes % kMiB != 0)
                   RefuseValue("--band-cap", szValue, "a whole number of MiB below 2G, such as 24M");
               options.nBandCap = static_cast<LONG>(*nBytes / kMiB);
           },
           "Most memory of an output's band [24M]")
        ->type_name("BYTES");
}

CLI::Option* AddSize(CLI::App& app, Options& options, const char* pszHelp)
{
    return app
        .add_option_function<std::string>(
            "--size",
            [&options](const std::string& szValue) {
                const std::size_t nCross = szValue.find('x');
                const auto nWidth = Number(std::string_view(szValue).substr(0, nCross));
                const auto nHeight = nCross == std::string::npos
                                         ? std::nullopt
                                         : Number(std::string_view(szValue).substr(nCross + 1));
                if (!nWidth || !nHeight || *nWidth > INT32_MAX || *nHeight > INT32_MAX)
                    RefuseValue("--size", szValue, "a size in pixels, such as 640x480");
                options.size = ImageSize{static_cast<int>(*nWidth), static_cast<int>(*nHeight)};
            },
            pszHelp)
        ->type_name("WxH");
}

template <class Value>
void AddChoice(CLI::App& app, const char* pszOption, Value& target,
               const std::vector<std::pair<std::string, Value>>& choices, const std::string& szHelp)
{
    std::vector<std::string> names;
    for (const auto& choice : choices)
        names.push_back(choice.first);
    app.add_option_function<std::string>(
           pszOption,
           [&target, choices](const std::string& szValue) {
               for (const auto& [szName, value] : choices)
                   if (szName == szValue)
                       target = value;
           },
           szHelp)
        ->check(CLI::IsMember(names))
        ->option_text(fmt::format("{}", fmt::join(names, "|")));
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

void AddCommon(CLI::App& app, Options& options)
{
    AddBytes(app, "--budget", options.nBudget, "Memory for image data [100M]; at least 12M are used");
    AddBytes(app, "--one-mapping", options.nOneMapping,
             "Most bytes mapped as one piece [32M]; 12M to 32M are used");
    AddBandCap(app, options);
    app.add_option("--temp-dir", options.szTempDir, "Folder for temporary files [$TMPDIR, /tmp]")
        ->type_name("DIR");
    AddChoice<Access>(app, "--access", options.eAccess,
                      {{"file", Access::File}, {"memory", Access::Memory}, {"mmap", Access::Mmap}},
                      "How picture files are reached [file]; memory keeps them whole, beside the budget");
    app.add_flag("--json", options.bJson, "Print one JSON object on standard output");
    CLI::Option* pQuiet = app.add_flag("--quiet", options.bQuiet, "Print nothing but errors");
    app.add_flag("--verbose", options.bVerbose, "Print the plan, time and memory of each step")
        ->excludes(pQuiet);
}

void AddInput(CLI::App& app, Options& options)
{
    app.add_option("IN", options.szInput, "Picture to read")->required();
    AddFormat(app, "--from", options.eFrom, "Format of IN; needed for raw pictures");
    AddSize(app, options, "Size of IN; needed for raw pictures");
}

void AddOutput(CLI::App& app, Options& options)
{
    app.add_option("OUT", options.szOutput, "Picture to write")->required();
    AddFormat(app, "--to", options.eTo, "Format of OUT [by its ending: .bmp, .dib or .raw]");
}

void AddMake(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("make", "Make a picture");
    AddOutput(app, options);
    AddSize(app, options, "Size of the picture")->required();
    AddChoice<Pattern>(
        app, "--pattern", options.ePattern,
        {{"photo", Pattern::Photo}, {"gradient", Pattern::Gradient}, {"noise", Pattern::Noise}},
        "What to paint [photo]");
    app.add_option("--seed", options.nSeed, "Number that the picture depends on [1]");
    AddCommon(app, options);
    app.callback([&options] { options.eCommand = Command::Make; });
}

void AddInfo(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("info", "Tell what a picture file is");
    AddInput(app, options);
    AddCommon(app, options);
    app.callback([&options] { options.eCommand = Command::Info; });
}

void AddConvert(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("convert", "Convert a picture to another format");
    AddInput(app, options);
    AddOutput(app, options);
    app.add_flag("--turn", options.bTurn, "Turn the picture by 180 degrees");
    AddChoice<bool>(app, "--range", options.bFullRange, {{"full", true}, {"keep", false}},
                    "Scale samples of another width to their full range, or keep their values [full]");
    AddChoice<bool>(app, "--alpha", options.bKeepAlpha, {{"keep", true}, {"opaque", false}},
                    "Fourth sample of the output [keep]");
    AddCommon(app, options);
    app.callback([&options] { options.eCommand = Command::Convert; });
}

bool Contains(int nArguments, char** ppArguments, std::string_view szWanted)
{
    for (int i = 1; i < nArguments && std::string_view(ppArguments[i]) != "--"; ++i)
        if (szWanted == ppArguments[i])
            return true;
    return false;
}

} // namespace

const char* CommandName(Command eCommand)
{
    static constexpr const char* kNames[] = {"", "make", "info", "convert"};
    return kNames[static_cast<int>(eCommand)];
}

void ParseCommandLine(int nArguments, char** ppArguments, Options& options)
{
    options.bJson = Contains(nArguments, ppArguments, "--json");

    CLI::App app("Makes, describes and converts very large pictures inside a memory budget.", "imgband");
    app.set_version_flag("--version", "imgband " IMGBAND_VERSION);
    app.require_subcommand(1);
    AddMake(app, options);
    AddInfo(app, options);
    AddConvert(app, options);
    try {
        app.parse(nArguments, ppArguments);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() != 0)
            throw Failure(ExitStatus::WrongCommandLine, "", e.what(), "imgband --help");
        app.exit(e); // help or version
        options.eCommand = Command::None;
        return;
    }
    if (options.szInput == "-" || options.szOutput == "-")
        throw Failure(ExitStatus::WrongCommandLine, "-", "standard input and output are not supported",
                      "the name of a file");
}
