#include "LineClock.h"

namespace tlvtrace
{
namespace
{
constexpr std::uint64_t kTicksOfMillisecond = 10000;
constexpr std::uint64_t kTicksOfSecond = 1000 * kTicksOfMillisecond;

/// The last `width` digits, filled up with zeros; gives the place behind them.
char* PutDigits(char* out, unsigned number, int width) noexcept
{
    for (int digit = width - 1; digit >= 0; --digit)
    {
        out[digit] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    return out + width;
}

MomentText SecondText(std::uint64_t second) noexcept
{
    const std::uint64_t ticks = second * kTicksOfSecond;
    const FILETIME moment{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    FILETIME local{};
    SYSTEMTIME time{};
    FileTimeToLocalFileTime(&moment, &local);
    FileTimeToSystemTime(&local, &time);
    MomentText text{};
    char* out = text.data();
    const auto put = [&out](unsigned number, int width, char behind) {
        out = PutDigits(out, number, width);
        *out++ = behind;
    };
    put(time.wYear, 4, '-');
    put(time.wMonth, 2, '-');
    put(time.wDay, 2, ' ');
    put(time.wHour, 2, ':');
    put(time.wMinute, 2, ':');
    put(time.wSecond, 2, '.');
    PutDigits(out, 0, 3);
    return text;
}
} // namespace

MomentText CLineClock::Now() noexcept
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return TextOf(now);
}

MomentText CLineClock::TextOf(const FILETIME& moment) noexcept
{
    const std::uint64_t ticks = (std::uint64_t{moment.dwHighDateTime} << 32) | moment.dwLowDateTime;
    const std::uint64_t second = ticks / kTicksOfSecond;
    AcquireSRWLockExclusive(&m_lock);
    if (m_second != second)
    {
        m_text = SecondText(second);
        m_second = second;
    }
    MomentText text = m_text;
    ReleaseSRWLockExclusive(&m_lock);
    const auto milliseconds = static_cast<unsigned>(ticks % kTicksOfSecond / kTicksOfMillisecond);
    PutDigits(text.data() + text.size() - 3, milliseconds, 3);
    return text;
}
} // namespace tlvtrace
