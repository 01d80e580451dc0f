#pragma once

#include "Arguments.h"

namespace dtclient
{
/// Exit codes of the program.
enum class ExitCode
{
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
    Incomplete = 3, ///< The server could not read one of the folders.
};

ExitCode RunInfo(const Arguments& arguments);
ExitCode RunList(const Arguments& arguments);
ExitCode RunWatch(const Arguments& arguments);
ExitCode RunPing(const Arguments& arguments);
ExitCode RunTrace(const Arguments& arguments);
} // namespace dtclient
