#include "DateText.h"

#include "Minutes1601.h"
#include "PlatformDates.h"
#include "WeekdayNames.h"

namespace
{

constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:dd";

WORD NumberAt(std::string_view text, std::size_t at, std::size_t digits)
{
    unsigned value = 0;
    for (std::size_t i = at; i < at + digits; ++i)
    {
        value = value * 10 + static_cast<unsigned>(text[i] - '0');
    }
    return static_cast<WORD>(value);
}

void Append2(std::string& out, unsigned value)
{
    out.push_back(static_cast<char>('0' + value / 10 % 10));
    out.push_back(static_cast<char>('0' + value % 10));
}

} // namespace

std::optional<SYSTEMTIME> TimeOfText(std::string_view text)
{
    if (text.size() != kForm.size())
    {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == 'd' ? !isDigit : text[i] != kForm[i])
        {
            return std::nullopt;
        }
    }
    SYSTEMTIME time{};
    time.wYear = NumberAt(text, 0, 4);
    time.wMonth = NumberAt(text, 5, 2);
    time.wDay = NumberAt(text, 8, 2);
    time.wHour = NumberAt(text, 11, 2);
    time.wMinute = NumberAt(text, 14, 2);
    time.wSecond = NumberAt(text, 17, 2);
    return time;
}

std::optional<FILETIME> FileTimeOfText(std::string_view text)
{
    const std::optional<SYSTEMTIME> time = TimeOfText(text);
    FILETIME fileTime{};
    if (!time.has_value() || !dates::SystemTimeToFileTime(*time, fileTime))
    {
        return std::nullopt;
    }
    return fileTime;
}

void AppendTime(std::string& out, const SYSTEMTIME& time)
{
    Append2(out, time.wYear / 100U);
    Append2(out, time.wYear);
    out.push_back('-');
    Append2(out, time.wMonth);
    out.push_back('-');
    Append2(out, time.wDay);
    out.push_back('T');
    Append2(out, time.wHour);
    out.push_back(':');
    Append2(out, time.wMinute);
    out.push_back(':');
    Append2(out, time.wSecond);
}

std::string DateOfMinutes(std::uint32_t minutes1601)
{
    std::string text;
    AppendTime(text, SystemTimeFromMinutes(minutes1601));
    return text.substr(0, 10);
}

std::string TimeOfMinutes(std::uint32_t minutes1601)
{
    std::string text;
    AppendTime(text, SystemTimeFromMinutes(minutes1601));
    return text.substr(11, 5);
}

std::string LongOfMinutes(std::uint32_t minutes1601)
{
    return std::string(ShortWeekday(SystemTimeFromMinutes(minutes1601).wDayOfWeek)) + " " +
           DateOfMinutes(minutes1601) + " " + TimeOfMinutes(minutes1601);
}
