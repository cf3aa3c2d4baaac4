// Reading the command line with CLI11.

#include "Options.h"

#include "OptionValues.h"
#include "system/Folders.h"
#include "system/Process.h"
#include "values/Failure.h"

#include <algorithm>

namespace {

constexpr int kMostThreads = 1024;
constexpr int kMostFactor = 1 << 16;
constexpr double kMostAmount = 1e6;

void AddBudget(CLI::App& app, LibrarySettings& settings)
{
    AddBytes(app, "--budget", settings.nBudget, "Memory for image data [100M]; at least 12M are used");
    AddBytes(app, "--one-mapping", settings.nOneMapping,
             "Most bytes mapped as one piece [32M]; 12M to 32M are used");
    AddMebibytes(
        app, "--band-cap", settings.nBandCap,
        "Most memory of an output's band in the whole scheme [24M], of a step's bands in the unit scheme "
        "[8M]");
}

void AddTempDir(CLI::App& app, LibrarySettings& settings)
{
    app.add_option("--temp-dir", settings.szTempDir,
                   "Folder for temporary files [the system's: $TMPDIR or /tmp, %TMP% on Windows]")
        ->type_name("DIR");
}

void AddReports(CLI::App& app, ReportSettings& settings)
{
    app.add_option("--report", settings.reports,
                   "Report where the memory went, as .html, .json or .txt; may be given several times")
        ->type_name("FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddPrinting(CLI::App& app, ReportSettings& settings)
{
    app.add_flag("--json", settings.bJson, "Print one JSON object on standard output");
    CLI::Option* pQuiet = app.add_flag("--quiet", settings.bQuiet, "Print nothing but errors");
    app.add_flag("--verbose", settings.bVerbose,
                 "Print the plan, time and memory of each step, and what was not given back")
        ->excludes(pQuiet);
}

/// The options of every command that handles a picture file.
void AddCommon(CLI::App& app, Options& options)
{
    AddBudget(app, options.run.library);
    AddTempDir(app, options.run.library);
    AddChoice<Access>(app, "--access", options.run.eAccess,
                      {{"file", Access::File}, {"memory", Access::Memory}, {"mmap", Access::Mmap}},
                      "How picture files are reached [file]; memory keeps them whole, inside the budget");
    AddNumber(app, "--threads", options.run.nThreads, 1, kMostThreads,
              "Threads that share the lines of a band [the processors]");
    AddReports(app, options.report);
    AddPrinting(app, options.report);
}

void AddInput(CLI::App& app, Options& options)
{
    app.add_option("IN", options.input.szPath, "Picture to read")->required();
    AddFormat(app, "--from", options.input.eFormat, "Format of IN; needed for raw pictures");
    AddSize(app, options.input.size, "Size of IN; needed for raw pictures");
}

void AddOutput(CLI::App& app, Options& options)
{
    app.add_option("OUT", options.output.szPath, "Picture to write")->required();
}

void AddOutputFormat(CLI::App& app, Options& options)
{
    AddFormat(app, "--to", options.output.eFormat, "Format of OUT [by its ending: .bmp, .dib or .raw]");
}

/// The options of every command that makes a picture from another one.
void AddJob(CLI::App& app, Options& options)
{
    AddChoice<Scheme>(
        app, "--scheme", options.run.eScheme,
        {{"auto", Scheme::Auto}, {"whole", Scheme::Whole}, {"unit", Scheme::Unit}},
        "Hold whole pictures in the budget or temporary files, or go band by band from file to file [unit]");
    AddCommon(app, options);
    app.add_flag("--plan", options.run.bPlan, "Tell what the run would take, and do nothing")
        ->excludes(app.get_option("--quiet"));
}

void AddMake(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("make", "Make a picture");
    AddOutput(app, options);
    AddOutputFormat(app, options);
    AddSize(app, options.scene.size, "Size of the picture")->required();
    AddChoice<Pattern>(
        app, "--pattern", options.scene.ePattern,
        {{"photo", Pattern::Photo}, {"gradient", Pattern::Gradient}, {"noise", Pattern::Noise}},
        "What to paint [photo]");
    app.add_option("--seed", options.scene.nSeed, "Number that the picture depends on [1]");
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
    AddOutputFormat(app, options);
    app.add_flag("--turn", options.convert.bTurn, "Turn the picture by 180 degrees");
    AddChoice<bool>(app, "--range", options.convert.bFullRange, {{"full", true}, {"keep", false}},
                    "Scale samples of another width to their full range, or keep their values [full]");
    AddChoice<bool>(app, "--alpha", options.convert.bKeepAlpha, {{"keep", true}, {"opaque", false}},
                    "Fourth sample of the output [keep]");
    AddJob(app, options);
    app.callback([&options] { options.eCommand = Command::Convert; });
}

void AddFilter(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("filter", "Smooth or sharpen a picture; it keeps its format");
    AddInput(app, options);
    AddOutput(app, options);
    AddChoice<FilterOp>(app, "--op", options.filter.eOp,
                        {{"box", FilterOp::Box}, {"gauss", FilterOp::Gauss}, {"sharpen", FilterOp::Sharpen}},
                        "The filter", " REQUIRED")
        ->required();
    AddNumber(app, "--radius", options.filter.nRadius, 1, kLargestRadius,
              "Pixels that it reaches in every direction, 1 to 16 [2]");
    AddAmount(app, "--amount", options.filter.fAmount, kMostAmount, "How much to sharpen [1]");
    AddFrame(app, options.filter.frame);
    AddJob(app, options);
    app.add_option(
           "--dump", options.run.szDump,
           "Folder for pictures of the objects; in the whole scheme, whole in memory beside the budget")
        ->type_name("DIR")
        ->excludes(app.get_option("--plan"));
    app.callback([&options] { options.eCommand = Command::Filter; });
}

void AddEnlarge(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("enlarge", "Enlarge a picture; it keeps its format");
    AddInput(app, options);
    AddOutput(app, options);
    AddNumber(app, "--factor", options.enlarge.nFactor, 1, kMostFactor, "How many times as wide and as high")
        ->required();
    AddChoice<EnlargeOp>(app, "--op", options.enlarge.eOp,
                         {{"nearest", EnlargeOp::Nearest}, {"linear", EnlargeOp::Linear}},
                         "Repeat pixels, or blend them [linear]");
    AddJob(app, options);
    app.callback([&options] { options.eCommand = Command::Enlarge; });
}

void AddPlan(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand("plan", "Tell what the planner gives to the images of any step");
    AddStepImages(app, "--in", options.step.inputs, "Input image, with its weight in percent and its frame")
        ->required();
    AddStepImages(app, "--out", options.step.outputs, "Output image, at most one");
    AddStepImages(app, "--tmp", options.step.temporaries, "Temporary image");
    AddNumber(app, "--maps", options.step.nMaps, 1, MM_SLOT_COUNT,
              "Band buffers of each input and temporary image, 1 to 10 [1]");
    AddNumber(app, "--min-band", options.step.nMinBand, 1, INT32_MAX, "Smallest band in lines [16]");
    AddBudget(app, options.run.library);
    AddReports(app, options.report);
    AddPrinting(app, options.report);
    app.callback([&options] {
        options.eCommand = Command::Plan;
        options.run.bPlan = true;
    });
}

void AddClean(CLI::App& root, Options& options)
{
    CLI::App& app = *root.add_subcommand(
        "clean", "Remove what killed runs left in the temporary folder, or in another one");
    app.add_flag("--dry-run", options.bDryRun, "List it, and remove nothing");
    app.add_flag("--all", options.bYoungToo,
                 "Also what is younger than an hour; a run that begins meanwhile may fail");
    AddTempDir(app, options.run.library);
    AddPrinting(app, options.report);
    app.callback([&options] { options.eCommand = Command::Clean; });
}

/// Decides what the user left open, and refuses options that contradict each other.
void Settle(Options& options)
{
    std::string& szTempDir = options.run.library.szTempDir;
    if (szTempDir.empty())
        szTempDir = os::TemporaryFolder();
    if (options.input.szPath == "-" || options.output.szPath == "-")
        throw Failure(ExitStatus::WrongCommandLine, "-", "standard input and output are not supported",
                      "the name of a file");
    if (options.step.outputs.size() > 1)
        throw Failure(ExitStatus::WrongCommandLine, "", "--out: a step has one output image at most");
    const bool bDump = !options.run.szDump.empty();
    if (bDump && options.run.eScheme == Scheme::Unit)
        throw Failure(ExitStatus::WrongCommandLine, "", "--dump: the unit scheme holds no whole objects",
                      "--scheme whole");
    if (options.run.eScheme == Scheme::Auto)
        options.run.eScheme = bDump || options.eCommand == Command::Make ? Scheme::Whole : Scheme::Unit;
}

bool Contains(const std::vector<std::string>& arguments, const char* pszWanted)
{
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    return std::find(arguments.begin(), end, pszWanted) != end;
}

} // namespace

const char* CommandName(Command eCommand)
{
    static constexpr const char* kNames[] = {"",       "make",    "info", "convert",
                                             "filter", "enlarge", "plan", "clean"};
    return kNames[static_cast<int>(eCommand)];
}

void ParseCommandLine(const std::vector<std::string>& arguments, Options& options)
{
    options.report.bJson = Contains(arguments, "--json");
    options.run.nThreads = os::ProcessorCount();

    CLI::App app(
        "Makes, describes, converts, filters and enlarges very large pictures inside a memory budget.",
        "imgband");
    app.set_version_flag("--version", "imgband " IMGBAND_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // a path may begin with a slash
    AddMake(app, options);
    AddInfo(app, options);
    AddConvert(app, options);
    AddFilter(app, options);
    AddEnlarge(app, options);
    AddPlan(app, options);
    AddClean(app, options);
    try {
        app.parse(std::vector(arguments.rbegin(), arguments.rend())); // the parser takes them from the end
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() != 0)
            throw Failure(ExitStatus::WrongCommandLine, "", e.what(), "imgband --help");
        app.exit(e); // help or version
        options.eCommand = Command::None;
        return;
    }
    Settle(options);
}
