#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "CalendarTime.h"

namespace dtclient
{
enum class Command
{
    Info,
    List,
    Watch,
    Ping,
    Trace,
};

enum class OutputForm
{
    Table,
    Xml,
    Json,
};

/// What the server is initialised for.
enum class WorkType
{
    Calendaring,
    ContactResolution,
};

/// A command line that makes sense.
struct Arguments
{
    Command command = Command::Info;
    OutputForm form = OutputForm::Table;
    WorkType type = WorkType::Calendaring;
    std::optional<CalendarTime> from; ///< Local time.
    std::optional<CalendarTime> to;   ///< Local time.
    std::chrono::seconds timeout{60}; ///< For each answer of the server.
    std::optional<std::chrono::seconds> runFor;
    unsigned count = 1000;
};

/// What a command line turned out to be.
struct ParsedCommandLine
{
    enum class Kind
    {
        Run,   ///< `arguments` holds.
        Help,  ///< `text` is for standard output.
        Wrong, ///< `text` is for standard error.
    };

    Kind kind = Kind::Wrong;
    Arguments arguments;
    std::string text;
};

/// Reads the command line.
///
/// Shape: UTF-8, without the program's own name.
ParsedCommandLine ParseCommandLine(const std::vector<std::string>& words);

/// A window of local time.
struct ListWindow
{
    CalendarTime from;
    CalendarTime to;
};

/// The window that a listing asks for: without --from it begins at today's midnight, without --to
/// it is seven days long.
///
/// Errors: nothing when it would end before it begins.
std::optional<ListWindow> WindowOf(const Arguments& arguments, const CalendarTime& now);
} // namespace dtclient
