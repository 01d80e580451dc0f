#pragma once

#include <cstdint>
#include <map>

#include "PlatformTypes.h"

constexpr std::int32_t kExceptionDeleted = -1;
constexpr std::int32_t kExceptionModified = 1;

/// One deleted or modified instance of a series. Times are minutes since 1601, local to the series.
struct RecurExceptionInfo
{
    std::uint32_t originalStart = 0;
    std::uint32_t start = 0; ///< new start; 0 for a deleted instance
    std::uint32_t end = 0;   ///< new end; 0 for a deleted instance
    WString subject;
    WString location;
    std::int32_t state = kExceptionDeleted;
    std::uint32_t meetingType = 0;
    std::uint8_t hasMeetingType = 0;
    std::uint32_t overrideFlags = 0;
};

/// By the original date at midnight.
using ExceptionMap = std::map<std::uint32_t, RecurExceptionInfo>;
