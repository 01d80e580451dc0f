#pragma once

#include <string>

#include "PlatformTypes.h"

/// Dates as text, so that a test reads and reports "2024-02-29T12:00:00" instead of eight numbers.

/// From "YYYY-MM-DDTHH:MM:SS"; nothing is checked and the weekday stays 0.
SYSTEMTIME TimeOf(const std::string& text);

/// "YYYY-MM-DDTHH:MM:SS"; milliseconds follow as ".nnn" when there are any.
std::string TextOf(const SYSTEMTIME& time);

/// The same with the weekday behind a blank: "... Thu".
std::string TextWithWeekday(const SYSTEMTIME& time);

/// Two-digit hexadecimal text of either case, blanks and line ends ignored, "#" to the end of the
/// line as well.
std::string BytesOf(const std::string& hexText);
