#include <map>

#include "DateText.h"
#include "ShowCommand.h"

namespace
{

using TextOption = std::string ShowOptions::*;
using Switch = bool ShowOptions::*;

const std::map<std::string, TextOption> g_textOptions = {
    {"--pattern", &ShowOptions::pattern},
    {"--zone", &ShowOptions::zone},
    {"--from", &ShowOptions::from},
    {"--to", &ShowOptions::to},
    {"--first", &ShowOptions::first},
    {"--subject", &ShowOptions::subject},
    {"--location", &ShowOptions::location},
};

const std::map<std::string, Switch> g_switches = {
    {"--keep-all", &ShowOptions::keepsAll},
    {"--trace", &ShowOptions::withTrace},
    {"--help", &ShowOptions::wantsHelp},
    {"-h", &ShowOptions::wantsHelp},
};

const std::map<std::string, ColorChoice> g_colorChoices = {
    {"auto", ColorChoice::Auto},
    {"always", ColorChoice::Always},
    {"never", ColorChoice::Never},
};

/// A date alone is its midnight.
void CompleteTime(std::string& time)
{
    constexpr std::size_t kDateLength = 10;
    if (time.size() == kDateLength)
    {
        time += "T00:00:00";
    }
}

std::optional<std::string> CheckTimes(ShowOptions& options)
{
    CompleteTime(options.from);
    CompleteTime(options.to);
    for (const std::string* time : {&options.from, &options.to})
    {
        if (!time->empty() && !FileTimeOfText(*time).has_value())
        {
            return "'" + *time + "' is no time of the form YYYY-MM-DDTHH:MM:SS";
        }
    }
    if (!options.first.empty() && !TimeOfText(options.first).has_value())
    {
        return "'" + options.first + "' is not of the form YYYY-MM-DDTHH:MM:SS";
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> ReadShowOptions(const std::vector<std::string>& arguments,
                                           ShowOptions& options)
{
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const std::string& name = arguments[i];
        if (const auto option = g_switches.find(name); option != g_switches.end())
        {
            options.*option->second = true;
            continue;
        }
        const auto text = g_textOptions.find(name);
        if (text == g_textOptions.end() && name != "--color")
        {
            return "unknown argument '" + name + "'";
        }
        if (i + 1 == arguments.size())
        {
            return "'" + name + "' needs a value";
        }
        const std::string& value = arguments[++i];
        if (text != g_textOptions.end())
        {
            options.*text->second = value;
        }
        else if (const auto choice = g_colorChoices.find(value); choice != g_colorChoices.end())
        {
            options.color = choice->second;
        }
        else
        {
            return "'" + value + "' is none of auto, always and never";
        }
    }
    if (options.wantsHelp)
    {
        return std::nullopt;
    }
    if (options.pattern.empty())
    {
        return "--pattern is missing";
    }
    return CheckTimes(options);
}
