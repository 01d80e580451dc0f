#include "Arguments.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace dtclient
{
namespace
{
constexpr int kDefaultWindowDays = 7;
constexpr unsigned kMaxSeconds = 7 * 24 * 3600;
constexpr unsigned kMaxCount = 1000000;

constexpr const char* kGeneralHelp =
    R"(usage: dtclient COMMAND [OPTION ...]

Asks the 64-bit mail server "dtOIEx64" for what the user's mailbox holds.

Commands:
  info     the profile, the store and the user of the session
  list     the appointments between two moments
  watch    prints each change as it comes, until Ctrl+C
  ping     times the start of the server and an empty call
  trace    prints the server's heartbeats, until Ctrl+C

"dtclient COMMAND --help" tells the options of a command.

Exit code: 0 done, 1 failed, 2 wrong usage, 3 the list is incomplete.
Results go to standard output, messages to standard error.
)";

constexpr const char* kCommonHelp =
    R"(  --type TYPE        calendaring (default) or contactresolution
  --timeout SECONDS  how long to wait for each answer (default 60)
  --help             this text
)";

// The calls of these commands answer at once, and bring up no mail system.
constexpr const char* kIdleHelp =
    R"(  --type TYPE        taken, and without effect here
  --timeout SECONDS  taken, and without effect here
  --help             this text
)";

constexpr const char* kInfoHelp =
    R"(usage: dtclient info [OPTION ...]

Prints the profile, the store and the user of the session.

  --json             as a JSON document
  --xml              the document as the server sent it
)";

constexpr const char* kListHelp =
    R"(usage: dtclient list [OPTION ...]

Prints the appointments between two moments, instances of series included.
TIME is 2026-11-02, which means its midnight, or 2026-11-02T14:30.

  --from TIME        begin, local time (default: today)
  --to TIME          end, local time (default: seven days after the begin)
  --json             one JSON document, times in UTC
  --xml              the document as the server sent it
)";

constexpr const char* kWatchHelp =
    R"(usage: dtclient watch [OPTION ...]

Initialises the server, then prints each change as it comes, until Ctrl+C.

  --from TIME        list this window first, as "dtclient list" does
  --to TIME
  --for SECONDS      end after this time
  --json             one JSON object a line for each event
  --xml              the documents as the server sent them
)";

constexpr const char* kPingHelp = R"(usage: dtclient ping [OPTION ...]

Times the activation of the server and the round trip of an empty call.

  --count N          number of calls (default 1000)
  --json             as a JSON document
)";

constexpr const char* kTraceHelp = R"(usage: dtclient trace [OPTION ...]

Prints the heartbeats that the server sends while it has nothing to do, until Ctrl+C.

  --for SECONDS      end after this time
  --json             one JSON object a line
)";

struct CommandRow
{
    Command command;
    const char* name;
    const char* help;
    const char* commonHelp;
    std::string_view options; ///< Those of its own, each between blanks.

    [[nodiscard]] std::string Usage() const { return std::string(help) + commonHelp; }
};

constexpr std::array<CommandRow, 5> kCommands = {{
    {Command::Info, "info", kInfoHelp, kCommonHelp, " --json --xml "},
    {Command::List, "list", kListHelp, kCommonHelp, " --from --to --json --xml "},
    {Command::Watch, "watch", kWatchHelp, kCommonHelp, " --from --to --for --json --xml "},
    {Command::Ping, "ping", kPingHelp, kIdleHelp, " --count --json "},
    {Command::Trace, "trace", kTraceHelp, kIdleHelp, " --for --json "},
}};

constexpr std::string_view kCommonOptions = " --type --timeout ";
constexpr std::string_view kFlags = " --json --xml ";

bool Lists(std::string_view options, const std::string& option)
{
    return options.find(" " + option + " ") != std::string_view::npos;
}

bool ParseNumber(const std::string& text, unsigned most, unsigned& number)
{
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number >= 1 && number <= most;
}

class CCommandLineParser
{
public:
    explicit CCommandLineParser(const CommandRow& row) : m_row(row)
    {
        m_result.arguments.command = row.command;
    }

    ParsedCommandLine Parse(const std::vector<std::string>& words)
    {
        for (std::size_t index = 1; index < words.size(); ++index)
        {
            if (words[index] == "--help" || words[index] == "-h")
            {
                m_result.kind = ParsedCommandLine::Kind::Help;
                m_result.text = m_row.Usage();
                return m_result;
            }
        }
        for (std::size_t index = 1; index < words.size();)
        {
            if (!TakeOption(words, index))
            {
                m_result.kind = ParsedCommandLine::Kind::Wrong;
                m_result.text += "\n\n" + m_row.Usage();
                return m_result;
            }
        }
        m_result.kind = ParsedCommandLine::Kind::Run;
        return m_result;
    }

private:
    bool Wrong(std::string text)
    {
        m_result.text = std::move(text);
        return false;
    }

    // "--option value", "--option=value" or a flag.
    bool TakeOption(const std::vector<std::string>& words, std::size_t& index)
    {
        std::string option = words[index];
        std::string value;
        const std::size_t equals = option.find('=');
        const bool joined = option.starts_with("--") && equals != std::string::npos;
        if (joined)
        {
            value = option.substr(equals + 1);
            option.resize(equals);
        }
        ++index;
        if (!Lists(m_row.options, option) && !Lists(kCommonOptions, option))
        {
            return Wrong("\"" + option + "\" is no option of \"" + m_row.name + "\"");
        }
        if (Lists(kFlags, option))
        {
            return joined ? Wrong(option + " takes no value") : TakeForm(option);
        }
        if (!joined)
        {
            if (index >= words.size())
            {
                return Wrong(option + " needs a value");
            }
            value = words[index];
            ++index;
        }
        return TakeValue(option, value);
    }

    bool TakeForm(const std::string& option)
    {
        if (m_result.arguments.form != OutputForm::Table)
        {
            return Wrong("--json and --xml exclude each other and stand once");
        }
        m_result.arguments.form = option == "--json" ? OutputForm::Json : OutputForm::Xml;
        return true;
    }

    bool TakeValue(const std::string& option, const std::string& value)
    {
        if (option == "--from" || option == "--to")
        {
            return TakeMoment(option, value);
        }
        if (option == "--type")
        {
            return TakeType(value);
        }
        unsigned number = 0;
        const unsigned most = option == "--count" ? kMaxCount : kMaxSeconds;
        if (!ParseNumber(value, most, number))
        {
            return Wrong(option + " takes a number from 1 to " + std::to_string(most) + ", not \"" +
                         value + "\"");
        }
        if (option == "--count")
        {
            m_result.arguments.count = number;
        }
        else if (option == "--for")
        {
            m_result.arguments.runFor = std::chrono::seconds(number);
        }
        else
        {
            m_result.arguments.timeout = std::chrono::seconds(number);
        }
        return true;
    }

    bool TakeMoment(const std::string& option, const std::string& value)
    {
        const std::optional<CalendarTime> moment = ParseDayTime(value);
        if (!moment)
        {
            return Wrong(option + " takes a date such as 2026-11-02 or 2026-11-02T14:30, not \"" +
                         value + "\"");
        }
        (option == "--from" ? m_result.arguments.from : m_result.arguments.to) = moment;
        const std::optional<CalendarTime>& from = m_result.arguments.from;
        const std::optional<CalendarTime>& to = m_result.arguments.to;
        if (from && to && SecondsSince1601(*to) < SecondsSince1601(*from))
        {
            return Wrong("--to lies before --from");
        }
        return true;
    }

    bool TakeType(const std::string& value)
    {
        if (value != "calendaring" && value != "contactresolution")
        {
            return Wrong("--type is calendaring or contactresolution, not \"" + value + "\"");
        }
        m_result.arguments.type =
            value == "calendaring" ? WorkType::Calendaring : WorkType::ContactResolution;
        return true;
    }

    const CommandRow& m_row;
    ParsedCommandLine m_result;
};
} // namespace

ParsedCommandLine ParseCommandLine(const std::vector<std::string>& words)
{
    ParsedCommandLine result;
    if (words.empty())
    {
        result.text = std::string("no command given\n\n") + kGeneralHelp;
        return result;
    }
    if (words.front() == "--help" || words.front() == "-h" || words.front() == "help")
    {
        result.kind = ParsedCommandLine::Kind::Help;
        result.text = kGeneralHelp;
        return result;
    }
    const auto row = std::find_if(kCommands.begin(), kCommands.end(), [&words](const auto& known) {
        return words.front() == known.name;
    });
    if (row == kCommands.end())
    {
        result.text = "\"" + words.front() + "\" is no command\n\n" + kGeneralHelp;
        return result;
    }
    return CCommandLineParser(*row).Parse(words);
}

std::optional<ListWindow> WindowOf(const Arguments& arguments, const CalendarTime& now)
{
    CalendarTime today = now;
    today.hour = 0;
    today.minute = 0;
    today.second = 0;

    ListWindow window;
    window.from = arguments.from.value_or(today);
    window.to = arguments.to.value_or(AddDays(window.from, kDefaultWindowDays));
    if (SecondsSince1601(window.to) < SecondsSince1601(window.from))
    {
        return std::nullopt;
    }
    return window;
}
} // namespace dtclient
