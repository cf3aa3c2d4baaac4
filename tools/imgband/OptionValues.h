#pragma once
// Options whose values are more than a word or a number.
//
// Each function adds an option to a command, and returns it where the caller may want to make it required.
// The target must outlive the command; it keeps its value when the option is not given. A value that is not
// as described makes parsing throw CLI::ValidationError.

#include "values/FilterSettings.h"
#include "values/StepRequest.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A number of bytes below 2 GiB with an optional K, M or G.
void AddBytes(CLI::App& app, const char* pszOption, LONG& nTarget, const char* pszHelp);

/// The same in whole MiB.
void AddMebibytes(CLI::App& app, const char* pszOption, LONG& nTarget, const char* pszHelp);

/// --size, a width and a height in pixels.
CLI::Option* AddSize(CLI::App& app, std::optional<ImageSize>& target, const char* pszHelp);
CLI::Option* AddSize(CLI::App& app, ImageSize& target, const char* pszHelp);

/// A whole number from nFirst to nLast.
CLI::Option* AddNumber(CLI::App& app, const char* pszOption, int& nTarget, int nFirst, int nLast,
                       const char* pszHelp);

/// A number from 0 to fMost.
void AddAmount(CLI::App& app, const char* pszOption, double& fTarget, double fMost, const char* pszHelp);

/// The name of a format.
void AddFormat(CLI::App& app, const char* pszOption, std::optional<Format>& eTarget, const char* pszHelp);

/// --frame, what lies beyond an image's edges: the name of a mode, or a colour.
void AddFrame(CLI::App& app, FrameFill& target);

/// Images of a planned step, each WxH:FORMAT[@RATIO][+FRAME]; the option may be repeated.
CLI::Option* AddStepImages(CLI::App& app, const char* pszOption, std::vector<StepImage>& target,
                           const char* pszHelp);

/// One of several words. pszNeed follows them in the help.
template <class Value>
CLI::Option* AddChoice(CLI::App& app, const char* pszOption, Value& target,
                       const std::vector<std::pair<std::string, Value>>& choices, const std::string& szHelp,
                       const char* pszNeed = "")
{
    std::vector<std::string> names;
    names.reserve(choices.size());
    for (const auto& choice : choices)
        names.push_back(choice.first);
    return app
        .add_option_function<std::string>(
            pszOption,
            [&target, choices](const std::string& szValue) {
                for (const auto& [szName, value] : choices)
                    if (szName == szValue)
                        target = value;
            },
            szHelp)
        ->check(CLI::IsMember(names))
        ->option_text(fmt::format("{}", fmt::join(names, "|")) + pszNeed);
}
