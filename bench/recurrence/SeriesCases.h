#pragma once

#include <string>
#include <vector>

#include "PatternBlob.h"

/// The series that both engines expand: the stored pattern for ours, the rule text for libical.
struct SeriesCase
{
    const char* name;
    pattern::Pattern pattern;
    const char* firstDay; ///< YYYYMMDD
    const char* rule;     ///< of RFC 5545
    const char* from;     ///< UTC, also the beginning of the series
    const char* to;       ///< UTC
    std::size_t instances;
};

/// 09:00 to 10:00 in New York.
inline std::vector<SeriesCase> SeriesCases()
{
    return {
        {"every 2 weeks on Mon, Wed, Fri, one year",
         pattern::Weekly("2023-01-02", 2 + 8 + 32, 2),
         "20230102",
         "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE,FR;WKST=SU",
         "2023-01-01T05:00:00",
         "2024-01-01T04:59:00",
         78},
        {"daily, one year",
         pattern::Daily("2024-01-01", 1),
         "20240101",
         "FREQ=DAILY",
         "2024-01-01T05:00:00",
         "2025-01-01T04:59:00",
         366},
        {"weekdays, one year",
         pattern::WorkingDays("2024-01-01"),
         "20240101",
         "FREQ=WEEKLY;BYDAY=MO,TU,WE,TH,FR",
         "2024-01-01T05:00:00",
         "2025-01-01T04:59:00",
         262},
        {"third Tuesday of each month, five years",
         pattern::MonthlyOrdinal("2024-01-01", 4, 3, 1),
         "20240116",
         "FREQ=MONTHLY;BYDAY=3TU",
         "2024-01-01T05:00:00",
         "2029-01-01T04:59:00",
         60},
        {"4 July each year, ten years",
         pattern::YearlyDay("2024-07-04", 4, 1),
         "20240704",
         "FREQ=YEARLY;BYMONTH=7;BYMONTHDAY=4",
         "2024-01-01T05:00:00",
         "2034-01-01T04:59:00",
         10},
    };
}
