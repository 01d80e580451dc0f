#include "TraceRecord.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tlvtrace
{
namespace
{
constexpr int kMaxModule = 60;
constexpr int kMaxTag = 16;

char Letter(unsigned code)
{
    switch (code)
    {
    case 8:
        return 'E';
    case 4:
        return 'W';
    case 2:
        return 'I';
    default:
        return '-';
    }
}

const char* OrDash(const char* text)
{
    return text == nullptr || *text == '\0' ? "-" : text;
}

bool IsLineEnd(char letter)
{
    return letter == '\r' || letter == '\n';
}
} // namespace

std::size_t WriteHead(char (&head)[kMaxHead],
                      const TraceRecord& record,
                      const SYSTEMTIME& time,
                      DWORD process,
                      DWORD thread)
{
    const int length = std::snprintf(head,
                                     sizeof head,
                                     "%04u-%02u-%02u %02u:%02u:%02u.%03u %lu:%lu %c %.*s %.*s ",
                                     time.wYear,
                                     time.wMonth,
                                     time.wDay,
                                     time.wHour,
                                     time.wMinute,
                                     time.wSecond,
                                     time.wMilliseconds,
                                     process,
                                     thread,
                                     Letter(record.code),
                                     kMaxModule,
                                     OrDash(record.module),
                                     kMaxTag,
                                     OrDash(record.tag));
    return std::min(static_cast<std::size_t>(std::max(length, 0)), sizeof head - 1);
}

std::string_view BodyOf(const TraceRecord& record)
{
    if (record.text == nullptr)
    {
        return {};
    }
    std::string_view body(record.text, strnlen(record.text, kMaxText));
    while (!body.empty() && body.front() == ' ')
    {
        body.remove_prefix(1);
    }
    while (!body.empty() && IsLineEnd(body.back()))
    {
        body.remove_suffix(1);
    }
    return body;
}

bool EndsLine(const TraceRecord& record)
{
    if (record.text == nullptr)
    {
        return true;
    }
    const std::size_t length = std::strlen(record.text);
    return length == 0 || length > kMaxText || IsLineEnd(record.text[length - 1]);
}
} // namespace tlvtrace
