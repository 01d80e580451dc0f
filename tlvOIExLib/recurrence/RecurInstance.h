#pragma once

#include <cstdint>
#include <list>

#include "PlatformTypes.h"
#include "SharedText.h"

/// One instance of a series inside the window.
struct RecurInstance
{
    SYSTEMTIME start{}; ///< UTC
    SYSTEMTIME end{};   ///< UTC
    CSharedText subject;
    CSharedText location;
    /// Units: minutes since 1601, local to the series. The midnight of its day for a regular
    /// instance, the original start with its time of day for a modified one. Clients see both.
    std::uint32_t subKey = 0;
    std::uint8_t hasMeetingType = 0;
    std::uint32_t meetingType = 0; ///< 7 is a cancelled instance
};

/// Modified instances stand first, then the regular ones by day: not in order of time.
using InstanceList = std::list<RecurInstance>;
