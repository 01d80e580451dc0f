#include <libical/ical.h>

#include "DateTexts.h"
#include "Engines.h"

namespace
{

constexpr const char* kNewYork = R"(BEGIN:VTIMEZONE
TZID:New York
BEGIN:STANDARD
DTSTART:16011104T020000
RRULE:FREQ=YEARLY;BYDAY=1SU;BYMONTH=11
TZOFFSETFROM:-0400
TZOFFSETTO:-0500
END:STANDARD
BEGIN:DAYLIGHT
DTSTART:16010311T020000
RRULE:FREQ=YEARLY;BYDAY=2SU;BYMONTH=3
TZOFFSETFROM:-0500
TZOFFSETTO:-0400
END:DAYLIGHT
END:VTIMEZONE
)";

icaltimezone* NewYork()
{
    static icaltimezone* const zone = [] {
        icaltimezone* const made = icaltimezone_new();
        icaltimezone_set_component(made, icalparser_parse_string(kNewYork));
        return made;
    }();
    return zone;
}

std::int64_t StampOfIcal(const icaltimetype& time)
{
    return (((std::int64_t{time.year} * 100 + time.month) * 100 + time.day) * 100 + time.hour) *
               100 +
           time.minute;
}

} // namespace

CLibicalEngine::CLibicalEngine(const SeriesCase& series)
    : m_rule(series.rule), m_firstDay(series.firstDay), m_to(StampOf(TimeOf(series.to)))
{
}

const std::vector<CLibicalEngine::Instance>& CLibicalEngine::Expand()
{
    m_instances.clear();
    icaltimezone* const utc = icaltimezone_get_utc_timezone();
    icaltimetype start = icaltime_from_string((m_firstDay + "T090000").c_str());
    icaltime_set_timezone(&start, NewYork());
    const icalrecurrencetype rule = icalrecurrencetype_from_string(m_rule.c_str());
    icalrecur_iterator* const iterator = icalrecur_iterator_new(rule, start);
    for (icaltimetype next = icalrecur_iterator_next(iterator); icaltime_is_null_time(next) == 0;
         next = icalrecur_iterator_next(iterator))
    {
        icaltimetype end = next;
        end.hour += 1;
        const icaltimetype startUtc = icaltime_convert_to_zone(next, utc);
        const icaltimetype endUtc = icaltime_convert_to_zone(end, utc);
        if (StampOfIcal(startUtc) > m_to)
        {
            break;
        }
        m_instances.push_back({StampOfIcal(startUtc), StampOfIcal(endUtc)});
    }
    icalrecur_iterator_free(iterator);
    return m_instances;
}
