#include "TraceRecord.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace tlvtrace
{
namespace
{
constexpr std::size_t kMaxModule = 60;
constexpr std::size_t kMaxTag = 16;

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

/// The digits and a character behind them.
char* PutNumber(char* out, unsigned long number, char behind)
{
    constexpr std::ptrdiff_t kMostDigits = 10;
    out = std::to_chars(out, out + kMostDigits, number).ptr;
    *out = behind;
    return out + 1;
}

/// At most `most` characters and a blank behind them.
char* PutText(char* out, const char* text, std::size_t most)
{
    out = std::copy_n(text, strnlen(text, most), out);
    *out = ' ';
    return out + 1;
}
} // namespace

std::size_t WriteHead(char (&head)[kMaxHead],
                      const TraceRecord& record,
                      const MomentText& time,
                      DWORD process,
                      DWORD thread)
{
    // Written by hand: printf's reading of a format takes longer than everything else that a line costs.
    // Room: the moment, two numbers of at most 10 digits, level, module and tag, and what separates them.
    static_assert(std::tuple_size_v<MomentText> + 1 + 2 * 10 + 2 + 2 + kMaxModule + 1 + kMaxTag +
                      1 <
                  kMaxHead);
    char* out = std::copy(time.begin(), time.end(), head);
    *out++ = ' ';
    out = PutNumber(out, process, ':');
    out = PutNumber(out, thread, ' ');
    *out++ = Letter(record.code);
    *out++ = ' ';
    out = PutText(out, OrDash(record.module), kMaxModule);
    out = PutText(out, OrDash(record.tag), kMaxTag);
    *out = '\0';
    return static_cast<std::size_t>(out - head);
}

std::string_view TextOf(const TraceRecord& record)
{
    if (record.text == nullptr)
    {
        return {};
    }
    return {record.text, strnlen(record.text, kMaxText + 1)};
}

std::string_view BodyOf(std::string_view text)
{
    std::string_view body = text.substr(0, kMaxText);
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

bool EndsLine(std::string_view text)
{
    return text.empty() || text.size() > kMaxText || IsLineEnd(text.back());
}
} // namespace tlvtrace
