#pragma once

#include <cstdint>
#include <map>
#include <string>

/// What a day of the calendar shows; a later one wins where two meet.
enum class DayMark
{
    MovedAway,
    Deleted,
    Instance,
    Changed,
    Cancelled,
};

/// Days by their number since 1601, with what they show.
class CMonthCalendar
{
public:
    void Mark(std::uint32_t day1601, DayMark mark);

    /// The months that hold a mark, weeks from Monday on; the last months are left out, and said to
    /// be, when there are very many.
    [[nodiscard]] std::string Draw(bool withColor) const;

private:
    std::map<std::uint32_t, DayMark> m_days;
};
