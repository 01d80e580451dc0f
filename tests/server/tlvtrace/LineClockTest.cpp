#include "LineClock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace
{
constexpr std::uint64_t kMillisecond = 10000;
constexpr std::uint64_t kSecond = 1000 * kMillisecond;

FILETIME Utc(const SYSTEMTIME& time)
{
    FILETIME moment{};
    SystemTimeToFileTime(&time, &moment);
    return moment;
}

FILETIME Later(const FILETIME& moment, std::uint64_t ticks)
{
    const std::uint64_t sum =
        ((std::uint64_t{moment.dwHighDateTime} << 32) | moment.dwLowDateTime) + ticks;
    return {static_cast<DWORD>(sum), static_cast<DWORD>(sum >> 32)};
}

std::string TextOf(tlvtrace::CLineClock& clock, const FILETIME& moment)
{
    const tlvtrace::MomentText text = clock.TextOf(moment);
    return std::string(text.begin(), text.end());
}

// The moment as the system itself turns it into local time.
std::string SystemText(const FILETIME& moment)
{
    FILETIME local{};
    SYSTEMTIME time{};
    FileTimeToLocalFileTime(&moment, &local);
    FileTimeToSystemTime(&local, &time);
    char text[64];
    std::snprintf(text,
                  sizeof text,
                  "%04u-%02u-%02u %02u:%02u:%02u.%03u",
                  time.wYear,
                  time.wMonth,
                  time.wDay,
                  time.wHour,
                  time.wMinute,
                  time.wSecond,
                  time.wMilliseconds);
    return text;
}
} // namespace

TEST(LineClock, AMomentStandsInLocalTimeWithMilliseconds)
{
    tlvtrace::CLineClock clock;
    const FILETIME moment = Utc({2026, 11, 1, 2, 4, 5, 6, 7});

    const std::string text = TextOf(clock, moment);

    EXPECT_EQ(text, SystemText(moment));
    EXPECT_EQ(text.substr(text.size() - 10), ":05:06.007"); // zones differ by quarters of an hour
}

TEST(LineClock, LinesOfOneSecondDifferInTheirMilliseconds)
{
    tlvtrace::CLineClock clock;
    const FILETIME moment = Utc({2026, 11, 1, 2, 4, 5, 6, 0});

    for (const std::uint64_t milliseconds : {0U, 1U, 10U, 999U, 5U})
    {
        const FILETIME later = Later(moment, milliseconds * kMillisecond);
        EXPECT_EQ(TextOf(clock, later), SystemText(later));
    }
}

TEST(LineClock, TheNextSecondMinuteDayAndYearAreToldAndTheOneBeforeToo)
{
    tlvtrace::CLineClock clock;
    const FILETIME lastOfYear = Utc({2026, 12, 4, 31, 22, 59, 59, 999});

    for (const std::uint64_t seconds : {0U, 1U, 60U, 3600U, 2U, 3599U, 86400U})
    {
        const FILETIME moment = Later(lastOfYear, seconds * kSecond);
        EXPECT_EQ(TextOf(clock, moment), SystemText(moment)) << seconds;
    }
    EXPECT_EQ(TextOf(clock, lastOfYear), SystemText(lastOfYear));
}

TEST(LineClock, NowIsBetweenTheMomentsBeforeAndBehindIt)
{
    tlvtrace::CLineClock clock;
    FILETIME before{};
    FILETIME behind{};
    GetSystemTimeAsFileTime(&before);

    const tlvtrace::MomentText now = clock.Now();

    GetSystemTimeAsFileTime(&behind);
    const std::string text(now.begin(), now.end());
    EXPECT_LE(SystemText(before), text);
    EXPECT_LE(text, SystemText(behind));
}
