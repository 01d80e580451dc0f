#pragma once

#include <cstdint>

#include "ExceptionWindow.h"
#include "RecurrentRule.h"
#include "ZoneTime.h"

/// What every handler of CRecurrentRule does around its own loop: bring the window into local time,
/// read the exceptions, list the modified instances, find the first and the last day, count rounds,
/// test slots and list instances.
///
/// A handler opens the frame, begins the range, and then runs
///     while (frame.NextRound()) { ... frame.MoveTo(next); }
///
/// Units: days are the minute of a midnight, local to the series; all arithmetic wraps in 32 bits.
class CRecurrenceFrame
{
public:
    /// `function` is the handler's full name, for its traces.
    CRecurrenceFrame(CRecurrentRule& rule, InstanceList& instances, const char* function);

    /// Reads the tail and appends the modified instances.
    void Open(std::uint32_t tailArgument);

    /// Sets the first and the last day. False when the rule has nothing in the window or its end
    /// type is unknown; the latter is traced as `endTypeText`, the byte and "]".
    [[nodiscard]] bool Begin(const char* endTypeText);

    /// Whether the rule may divide by its period; a period of 0 is traced.
    [[nodiscard]] bool HasPeriod(std::uint32_t period) const;

    /// Counts a round. False when the range or the patience is at its end.
    [[nodiscard]] bool NextRound();

    [[nodiscard]] std::uint32_t Day() const noexcept { return m_day; }
    void MoveTo(std::uint32_t day) noexcept { m_day = day; }

    [[nodiscard]] bool IsSlotFree() const noexcept;
    /// Appends the instance of Day().
    void Emit();
    void EmitIfFree();

    /// Stores the count; true if there is at least one instance.
    bool Finish(std::uint32_t& outCount) const noexcept;

private:
    struct LocalTime
    {
        SYSTEMTIME time{};
        std::uint32_t minutes = 0;
        [[nodiscard]] std::uint32_t MinuteOfDay() const noexcept
        {
            return time.wHour * 60U + time.wMinute;
        }
    };

    [[nodiscard]] LocalTime LocalTimeOf(const FILETIME& utc) const noexcept;
    void AppendModified(const RecurExceptionInfo& info);
    [[nodiscard]] std::uint32_t FirstDay() const noexcept;
    [[nodiscard]] std::uint32_t WindowLastDay() const noexcept;

    CRecurrentRule& m_rule;
    InstanceList& m_instances;
    const char* m_function;
    CZoneClock m_clock;
    LocalTime m_start;
    LocalTime m_end;
    CTakenSlots m_taken;
    CSharedText m_subject;  // of all regular instances
    CSharedText m_location; // likewise
    std::uint32_t m_day = 0;
    std::uint32_t m_lastDay = 0;
    std::uint32_t m_tries = 0;
};
