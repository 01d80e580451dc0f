#pragma once

#include "CalendarTime.h"

namespace dtclient
{
/// UTC in the machine's zone, with the rules of the year in question.
CalendarTime LocalFromUtc(const CalendarTime& utc);

/// The machine's clock.
CalendarTime LocalNow();
} // namespace dtclient
