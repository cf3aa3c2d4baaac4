// imgband clean: removes what killed runs left in the temporary folder, or in that of an output.
//
// It does not use the library, whose own clean-up lists nothing and asks for no more than a name.

#include "Commands.h"
#include "system/Leftovers.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

using os::Leftover;

std::vector<Leftover> Search(const std::string& szFolder, std::int64_t nLeastAge, bool bRemove)
try {
    return os::FindLeftovers(szFolder, {os::IsTemporaryName, os::IsProvisionalName}, nLeastAge, bRemove);
} catch (const std::system_error& e) {
    throw Failure(StatusOfWriteError(e.code()), szFolder,
                  "the folder for temporary files could not be read: " + ErrorText(e.code()),
                  "--temp-dir DIR");
}

std::string Counted(std::int64_t n, const char* pszThing)
{
    return fmt::format("{} {}{}", n, pszThing, n == 1 ? "" : "s");
}

std::string AgeText(std::int64_t nSeconds)
{
    constexpr std::int64_t kMinute = 60, kHour = 60 * kMinute, kDay = 24 * kHour;
    if (nSeconds >= 2 * kDay)
        return fmt::format("{} days old", nSeconds / kDay);
    if (nSeconds >= 2 * kHour)
        return fmt::format("{} hours old", nSeconds / kHour);
    if (nSeconds >= 2 * kMinute)
        return fmt::format("{} minutes old", nSeconds / kMinute);
    return Counted(nSeconds, "second") + " old";
}

std::string LineText(const Leftover& leftover)
{
    const std::string szReason =
        leftover.szReason.empty() ? "" : fmt::format(", cannot be removed: {}", leftover.szReason);
    return fmt::format("{}  {}, {}{}\n", leftover.szName, Counted(leftover.nBytes, "byte"),
                       AgeText(leftover.nAgeSeconds), szReason);
}

nlohmann::ordered_json Json(const Leftover& leftover)
{
    nlohmann::ordered_json json = {{"name", leftover.szName},
                                   {"bytes", leftover.nBytes},
                                   {"age_seconds", leftover.nAgeSeconds},
                                   {"removed", leftover.bRemoved}};
    if (!leftover.szReason.empty())
        json["reason"] = leftover.szReason;
    return json;
}

std::string FilesText(const std::vector<Leftover>& leftovers)
{
    return Counted(static_cast<std::int64_t>(leftovers.size()), "leftover");
}

} // namespace

void RunClean(const Options& options, Report& report)
{
    const std::string& szFolder = options.run.library.szTempDir;
    std::vector<Leftover> leftovers =
        Search(szFolder, options.bYoungToo ? 0 : os::kSettledSeconds, !options.bDryRun);
    const std::size_t nYoung = std::erase_if(leftovers, [](const Leftover& one) { return one.bYoung; });

    std::string szLines;
    std::int64_t nBytes = 0;
    nlohmann::ordered_json files = nlohmann::ordered_json::array();
    for (const Leftover& leftover : leftovers) {
        szLines += LineText(leftover);
        nBytes += leftover.nBytes;
        files.push_back(Json(leftover));
    }
    const auto nKept = static_cast<std::size_t>(std::count_if(
        leftovers.begin(), leftovers.end(), [](const Leftover& one) { return !one.szReason.empty(); }));
    report.SetData(szLines);
    report.Json() = {{"folder", szFolder},    {"dry_run", options.bDryRun},
                     {"files", files},        {"total_files", leftovers.size()},
                     {"total_bytes", nBytes}, {"young_files", nYoung}};
    if (nKept != 0)
        throw Failure(ExitStatus::NoRoom, szFolder,
                      fmt::format("{} of {} cannot be removed", nKept, FilesText(leftovers)));
    const std::string szYoung =
        nYoung == 0 ? "" : fmt::format("; {} younger than an hour left alone, try --all", nYoung);
    report.SetSummary(fmt::format("{}: {} of {}{}{}", szFolder, FilesText(leftovers), Counted(nBytes, "byte"),
                                  options.bDryRun ? "" : " removed", szYoung));
}
