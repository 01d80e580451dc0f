#include "DateTexts.h"

#include <cstdio>
#include <stdexcept>

namespace
{

WORD Number(const std::string& text, std::size_t at, std::size_t length)
{
    return static_cast<WORD>(std::stoul(text.substr(at, length)));
}

int DigitOf(char c)
{
    if (c >= '0' && c <= '9')
    {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    if (lower >= 'a' && lower <= 'f')
    {
        return lower - 'a' + 10;
    }
    throw std::invalid_argument("not a hexadecimal digit");
}

} // namespace

SYSTEMTIME TimeOf(const std::string& text)
{
    SYSTEMTIME time{};
    time.wYear = Number(text, 0, 4);
    time.wMonth = Number(text, 5, 2);
    time.wDay = Number(text, 8, 2);
    time.wHour = Number(text, 11, 2);
    time.wMinute = Number(text, 14, 2);
    time.wSecond = Number(text, 17, 2);
    return time;
}

std::string TextOf(const SYSTEMTIME& time)
{
    char text[64];
    std::snprintf(text,
                  sizeof text,
                  "%04u-%02u-%02uT%02u:%02u:%02u",
                  unsigned{time.wYear},
                  unsigned{time.wMonth},
                  unsigned{time.wDay},
                  unsigned{time.wHour},
                  unsigned{time.wMinute},
                  unsigned{time.wSecond});
    std::string result = text;
    if (time.wMilliseconds != 0)
    {
        std::snprintf(text, sizeof text, ".%03u", unsigned{time.wMilliseconds});
        result += text;
    }
    return result;
}

std::string TextWithWeekday(const SYSTEMTIME& time)
{
    static constexpr const char* kNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    return TextOf(time) + " " + (time.wDayOfWeek < 7 ? kNames[time.wDayOfWeek] : "?");
}

std::string BytesOf(const std::string& hexText)
{
    std::string bytes;
    bool inComment = false;
    int high = -1;
    for (const char c : hexText)
    {
        inComment = inComment ? c != '\n' : c == '#';
        if (inComment || c == '\n' || c == '\r' || c == ' ' || c == '\t')
        {
            continue;
        }
        const int digit = DigitOf(c);
        if (high < 0)
        {
            high = digit;
            continue;
        }
        bytes.push_back(static_cast<char>(high * 16 + digit));
        high = -1;
    }
    if (high >= 0)
    {
        throw std::invalid_argument("an odd number of hexadecimal digits");
    }
    return bytes;
}
