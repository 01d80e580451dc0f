#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "BatchCommand.h"
#include "HelpTexts.h"
#include "ShowCommand.h"
#include "StandardStreams.h"
#ifdef _WIN32
#include "Utf8Arguments.h"
#endif

namespace
{

constexpr int kExitGood = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

int Complain(const std::string& what)
{
    std::fprintf(stderr, "dtrecur: %s\nTry 'dtrecur --help'.\n", what.c_str());
    return kExitUsage;
}

int PrintHelp(const char* text)
{
    std::string out = text;
    return FlushOutput(out) ? kExitGood : kExitFailure;
}

bool IsHelp(const std::string& argument)
{
    return argument == "--help" || argument == "-h";
}

int BatchMain(const std::vector<std::string>& arguments)
{
    bool withTrace = false;
    for (const std::string& argument : arguments)
    {
        if (IsHelp(argument))
        {
            return PrintHelp(kBatchHelp);
        }
        if (argument != "--trace")
        {
            return Complain("batch: unknown argument '" + argument + "'");
        }
        withTrace = true;
    }
    return RunBatch(withTrace);
}

int ShowMain(const std::vector<std::string>& arguments)
{
    ShowOptions options;
    if (const std::optional<std::string> problem = ReadShowOptions(arguments, options))
    {
        return Complain("show: " + *problem);
    }
    return options.wantsHelp ? PrintHelp(kShowHelp) : RunShow(options);
}

int Run(std::vector<std::string> arguments)
{
    UsePlainStreams();
    if (arguments.empty())
    {
        return Complain("a command is missing");
    }
    const std::string command = arguments.front();
    arguments.erase(arguments.begin());
    if (IsHelp(command))
    {
        return PrintHelp(kHelp);
    }
    if (command == "--version")
    {
        return PrintHelp(kVersion);
    }
    if (command == "show")
    {
        return ShowMain(arguments);
    }
    if (command == "batch")
    {
        return BatchMain(arguments);
    }
    return Complain("unknown command '" + command + "'");
}

int Guarded(std::vector<std::string> arguments)
{
    try
    {
        return Run(std::move(arguments));
    }
    catch (const std::exception& problem)
    {
        std::fprintf(stderr, "dtrecur: %s\n", problem.what());
        return kExitFailure;
    }
}

} // namespace

#ifdef _WIN32
int wmain(int argc, wchar_t** argv)
{
    return Guarded(Utf8Arguments(argc, argv));
}
#else
int main(int argc, char** argv)
{
    return Guarded(std::vector<std::string>(argv + 1, argv + argc));
}
#endif
