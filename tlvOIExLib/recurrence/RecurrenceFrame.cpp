#include "RecurrenceFrame.h"

#include "Minutes1601.h"
#include "PlatformDates.h"
#include "Trace.h"

namespace
{

constexpr std::uint32_t kMinutesPerDay = 1440;
constexpr std::uint32_t kMaxTries = 1000; // compared before counting: 1001 rounds run

constexpr std::uint8_t kEndByDate = 0x21;
constexpr std::uint8_t kEndByCount = 0x22; // its end date is stored all the same
constexpr std::uint8_t kEndNever = 0x23;
constexpr std::uint8_t kEndNeverOld = 0xFF;

} // namespace

CRecurrenceFrame::CRecurrenceFrame(CRecurrentRule& rule,
                                   InstanceList& instances,
                                   const char* function)
    : m_rule(rule), m_instances(instances), m_function(function), m_clock(rule.m_zInfo),
      m_subject(rule.m_subject), m_location(rule.m_location)
{
    m_rule.m_instanceCount = 0;
}

/// All zero, hence minute 0, for what cannot be converted.
CRecurrenceFrame::LocalTime CRecurrenceFrame::LocalTimeOf(const FILETIME& utc) const noexcept
{
    LocalTime local;
    SYSTEMTIME time{};
    if (!dates::FileTimeToSystemTime(utc, time))
    {
        return local;
    }
    TIME_ZONE_INFORMATION zone = m_rule.m_zInfo;
    if (!dates::HasValidSwitches(zone))
    {
        // Switch dates that do not exist leave the plain bias.
        zone = TIME_ZONE_INFORMATION{};
        zone.Bias = m_rule.m_zInfo.Bias;
    }
    if (!dates::SystemTimeToTzSpecificLocalTime(zone, time, local.time))
    {
        return local;
    }
    local.minutes = MinutesFromSystemTime(local.time);
    return local;
}

void CRecurrenceFrame::Open(std::uint32_t tailArgument)
{
    m_start = LocalTimeOf(m_rule.m_windowStart);
    m_end = LocalTimeOf(m_rule.m_windowEnd);
    ExceptionMap exceptions;
    m_rule.GetResExceptionInfo(tailArgument, exceptions);
    if (exceptions.empty())
    {
        return;
    }
    const ExceptionWindow window =
        CollectExceptionsInWindow(m_start.minutes, m_end.minutes, exceptions);
    m_taken = CTakenSlots(window);
    for (const std::uint32_t key : window.added)
    {
        AppendModified(exceptions.find(key)->second);
    }
}

void CRecurrenceFrame::AppendModified(const RecurExceptionInfo& info)
{
    RecurInstance& instance = m_instances.emplace_back();
    instance.start = m_clock.UtcFromMinutes(info.start);
    instance.end = m_clock.UtcFromMinutes(info.end);
    instance.subject = CSharedText(info.subject);
    instance.location = CSharedText(info.location);
    instance.subKey = info.originalStart;
    instance.hasMeetingType = info.hasMeetingType;
    instance.meetingType = info.meetingType;
    ++m_rule.m_instanceCount;
}

/// The start date, or the first local midnight of the window whose instance has not begun.
std::uint32_t CRecurrenceFrame::FirstDay() const noexcept
{
    if (m_start.minutes <= m_rule.m_tail.startDate)
    {
        return m_rule.m_tail.startDate;
    }
    const std::uint32_t minuteOfDay = m_start.MinuteOfDay();
    const std::uint32_t midnight = m_start.minutes - minuteOfDay;
    return m_rule.m_tail.startTimeOffset < minuteOfDay ? midnight + kMinutesPerDay : midnight;
}

/// The last local midnight whose instance begins inside the window.
std::uint32_t CRecurrenceFrame::WindowLastDay() const noexcept
{
    const std::uint32_t minuteOfDay = m_end.MinuteOfDay();
    const std::uint32_t midnight = m_end.minutes - minuteOfDay;
    return m_rule.m_tail.startTimeOffset > minuteOfDay ? midnight - kMinutesPerDay : midnight;
}

bool CRecurrenceFrame::Begin(const char* endTypeText)
{
    const PatternTail& tail = m_rule.m_tail;
    if (m_start.minutes > tail.endDate + kMinutesPerDay || m_end.minutes < tail.startDate)
    {
        return false;
    }
    m_day = FirstDay();
    switch (m_rule.m_uRecurrentType.byte_acc.b1)
    {
    case kEndByDate:
    case kEndByCount:
        m_lastDay = m_end.minutes < tail.endDate ? WindowLastDay() : tail.endDate;
        return true;
    case kEndNever:
    case kEndNeverOld:
        m_lastDay = WindowLastDay();
        return true;
    default:
        SEND_TRACE(
            3, m_function, "%s%x]", endTypeText, unsigned{m_rule.m_uRecurrentType.byte_acc.b1});
        return false;
    }
}

bool CRecurrenceFrame::HasPeriod(std::uint32_t period) const
{
    if (period == 0)
    {
        SEND_TRACE(1, m_function, "%s-period too short, no regular instances", m_function);
    }
    return period != 0;
}

bool CRecurrenceFrame::NextRound()
{
    if (m_day > m_lastDay)
    {
        return false;
    }
    if (m_tries++ > kMaxTries)
    {
        SEND_TRACE(2, m_function, "nTryTime++ >10");
        return false;
    }
    return true;
}

bool CRecurrenceFrame::IsSlotFree() const noexcept
{
    return !m_taken.Has(m_rule.m_tail.startTimeOffset + m_day);
}

void CRecurrenceFrame::Emit()
{
    RecurInstance& instance = m_instances.emplace_back();
    instance.start = m_clock.UtcFromMinutes(m_rule.m_tail.startTimeOffset + m_day);
    instance.end = m_clock.UtcFromMinutes(m_rule.m_tail.endTimeOffset + m_day);
    instance.subject = m_subject;
    instance.location = m_location;
    instance.subKey = m_day;
    ++m_rule.m_instanceCount;
}

void CRecurrenceFrame::EmitIfFree()
{
    if (IsSlotFree())
    {
        Emit();
    }
}

bool CRecurrenceFrame::Finish(std::uint32_t& outCount) const noexcept
{
    const std::int32_t count = m_rule.m_instanceCount;
    outCount = count < 1 ? 0 : static_cast<std::uint32_t>(count);
    return count >= 1;
}
