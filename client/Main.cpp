#include <string>
#include <vector>

#include "Arguments.h"
#include "Commands.h"
#include "Console.h"
#include "WideText.h"

namespace
{
dtclient::ExitCode Run(const dtclient::Arguments& arguments)
{
    switch (arguments.command)
    {
    case dtclient::Command::Info:
        return RunInfo(arguments);
    case dtclient::Command::List:
        return RunList(arguments);
    case dtclient::Command::Watch:
        return RunWatch(arguments);
    case dtclient::Command::Ping:
        return RunPing(arguments);
    case dtclient::Command::Trace:
        return RunTrace(arguments);
    }
    return dtclient::ExitCode::WrongUsage;
}
} // namespace

int wmain(int argc, wchar_t** argv)
{
    dtclient::PrepareConsole();
    std::vector<std::string> words;
    for (int index = 1; index < argc; ++index)
    {
        words.push_back(dtclient::Utf8FromWide(argv[index]));
    }
    const dtclient::ParsedCommandLine line = dtclient::ParseCommandLine(words);
    switch (line.kind)
    {
    case dtclient::ParsedCommandLine::Kind::Help:
        return dtclient::WriteResult(line.text) ? 0 : 1;
    case dtclient::ParsedCommandLine::Kind::Wrong:
        dtclient::WriteMessage("dtclient: " + line.text);
        return static_cast<int>(dtclient::ExitCode::WrongUsage);
    case dtclient::ParsedCommandLine::Kind::Run:
        break;
    }
    return static_cast<int>(Run(line.arguments));
}
