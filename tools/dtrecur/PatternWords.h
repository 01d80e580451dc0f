#pragma once

#include <string>
#include <vector>

#include "PatternView.h"
#include "PlatformTypes.h"

/// The parts of a series in words, for people.

/// "every 2 weeks on Monday and Friday".
std::string RuleInWords(const PatternView& view);

/// What is odd about the rule and how the server takes it; empty for an ordinary one.
std::vector<std::string> RuleRemarks(const PatternView& view);

/// "by date: 2024-06-30".
std::string EndInWords(const PatternView& view);

/// Lines about the zone, the switches included.
std::vector<std::string> ZoneInWords(const TIME_ZONE_INFORMATION& zone, std::size_t blobSize);

/// One exception: "2024-01-05: moved to ..., subject ...".
std::string ExceptionInWords(std::uint32_t date,
                             const RecurExceptionInfo& info,
                             const PatternView& view);

/// What the warning number of a tail means.
std::string WarningInWords(TailWarning warning);
