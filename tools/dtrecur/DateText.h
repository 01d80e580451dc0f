#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "PlatformTypes.h"

/// Dates on the outside: "YYYY-MM-DDTHH:MM:SS".

/// The weekday stays 0, and nothing but the form is looked at.
std::optional<SYSTEMTIME> TimeOfText(std::string_view text);

/// Errors: nothing also for a time that does not exist.
std::optional<FILETIME> FileTimeOfText(std::string_view text);

void AppendTime(std::string& out, const SYSTEMTIME& time);

/// "2024-02-29" and "09:30" of a pattern's minute.
std::string DateOfMinutes(std::uint32_t minutes1601);
std::string TimeOfMinutes(std::uint32_t minutes1601);
/// "Thu 2024-02-29 09:30".
std::string LongOfMinutes(std::uint32_t minutes1601);
