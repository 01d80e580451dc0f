#pragma once

#include <optional>
#include <string>
#include <vector>

#include "PlatformTypes.h"

/// When to colour the output.
enum class ColorChoice
{
    Auto,
    Always,
    Never,
};

/// The arguments of "show" as they were given.
struct ShowOptions
{
    std::string pattern;
    std::string zone;
    std::string from;
    std::string to;
    std::string first;
    std::string subject;
    std::string location;
    ColorChoice color = ColorChoice::Auto;
    bool keepsAll = false;
    bool withTrace = false;
    bool wantsHelp = false;
};

/// What is wrong with the arguments, or nothing.
std::optional<std::string> ReadShowOptions(const std::vector<std::string>& arguments,
                                           ShowOptions& options);

/// Explains one series. Returns the exit code.
int RunShow(const ShowOptions& options);
